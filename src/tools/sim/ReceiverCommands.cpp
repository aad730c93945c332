#include "Receiver.h"

#include <utility>

namespace Sim {

namespace {

constexpr std::int64_t kReset = 1; ///< of RTKCOMMAND
constexpr Milliseconds kSecond = 1000;
constexpr std::size_t kEchoPlace = 5; ///< among the values of COM

/// What a soft breakout leaves on a port that needed none.
bool IsEscape(const SCommand& command) {
    return command.name.find_first_not_of('+') == std::string::npos && command.words.empty();
}

} // namespace

void CReceiver::Obey(EPort port, const SCommand& command) {
    if (command.name.empty() && command.form == ECommandForm::abbreviated) {
        SayPrompt(port);
        return;
    }
    if (IsEscape(command) && command.form == ECommandForm::abbreviated) {
        return;
    }
    // The answer leaves as the port was before the command changed it.
    const SPortSettings before = Settings(port);
    const SResponse response = Execute(port, command);
    const SPortSettings after = std::exchange(Settings(port), before);
    Answer(port, command, response);
    Settings(port) = after;
    for (const SLogRequest& request : std::exchange(m_askedOnce, {})) {
        Send(request, m_now);
    }
    UpdateStatus();
    SendChanged();
}

SResponse CReceiver::Execute(EPort port, const SCommand& command) {
    if (command.isDamaged) {
        return {EResponse::invalidChecksum};
    }
    const SCommandFacts* facts = FindCommand(command.name);
    if (facts == nullptr) {
        return {EResponse::noSuchCommand};
    }
    if (facts->needsRTK && !m_model.hasRTK) {
        return {EResponse::notForModel};
    }
    if (facts->name == "LOG") {
        return Log(port, command);
    }
    if (facts->name == "UNLOG") {
        return Unlog(port, command);
    }
    const SArguments arguments = Understand(*facts, command.words, port);
    return arguments.response.IsOK() ? ExecuteUnderstood(facts->name, arguments)
                                     : arguments.response;
}

/// Commands that are not named here are accepted and change nothing that could be seen.
SResponse CReceiver::ExecuteUnderstood(std::string_view name, const SArguments& arguments) {
    if (name == "COM") {
        return SetLine(arguments);
    }
    if (name == "INTERFACEMODE") {
        return SetInterfaceMode(arguments);
    }
    if (name == "SELECTCHANCONFIG") {
        return SelectChannels(arguments.Value(0, 1));
    }
    if (name == "UNLOGALL") {
        UnlogAll(arguments);
    } else if (name == "RESET") {
        m_downAt = m_now + arguments.Value(0, 0) * kSecond;
    } else if (name == "FRESET") {
        FactoryReset(arguments.Value(0, 0));
    } else if (name == "SAVECONFIG") {
        Save();
    } else if (name == "PDPFILTER") {
        SetPDPFilter(arguments.Value(0, 0));
    } else if (name == "RTKCOMMAND" && arguments.Value(0, 0) == kReset) {
        m_rtkConvergesAt = m_now + kConvergenceTime;
    } else if (name == "SBASCONTROL") {
        m_reception.isSBASOn = arguments.Value(0, 0) != 0;
    }
    return ExecuteLoad(name, arguments);
}

SResponse CReceiver::ExecuteLoad(std::string_view name, const SArguments& arguments) {
    if (name == "SOFTLOADRESET") {
        return m_firmware.Reset();
    }
    if (name == "SOFTLOADSREC") {
        return m_firmware.TakeRecord(arguments.texts.front());
    }
    if (name == "SOFTLOADCOMMIT") {
        return m_firmware.Commit(m_now);
    }
    return {};
}

SResponse CReceiver::Log(EPort port, const SCommand& command) {
    const auto outcome = UnderstandLog(command.words, port);
    if (const SResponse* refusal = std::get_if<SResponse>(&outcome)) {
        return *refusal;
    }
    for (const SLogRequest& request : std::get<std::vector<SLogRequest>>(outcome)) {
        if (const SResponse response = m_schedule.Add(request, m_now); !response.IsOK()) {
            return response;
        }
        if (request.trigger == ETrigger::once) {
            m_askedOnce.push_back(request);
        }
    }
    return {};
}

SResponse CReceiver::Unlog(EPort port, const SCommand& command) {
    const auto outcome = UnderstandUnlog(command.words, port);
    if (const SResponse* refusal = std::get_if<SResponse>(&outcome)) {
        return *refusal;
    }
    for (const SLogRequest& request : std::get<std::vector<SLogRequest>>(outcome)) {
        m_schedule.Remove(request);
    }
    return {};
}

/// Without a port it means all of them, unlike other commands.
void CReceiver::UnlogAll(const SArguments& arguments) {
    const std::vector<EPort> all(kPorts.begin(), kPorts.end());
    for (const EPort port : arguments.isPortNamed ? arguments.ports : all) {
        m_schedule.RemoveAll(port, arguments.Value(0, 0) != 0);
    }
}

SResponse CReceiver::SetLine(const SArguments& arguments) {
    const auto baud = static_cast<std::uint32_t>(arguments.Value(0, 0));
    for (const EPort port : arguments.ports) {
        if (!FactsOf(port).hasLineSpeed) {
            return {EResponse::portNotSupported};
        }
        if (!IsLineSpeed(baud) || baud > FactsOf(port).fastest) {
            return {EResponse::baudInvalid};
        }
    }
    for (const EPort port : arguments.ports) {
        Settings(port).baud = baud;
        State(port).hasEcho = arguments.Value(kEchoPlace, 0) != 0;
    }
    return {};
}

SResponse CReceiver::SetInterfaceMode(const SArguments& arguments) {
    for (const EPort port : arguments.ports) {
        SPortSettings& settings = Settings(port);
        settings.receiveMode = static_cast<std::uint32_t>(arguments.Value(0, 0));
        settings.transmitMode = static_cast<std::uint32_t>(arguments.Value(1, 0));
        settings.hasResponses = arguments.Value(2, 1) != 0;
    }
    return {};
}

/// A change starts the receiver anew.
SResponse CReceiver::SelectChannels(std::int64_t number) {
    if (number > static_cast<std::int64_t>(m_model.channelSets.size())) {
        return {EResponse::outOfRange, 1};
    }
    const auto set = static_cast<std::uint32_t>(number);
    if (set != m_info.channelConfigurationInUse) {
        m_info.channelConfigurationInUse = set;
        m_downAt = m_now;
    }
    return {};
}

void CReceiver::FactoryReset(std::int64_t part) {
    constexpr std::int64_t kStandard = 0;
    constexpr std::int64_t kCommands = 1;
    if (part == kStandard || part == kCommands) {
        m_memory = {};
        m_info.channelConfigurationInUse = 1;
    }
    m_downAt = m_now;
}

void CReceiver::Save() {
    m_memory = {.ports = m_info.ports, .logs = {}};
    for (const SScheduledLog& each : m_schedule.Logs()) {
        m_memory.logs.push_back(each.request);
    }
}

void CReceiver::SetPDPFilter(std::int64_t action) {
    constexpr std::int64_t kRestart = 2;
    if (action == kRestart) {
        m_pdpConvergesAt = m_now + kConvergenceTime;
    } else {
        m_reception.isPDPOn = action != 0;
    }
}

} // namespace Sim
