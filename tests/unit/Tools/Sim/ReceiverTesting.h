// A simulated receiver whose clock the test moves, and whose words are kept.
#pragma once

#include "Bytes/ByteReaders.h"
#include "sim/Receiver.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A log that was said: its identifier and its millisecond of week.
struct SSaidLog {
    std::uint16_t identifier = 0;
    std::uint32_t milliseconds = 0;

    bool operator==(const SSaidLog&) const = default;
};

class CSimReceiver : public testing::Test, public Sim::CReceiverOutput {
protected:
    static constexpr std::uint32_t kWeek = 2370;
    /// From here on the RTK solution is an integer one for 200 s.
    static constexpr std::uint32_t kStart = 302'480'000;

    /// Anew, with other settings.
    void Start(Sim::SReceiverSettings settings = {}) {
        settings.start = {kWeek, kStart};
        m_now = 0;
        m_said.clear();
        m_receiver = std::make_unique<Sim::CReceiver>(settings, *this);
    }

    void SetUp() override { Start(); }

    void Say(const Sim::SUtterance& utterance) override {
        m_said[utterance.port].append(utterance.bytes.begin(), utterance.bytes.end());
        m_bauds.push_back(utterance.baud);
        if (utterance.isLog) {
            m_logTimes.push_back(utterance.moment - Sim::SinceGPSEpoch({kWeek, kStart}));
        }
    }

    Sim::Milliseconds Moment() const { return Sim::SinceGPSEpoch({kWeek, kStart}) + m_now; }

    void Pass(Sim::Milliseconds milliseconds) {
        m_now += milliseconds;
        m_receiver->Advance(Moment());
    }

    /// What is said on a port since the last question.
    std::string Said(Sim::EPort port = Sim::EPort::com1) {
        return std::exchange(m_said[port], std::string());
    }

    void Type(std::string_view bytes, Sim::EPort port = Sim::EPort::com1) {
        m_receiver->Hear(port, bytes, Moment());
    }

    /// All that is said at once to a command.
    std::string Ask(const std::string& command, Sim::EPort port = Sim::EPort::com1) {
        Said(port);
        Type(command + "\r\n", port);
        return Said(port);
    }

    static std::string Answer(const std::string& text, const std::string& port = "COM1") {
        return "\r\n<" + text + "\r\n[" + port + "]";
    }

    void ExpectOK(const std::string& command) {
        EXPECT_THAT(Ask(command), testing::StartsWith(Answer("OK"))) << command;
    }
    void ExpectError(const std::string& command, const std::string& text) {
        EXPECT_EQ(Ask(command), Answer("ERROR:" + text)) << command;
    }

    /// The binary logs of a stream.
    static std::vector<SSaidLog> LogsIn(const std::string& stream) {
        std::vector<SSaidLog> logs;
        const Bytes::Sentence bytes(stream.begin(), stream.end());
        std::size_t at = 0;
        while ((at = stream.find("\xAA\x44\x12", at)) != std::string::npos) {
            logs.push_back({Bytes::ReadUInt16(bytes, at + 4), Bytes::ReadUInt32(bytes, at + 16)});
            at += 28U + Bytes::ReadUInt16(bytes, at + 8) + 4U;
        }
        return logs;
    }

    /// The milliseconds since the start at which logs were said.
    std::vector<Sim::Milliseconds> LogTimes() { return std::exchange(m_logTimes, {}); }

    /// The body of the one binary log that a command asks for.
    Bytes::Sentence BodyOf(const std::string& log, Sim::EPort port = Sim::EPort::usb3) {
        const std::string said = Ask("log " + log + "b once", port);
        const std::size_t at = said.find("\xAA\x44\x12");
        if (at == std::string::npos) {
            ADD_FAILURE() << "no binary log: " << said;
            return {};
        }
        return {said.begin() + static_cast<std::ptrdiff_t>(at) + 28, said.end() - 4};
    }

    std::unique_ptr<Sim::CReceiver> m_receiver;
    std::map<Sim::EPort, std::string> m_said;
    std::vector<std::uint32_t> m_bauds; ///< of the ports, with each utterance
    std::vector<Sim::Milliseconds> m_logTimes;
    Sim::Milliseconds m_now = 0; ///< since the start
};
