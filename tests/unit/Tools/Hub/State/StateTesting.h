// Messages for the hub's state, and two clocks that a test moves apart from each other.
#pragma once

#include "Support/FakeClock.h"
#include "hub/state/State.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace HubTesting {

/// 2025-11-22 18:06:40 UTC: 65200 s into day 20414 after the Unix epoch, which is second 583618 of
/// GPS week 2393 (that week began 2393 * 604800 s after 315964800, less 18 leap seconds).
inline constexpr double kMoment = 1763834800.0;
inline constexpr std::int32_t kWeek = 2393;
inline constexpr double kSeconds = 583618.0;

/// An NMEA sentence of what stands between its "$" and its "*".
inline std::string WithChecksum(const std::string& text) {
    unsigned checksum = 0;
    for (const char c : text) {
        checksum ^= static_cast<unsigned char>(c);
    }
    char end[8];
    std::snprintf(end, sizeof end, "*%02X", checksum);
    return "$" + text + end;
}

/// A state that is told things; every message carries the wall clock's time.
class CStateTesting : public testing::Test {
protected:
    void Advance(double seconds) {
        m_clock.Advance(Core::Time::FromSeconds(seconds));
        m_wall += seconds;
    }
    Hub::SNow Now() const { return {m_wall, Core::MonotonicTime::Now()}; }

    template <class T>
    T Message(const std::string& name, Hub::TProcess sender = 1) const {
        T message;
        message.name = name;
        message.time = m_wall;
        message.sender = sender;
        return message;
    }
    void Register(const std::string& name, Hub::TProcess sender = 1,
                  const std::string& process = "corvane") {
        auto message = Message<Hub::SRegistration>(name, sender);
        message.process = process;
        message.pid = 411;
        message.version = "0.1.0";
        m_state.NewMessage(message);
    }
    void Status(const std::string& key, const std::string& value, const std::string& name = "P",
                Hub::TProcess sender = 1) {
        auto message = Message<Hub::SStatus>(name, sender);
        message.key = key;
        message.value = value;
        m_state.NewMessage(message);
    }
    void Data(const std::string& key, const std::string& name = "P") {
        auto message = Message<Hub::SDataLine>(name);
        message.key = key;
        m_state.NewMessage(message);
    }
    void Event(const std::string& text, Hub::EEventLevel level = Hub::EEventLevel::warning) {
        auto message = Message<Hub::SEvent>("P");
        message.level = level;
        message.text = text;
        m_state.NewMessage(message);
    }
    /// On the equator at longitude 0, where up is X, east is Y and north is Z: 100 m above the
    /// ellipsoid. RTK fixed.
    Hub::SSolution Fixed(Hub::TProcess sender = 1) const {
        auto message = Message<Hub::SSolution>("CPositionAPI", sender);
        Position::SECEFPositionSolutionData& data = message.data;
        data.x = 6378137.0 + 100.0;
        data.velocityX = 0.5;
        data.velocityY = 3.0;
        data.velocityZ = 4.0;
        data.standardDeviationX = 0.5;
        data.standardDeviationY = 3.0;
        data.standardDeviationZ = 4.0;
        data.week = kWeek;
        data.seconds = kSeconds;
        data.positionQuality = 3;
        data.fixQuality = 4;
        data.differentialAge = 1.5;
        data.satellites = {9, 5, 0};
        data.solutionClass = 6;
        data.velocityLatency = 0.25;
        return message;
    }
    Hub::SSolution NoPosition(Hub::TProcess sender = 1) const {
        auto message = Message<Hub::SSolution>("CPositionAPI", sender);
        message.data.solutionClass = -1;
        return message;
    }
    void Diagnostic(std::int32_t code, bool isRaised, double value = 1.0,
                    const std::string& name = "CPositionManager", Hub::TProcess sender = 1) {
        auto message = Message<Hub::SDiagnostic>(name, sender);
        message.code = code;
        message.sub = 2;
        message.isRaised = isRaised;
        message.value = value;
        m_state.NewMessage(message);
    }
    void Activity(std::int64_t received, std::int64_t sentences, const std::string& name = "P") {
        auto message = Message<Hub::SActivity>(name);
        message.received = received;
        message.sentences = sentences;
        m_state.NewMessage(message);
    }
    void Sentence(const std::string& text) {
        auto message = Message<Hub::SSentence>("CNMEAHandlerAPI");
        message.id = text.substr(0, 5);
        message.sentence = WithChecksum(text);
        m_state.NewMessage(message);
    }

    CFakeClock m_clock;
    double m_wall = kMoment;
    Hub::CState m_state;
};

} // namespace HubTesting
