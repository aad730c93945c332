#include "hub/gpsd/Device.h"

#include "hub/gpsd/Noise.h"
#include "hub/state/Health.h"
#include "hub/state/Satellites.h"

namespace Hub::GPSD {

namespace {

constexpr const char* kNoiseSentence = "GPGST";

TReport ListOf(const std::optional<TReport>& report) {
    TReport list = TReport::array();
    if (report) {
        list.push_back(*report);
    }
    return list;
}

} // namespace

bool CDevice::Take(const SSolution& solution) {
    const SNow now = SNow::Get();
    m_solution = {solution, now.monotonic};
    const bool isNew = !m_activated;
    if (isNew) {
        m_activated = now.wall;
    }
    return isNew;
}

std::optional<TReport> CDevice::Take(const SSky& sky) {
    return m_satellites.Add(sky) ? Sky() : std::nullopt;
}

std::optional<TReport> CDevice::Take(const SSentence& sentence) {
    m_sentences.Received(sentence);
    if (sentence.id == kNoiseSentence) {
        m_noise = {sentence, SNow::Get().monotonic};
        return NoiseOfReceiver();
    }
    return m_satellites.Add(sentence) ? Sky() : std::nullopt;
}

bool CDevice::TakeEnd(TProcess process) {
    if (!m_solution || m_solution->message.sender != process) {
        return false;
    }
    *this = CDevice();
    return true;
}

bool CDevice::IsLive() const {
    return m_solution && m_solution->Age(SNow::Get()) <= kOldAfter;
}

SFix CDevice::Fix() const {
    SFix fix;
    if (IsLive()) {
        fix.solution = m_solution->message;
        fix.navigation = Navigate(fix.solution, m_geoid);
        fix.geoid = m_geoid;
        fix.hdop = m_satellites.HDOP();
    }
    return fix;
}

TReport CDevice::Position() const {
    return PositionReport(Fix());
}

std::string CDevice::Sentences() const {
    return m_sentences.Make(Fix());
}

std::optional<TReport> CDevice::Sky() const {
    const SFix fix = Fix();
    return m_satellites.Report(fix.navigation ? std::optional(SatellitesUsed(fix.solution))
                                              : std::nullopt);
}

bool CDevice::SendsNoise() const {
    return m_noise && m_noise->Age(SNow::Get()) <= CSatellites::kKeptFor;
}

std::optional<TReport> CDevice::NoiseOfReceiver() const {
    const SFix fix = Fix();
    // The receiver's date is not ours when it replays.
    return NoiseOf(m_noise->message, fix.navigation ? fix.navigation->utc : m_noise->message.time);
}

std::optional<TReport> CDevice::NoiseOfSolution() const {
    return SendsNoise() ? std::nullopt : NoiseOf(Fix());
}

TReport CDevice::Poll() const {
    TReport report = {{"class", "POLL"}};
    SetTime(report, SNow::Get().wall);
    report["active"] = m_activated ? 1 : 0;
    report["tpv"] = ListOf(m_activated ? std::optional(Position()) : std::nullopt);
    report["gst"] = ListOf(SendsNoise() ? NoiseOfReceiver() : NoiseOfSolution());
    report["sky"] = ListOf(Sky());
    return report;
}

} // namespace Hub::GPSD
