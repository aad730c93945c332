#include "Receiver.h"

#include <algorithm>
#include <tuple>

namespace Sim {

namespace {

// Bits of the receiver's error and status words.
constexpr std::uint32_t kErrorPresent = 1U << 0U;
constexpr std::uint32_t kCPUOverload = 1U << 7U;
constexpr std::uint32_t kJustStarted = 0x004C0000U; ///< no almanac, no position, no clock model
constexpr std::uint32_t kRemoteLoading = 1U << 20U;

constexpr std::uint8_t kFineSteering = 180;
constexpr Milliseconds kClockUnknownTime = 2000;

constexpr std::uint32_t kFactoryBaud = 9600;

/// The next time after `now` among those given; kNever for none.
Milliseconds NextOf(Milliseconds now, std::initializer_list<Milliseconds> times) {
    Milliseconds next = kNever;
    for (const Milliseconds time : times) {
        next = time > now ? std::min(next, time) : next;
    }
    return next;
}

/// The end of a period that may last for ever.
Milliseconds EndOf(Milliseconds begin, Milliseconds duration) {
    return duration == kNever ? kNever : begin + duration;
}

} // namespace

CReceiver::CReceiver(const SReceiverSettings& settings, CReceiverOutput& output)
    : m_settings(settings),
      m_output(output),
      m_world(settings.seed),
      m_model(ModelNamed(settings.model)),
      m_firmware(settings.firmwareError),
      m_start(SinceGPSEpoch(settings.start)),
      m_now(m_start) {
    m_info.model = settings.model;
    m_info.softwareVersion = settings.firmware;
    m_info.channelConfigurations = m_model.channelSets;
    m_info.ports = FactoryPorts();
    m_reception.isPDPOn = m_model.isPDPOnAtFirst;
    UpdateStatus();
}

std::vector<SPortSettings> CReceiver::FactoryPorts() const {
    std::vector<SPortSettings> ports;
    for (const EPort port : kPorts) {
        const SPortFacts& facts = FactsOf(port);
        ports.push_back(
            {.port = facts.number, .baud = facts.hasLineSpeed ? m_settings.baud : kFactoryBaud});
    }
    return ports;
}

Milliseconds CReceiver::NextEvent() const {
    Milliseconds next = std::min({m_downAt, m_upAt, m_firmware.NextStep(), m_schedule.NextDue()});
    next = std::min(next,
                    NextOf(m_now, {m_startedAt + kClockUnknownTime, m_startedAt + kAcquisitionTime,
                                   m_rtkConvergesAt, m_pdpConvergesAt}));
    for (const SStatusFault& fault : m_settings.faults) {
        const Milliseconds begin = m_start + fault.at;
        next = std::min(next, NextOf(m_now, {begin, EndOf(begin, fault.duration)}));
    }
    return next;
}

void CReceiver::Advance(Milliseconds now) {
    for (Milliseconds next = NextEvent(); next <= now; next = NextEvent()) {
        m_now = std::max(m_now, next);
        TakeStep();
    }
    m_now = std::max(m_now, now);
}

void CReceiver::SkipTo(Milliseconds now) {
    m_schedule.SkipTo(now);
}

/// What is due at m_now.
void CReceiver::TakeStep() {
    if (m_downAt <= m_now) {
        ShutDown();
    }
    if (m_upAt <= m_now) {
        StartUp();
    }
    m_firmware.Advance(m_now);
    if (UpdateStatus()) {
        SendChanged();
    }
    for (const SLogRequest& request : m_schedule.TakeDue(m_now)) {
        Send(request, m_now);
    }
}

/// Whether anything that a log tells has changed.
bool CReceiver::UpdateStatus() {
    const auto before = std::tuple(m_info.softloadStatus, m_info.errorWord, m_info.statusWord);
    const Milliseconds sinceStart = m_now - m_startedAt;
    m_reception.isStarting = sinceStart < kAcquisitionTime;
    m_reception.isRTKConverging = m_now < m_rtkConvergesAt;
    m_reception.isPDPConverging = m_now < m_pdpConvergesAt;
    m_info.softloadStatus = m_firmware.Status();
    m_info.errorWord = m_firmware.IsUnderWay() ? kRemoteLoading : 0;
    m_info.statusWord = m_reception.isStarting ? kJustStarted : 0;
    for (const SStatusFault& fault : m_settings.faults) {
        const Milliseconds begin = m_start + fault.at;
        if (m_now >= begin && m_now < EndOf(begin, fault.duration)) {
            m_info.errorWord |= fault.errorBits;
            m_info.statusWord |= fault.statusBits;
        }
    }
    m_info.statusWord |= m_info.errorWord != 0 ? kErrorPresent : 0;
    m_info.idleTime = (m_info.statusWord & kCPUOverload) != 0 ? 0 : SReceiverInfo().idleTime;
    m_info.timeStatus = sinceStart < kClockUnknownTime ? kTimeUnknown : kFineSteering;
    return before != std::tuple(m_info.softloadStatus, m_info.errorWord, m_info.statusWord);
}

/// The reset itself; what has not been saved is lost.
void CReceiver::ShutDown() {
    m_downAt = kNever;
    m_upAt = m_now + kBootTime;
    m_schedule.Clear();
    m_info.ports = m_memory.ports.empty() ? FactoryPorts() : m_memory.ports;
    m_ports = {};
    m_reception.isSBASOn = false;
    m_reception.isPDPOn = m_model.isPDPOnAtFirst;
    if (m_firmware.IsWritten() && !m_firmware.Version().empty()) {
        m_info.softwareVersion = m_firmware.Version();
    }
    m_firmware = CFirmwareLoad(m_settings.firmwareError);
}

void CReceiver::StartUp() {
    m_upAt = kNever;
    m_startedAt = m_now;
    m_rtkConvergesAt = m_now + kAcquisitionTime + kConvergenceTime;
    m_pdpConvergesAt = m_rtkConvergesAt;
    UpdateStatus();
    for (const EPort port : kPorts) {
        SayPrompt(port);
    }
    for (const SLogRequest& request : m_memory.logs) {
        m_schedule.Add(request, m_now);
    }
}

void CReceiver::Hear(EPort port, std::string_view bytes, Milliseconds now) {
    Advance(now);
    if (IsDown()) {
        return;
    }
    if (State(port).hasEcho) {
        SayText(port, bytes);
    }
    const std::uint32_t mode = Settings(port).receiveMode;
    if (mode != kNovatelMode && State(port).escape.Hear(bytes, m_now)) {
        BringBack(port);
        return;
    }
    if (mode != kNovatelMode && mode != kNovatelBinaryMode) {
        return;
    }
    const SPortSettings before = Settings(port);
    for (const SCommand& command : State(port).reader.Read(bytes)) {
        if (mode == kNovatelMode || command.form == ECommandForm::binary) {
            Obey(port, command);
            Advance(m_now);
        }
        // What follows came at the speed, or in the mode, that the port has no more.
        if (IsDown() || Baud(port) != before.baud || Settings(port).receiveMode != mode) {
            State(port).reader.Forget();
            break;
        }
    }
}

void CReceiver::HearNoise(EPort port, Milliseconds now) {
    Advance(now);
    State(port).reader.Forget();
    State(port).escape = {};
}

/// As two breaks would: the port's logs end, and it is as it left the factory.
void CReceiver::BringBack(EPort port) {
    m_schedule.RemoveAll(port, true);
    Settings(port) = {.port = FactsOf(port).number, .baud = kFactoryBaud};
    State(port) = {};
    SayPrompt(port);
}

} // namespace Sim
