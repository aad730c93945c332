// The traffic of one receiver port: bytes in, sentences, records, observers; and its silence.
#pragma once

#include "LogObserver/LogObserver.h"
#include "Port/ReceiverCommand.h"
#include "platform/Config.h"
#include "platform/Diagnosticator.h"
#include "platform/RemoteLogger.h"
#include "platform/Time.h"

#include <cstdint>
#include <string>
#include <vector>

class BreakoutController;
class CCommandManager;
class CGPSRecord;
class CInputOutputHandler;
class CSentenceConstructor;
class SoftloadManager;

namespace Novatel {

/// Raised when the port has been silent for its time-out.
inline constexpr Diagnosticator::SDescriptor kPortTimeoutDiagnostic{90001, 0};
/// Raised from the tenth receiver initialisation of the process on.
inline constexpr Diagnosticator::SDescriptor kRepeatedInitialisationDiagnostic{90002, 0};

/// Created by start-up, one a port; the main loop calls HandlePort() once a pass. It owns nothing
/// that it is given. Without a command manager it sends nothing and resets no receiver, without a
/// breakout controller its port is taken as it is. Publishes under its own name.
class CPortHandler {
public:
    using FramerList = std::vector<CSentenceConstructor*>;
    using ObserverList = std::vector<CLogObserver*>;

    /// Reads "serial_port_timeout" (seconds, default 10) from section "Corvane".
    CPortHandler(const std::string& name, CConfig& config);
    virtual ~CPortHandler();
    CPortHandler(const CPortHandler&) = delete;
    CPortHandler& operator=(const CPortHandler&) = delete;

    void SetByteSource(CInputOutputHandler* source) { m_source = source; }
    void SetFramers(const FramerList* framers) { m_framers = framers; }
    /// Observers appended to the list later are seen by the next record.
    void SetObservers(const ObserverList* observers) { m_observers = observers; }

    void SetCommandManager(CCommandManager* commands) { m_commands = commands; }
    void SetUpgradeManager(SoftloadManager* upgrade) { m_upgrade = upgrade; }
    /// Only the primary handler, which it is unless told otherwise, drives a firmware upgrade.
    void SetPrimary(bool isPrimary) { m_isPrimary = isPrimary; }
    void SetBreakoutController(BreakoutController* breakout) { m_breakout = breakout; }

    CInputOutputHandler* ByteSource() const { return m_source; }
    /// The byte source's descriptor, -1 without a source.
    int FileDescriptor() const;

    /// Performs the breakout, queues the receiver's configuration and arms the silence timer. Takes
    /// as long as the breakout does. Always true.
    bool Start();

    /// One pass: a step of a firmware upgrade; else one command, if any waits, and nothing more;
    /// else what has come in. False only when the port was readable but gave no bytes.
    bool HandlePort(bool readable);

    /// Writes an encoded command. True only when the byte source's vector write returns the number
    /// of bytes, which a serial line or a file never does for more than one byte: the command is
    /// written all the same. Kept: callers rely on it.
    bool SendCommand(const CReceiverCommand& command, std::uint8_t portAddress,
                     std::uint16_t sequence, std::uint16_t week, std::uint32_t milliseconds);

    /// Hands what was captured of the received bytes to the logging service.
    void FlushCapture();

protected:
    /// Resets a receiver that has been silent for too long; true while that is under way.
    virtual bool CheckTimeout(Core::MonotonicTime now);

private:
    void InitialiseReceiver();
    void ServiceUpgrade(Core::MonotonicTime now);
    bool SendNextCommand(Core::MonotonicTime now);
    void HandleBytes(const std::string& bytes);
    void DrainFramer(CSentenceConstructor& framer);
    void PublishChecksums();
    void ProcessSentence();
    void PublishTiming(const CGPSRecord& record);
    void TellFailure();
    void ArmPortTimer(Core::MonotonicTime now);

    std::string m_name;
    CInputOutputHandler* m_source = nullptr;
    const FramerList* m_framers = nullptr;
    const ObserverList* m_observers = nullptr;
    CCommandManager* m_commands = nullptr;
    SoftloadManager* m_upgrade = nullptr;
    BreakoutController* m_breakout = nullptr;
    bool m_isPrimary = true;
    CRemoteLogger m_logger;
    Diagnosticator::CDiagnosticatorAPI m_diagnostics;

    std::string m_capture; ///< received bytes not yet handed to the logger
    Core::MonotonicTime m_portTimer;
    Core::MonotonicTime m_resetDeadline;
    bool m_resetting = false;
    bool m_upgrading = false;
    Core::MonotonicTime m_commandPoll; ///< until then the empty queue is not looked at again
    std::int32_t m_portTimeout;        ///< seconds
    std::uint64_t m_sentencesGood = 0;
    std::uint64_t m_sentencesRejected = 0;
    std::uint64_t m_initialisations = 0;
    bool m_hasNewRecord = false; ///< the bytes at hand yielded one

    std::vector<std::uint8_t> m_chunk;    ///< kept to be filled again without allocating
    std::vector<std::uint8_t> m_sentence; ///< likewise
};

} // namespace Novatel
