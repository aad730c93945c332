// The receiver: takes commands on its ports, and says what they ask for when its time has come.
#pragma once

#include "CommandReader.h"
#include "CommandTable.h"
#include "EscapeSequence.h"
#include "FirmwareLoad.h"
#include "LogSchedule.h"
#include "Reception.h"

#include <array>
#include <string>
#include <string_view>

namespace Sim {

inline constexpr std::uint8_t kTimeUnknown = 20; ///< of a log's time status

/// Something whole that leaves a port: a log with all its parts, or an answer.
struct SUtterance {
    EPort port = EPort::com1;
    Milliseconds moment = 0;
    std::uint32_t baud = 0; ///< of the port, as it is said
    Bytes bytes = {};
    bool isLog = false;
};

/// Where a receiver's words go.
class CReceiverOutput {
public:
    virtual ~CReceiverOutput() = default;

    virtual void Say(const SUtterance& utterance) = 0;
};

/// A fault of the receiver itself: bits that are set from a moment on, for some time.
struct SStatusFault {
    Milliseconds at = 0; ///< since the start
    Milliseconds duration = kNever;
    std::uint32_t statusBits = 0;
    std::uint32_t errorBits = 0;
};

struct SReceiverSettings {
    std::uint64_t seed = 1;
    STime start = {};
    std::uint32_t baud = 9600; ///< of the COM ports after every start
    std::string model = "L12LGRV";
    std::string firmware = "3.907";
    std::string firmwareError = {}; ///< with which a firmware load ends
    std::vector<SStatusFault> faults = {};
};

/// Knows nothing of real time: it is told the moment with whatever happens, and never an earlier
/// one than before.
class CReceiver {
public:
    /// How long it is silent after a reset.
    static constexpr Milliseconds kBootTime = 3000;
    /// How long it has no satellites after that.
    static constexpr Milliseconds kAcquisitionTime = 8000;
    /// How long a filter takes from its restart: RTK to an integer solution, PDP to a smooth one.
    static constexpr Milliseconds kConvergenceTime = 20'000;

    /// It has been running for long: its clock is steered and its solutions are there.
    CReceiver(const SReceiverSettings& settings, CReceiverOutput& output);

    void Hear(EPort port, std::string_view bytes, Milliseconds now);
    /// Bytes that came at another speed than the port has.
    void HearNoise(EPort port, Milliseconds now);

    /// Does all that is due until now.
    void Advance(Milliseconds now);
    /// When something will be due; kNever for not before a command comes.
    Milliseconds NextEvent() const;
    /// Gives up the logs that are overdue, after the simulation has stood still.
    void SkipTo(Milliseconds now);

    std::uint32_t Baud(EPort port) const { return m_info.ports[IndexOf(port)].baud; }

private:
    /// A port's own state besides the settings that COMCONFIG reports.
    struct SPortState {
        CCommandReader reader;
        CEscapeSequence escape;
        bool hasEcho = false;
    };
    /// What SAVECONFIG keeps.
    struct SMemory {
        std::vector<SPortSettings> ports;
        std::vector<SLogRequest> logs;
    };

    // Receiver.cpp: its life
    SPortSettings& Settings(EPort port) { return m_info.ports[IndexOf(port)]; }
    SPortState& State(EPort port) { return m_ports[IndexOf(port)]; }
    std::vector<SPortSettings> FactoryPorts() const;
    bool IsDown() const { return m_upAt != kNever; }
    void TakeStep();
    void ShutDown();
    void StartUp();
    void BringBack(EPort port);
    bool UpdateStatus();

    // ReceiverCommands.cpp: what it is told
    void Obey(EPort port, const SCommand& command);
    SResponse Execute(EPort port, const SCommand& command);
    SResponse ExecuteUnderstood(std::string_view name, const SArguments& arguments);
    SResponse ExecuteLoad(std::string_view name, const SArguments& arguments);
    SResponse Log(EPort port, const SCommand& command);
    SResponse Unlog(EPort port, const SCommand& command);
    SResponse SetLine(const SArguments& arguments);
    SResponse SetInterfaceMode(const SArguments& arguments);
    SResponse SelectChannels(std::int64_t number);
    void FactoryReset(std::int64_t part);
    void Save();
    void UnlogAll(const SArguments& arguments);
    void SetPDPFilter(std::int64_t action);

    // ReceiverLogs.cpp: what it says
    bool IsTalking(EPort port) const;
    void Say(EPort port, Bytes bytes, bool isLog);
    void SayText(EPort port, std::string_view text);
    void SayPrompt(EPort port);
    void Answer(EPort port, const SCommand& command, const SResponse& response);
    SState StateAt(Milliseconds moment) const;
    SHeaderFields HeaderOf(EPort port) const;
    std::string AnyASCIILog(const SState& state, const SHeaderFields& header) const;
    std::optional<Bytes> Write(const SLogRequest& request, Milliseconds moment) const;
    std::optional<Bytes> WriteBinary(const SLogRequest& request, const SState& state,
                                     const SHeaderFields& header) const;
    std::optional<std::string> WriteText(const SLogRequest& request, const SState& state,
                                         const SHeaderFields& header) const;
    void Send(const SLogRequest& request, Milliseconds moment);
    void SendChanged();

    SReceiverSettings m_settings;
    CReceiverOutput& m_output;
    CWorld m_world;
    SModel m_model;
    SReceiverInfo m_info;
    std::array<SPortState, kPorts.size()> m_ports;
    CLogSchedule m_schedule;
    CFirmwareLoad m_firmware;
    SMemory m_memory;
    SReception m_reception;
    std::vector<SLogRequest> m_askedOnce; ///< to be sent behind the answer

    Milliseconds m_start;
    Milliseconds m_now;
    Milliseconds m_downAt = kNever; ///< a reset that was ordered
    Milliseconds m_upAt = kNever;   ///< the end of its silence
    Milliseconds m_startedAt = 0;   ///< the end of the last one's silence
    Milliseconds m_rtkConvergesAt = 0;
    Milliseconds m_pdpConvergesAt = 0;
};

} // namespace Sim
