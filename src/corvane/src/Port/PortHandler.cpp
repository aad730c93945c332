#include "Port/PortHandler.h"

#include "Control/CommandManager.h"
#include "Control/SoftloadManager.h"
#include "Framing/RecordFactory.h"
#include "Framing/SentenceConstructor.h"
#include "IO/InputOutputHandler.h"
#include "Logs/GPSRecord.h"
#include "Port/BreakoutController.h"
#include "platform/DebugPrint.h"

#include <memory>
#include <utility>

namespace Novatel {

namespace {

/// How long a port may be silent before its handler has seen the first record.
constexpr Core::Time kStartTimeout = Core::Time::FromMilliseconds(30'000);
/// How long a receiver that was reset is left alone.
constexpr Core::Time kResetTime = Core::Time::FromMilliseconds(30'000);
/// A capture that grows past this is handed over.
constexpr std::size_t kMaxCapture = 1023;
constexpr std::uint64_t kRepeatedInitialisations = 10;
/// How often a queue without commands is looked at.
constexpr Core::Time kCommandPollInterval = Core::Time::FromMilliseconds(100);

/// Counters are published as their low 32 bits.
int Low32(std::uint64_t count) {
    return static_cast<int>(static_cast<std::uint32_t>(count));
}

} // namespace

CPortHandler::CPortHandler(const std::string& name, CConfig& config)
    : m_name(name),
      m_logger(name),
      m_diagnostics(name),
      m_portTimer(Core::MonotonicTime::Now() + kStartTimeout),
      m_portTimeout(config.GetInteger("Corvane", "serial_port_timeout", 10)) {
    m_logger.SetEssentialStatus("started", "started");
    m_diagnostics.WatchActivity();
}

CPortHandler::~CPortHandler() {
    m_logger.SetEssentialStatus("started", "exitted");
}

int CPortHandler::FileDescriptor() const {
    return m_source == nullptr ? -1 : m_source->FileDescriptor();
}

bool CPortHandler::Start() {
    if (m_breakout != nullptr) {
        m_breakout->PerformBreakout();
    }
    InitialiseReceiver();
    ArmPortTimer(Core::MonotonicTime::Now());
    return true;
}

void CPortHandler::InitialiseReceiver() {
    ++m_initialisations;
    m_logger.SetEssentialStatus("receiver_initialisations", "%d", Low32(m_initialisations));
    if (m_commands != nullptr) {
        m_commands->ReplayConfiguration();
    }
    if (m_initialisations >= kRepeatedInitialisations) {
        m_diagnostics.Raise(kRepeatedInitialisationDiagnostic, 1);
    }
}

void CPortHandler::ArmPortTimer(Core::MonotonicTime now) {
    m_portTimer = now + Core::Time::FromSeconds(m_portTimeout);
}

bool CPortHandler::HandlePort(bool readable) {
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    m_source->ContinueWriting();
    TellFailure();
    ServiceUpgrade(now);
    if (SendNextCommand(now) || CheckTimeout(now) || !readable) {
        return true;
    }
    const std::string bytes = m_source->Read();
    if (bytes.empty()) {
        TellFailure();
        return false;
    }
    HandleBytes(bytes);
    return true;
}

void CPortHandler::ServiceUpgrade(Core::MonotonicTime now) {
    m_upgrading = m_upgrade != nullptr && m_upgrade->IsUpgrading();
    if (m_upgrading && m_isPrimary) {
        m_upgrade->Service(now);
    }
}

/// True when a command was sent. A receiver that reads slowly gets the next one when it has taken
/// what was written before.
bool CPortHandler::SendNextCommand(Core::MonotonicTime now) {
    if (m_commands == nullptr || m_upgrading || now < m_commandPoll ||
        m_source->HasWaitingBytes()) {
        return false;
    }
    const std::string command = m_commands->NextCommand();
    if (command.empty()) {
        m_commandPoll = now + kCommandPollInterval;
        return false;
    }
    m_logger.Warn("Sending buffered command: %s", command.c_str());
    m_source->Write(command);
    m_commands->InspectCommand(command);
    return true;
}

void CPortHandler::HandleBytes(const std::string& bytes) {
    m_diagnostics.SignalReceivedData();
    m_hasNewRecord = false;
    m_chunk.assign(bytes.begin(), bytes.end());
    for (CSentenceConstructor* framer : *m_framers) {
        framer->AddBytes(m_chunk);
        DrainFramer(*framer);
    }
    m_capture += bytes;
    if (m_capture.size() > kMaxCapture) {
        FlushCapture();
    }
    if (m_hasNewRecord) {
        // Last, so that time spent publishing never looks like a silent port.
        ArmPortTimer(Core::MonotonicTime::Now());
    }
}

/// After each sentence while somebody sees it; else only the last counts, and a capture with noise
/// has thousands.
void CPortHandler::DrainFramer(CSentenceConstructor& framer) {
    bool hasUntold = false;
    for (int result = framer.GetSentence(m_sentence); result == 1 || result == -1;
         result = framer.GetSentence(m_sentence)) {
        if (result == 1) {
            ++m_sentencesGood;
            ProcessSentence();
        } else {
            ++m_sentencesRejected;
        }
        hasUntold = !m_logger.IsHeard();
        if (!hasUntold) {
            PublishChecksums();
        }
    }
    if (hasUntold) {
        PublishChecksums();
    }
}

void CPortHandler::PublishChecksums() {
    static const std::string kKey = "checksum_stats";
    m_logger.SetEssentialStatus(kKey, "%d,%d", Low32(m_sentencesGood), Low32(m_sentencesRejected));
}

/// A sentence that becomes no record does not count as a sign of life: a port that brings nothing
/// else still times out.
void CPortHandler::ProcessSentence() {
    if (m_upgrading && m_sentence.front() == '#') {
        const std::string text(m_sentence.begin(), m_sentence.end());
        m_logger.Error("sentence data during upgrade: %s", text.c_str());
    }
    m_diagnostics.SignalActivity();
    const std::unique_ptr<CGPSRecord> record(CreateRecord(m_sentence, ECRCCheck::alreadyPassed));
    if (record == nullptr) {
        return;
    }
    // By index: an observer may append another to the list.
    for (std::size_t i = 0; i < m_observers->size(); ++i) {
        (*m_observers)[i]->NewRecord(record.get());
    }
    PublishTiming(*record);
    m_hasNewRecord = true;
}

void CPortHandler::PublishTiming(const CGPSRecord& record) {
    std::uint32_t week = 0;
    double seconds = 0.0;
    record.GetGPSTime(week, seconds);
    m_logger.LogData("QRS_" + std::to_string(record.GetMessageID()),
                     Core::UnixTime::Now().AsSeconds(), "%lf,%d,%lf", record.GetReceptionSeconds(),
                     Low32(week), seconds);
}

bool CPortHandler::CheckTimeout(Core::MonotonicTime now) {
    if (now < m_portTimer || m_upgrading) {
        return false;
    }
    if (!m_resetting) {
        m_logger.Error("CorvanePortTimeout resetting receiver");
        m_diagnostics.Raise(kPortTimeoutDiagnostic, 1);
        if (m_commands != nullptr) {
            m_commands->Reset();
        }
        m_resetDeadline = now + kResetTime;
        m_resetting = true;
    } else if (now >= m_resetDeadline) {
        m_logger.Error("CorvanePortTimeout reset sleep complete, setting up receiver");
        m_resetting = false;
        m_source->Close();
        Start();
    }
    return true;
}

bool CPortHandler::SendCommand(const CReceiverCommand& command, std::uint8_t portAddress,
                               std::uint16_t sequence, std::uint16_t week,
                               std::uint32_t milliseconds) {
    std::vector<std::uint8_t> bytes;
    if (!command.Encode(bytes, portAddress, sequence, week, milliseconds)) {
        return false;
    }
    const std::int64_t written = m_source->Write(bytes);
    return written == static_cast<std::int64_t>(bytes.size());
}

void CPortHandler::FlushCapture() {
    if (!m_capture.empty()) {
        m_logger.LogRaw(m_name, std::exchange(m_capture, std::string()));
    }
}

void CPortHandler::TellFailure() {
    const std::string failure = m_source->TakeFailure();
    if (!failure.empty()) {
        deprintf("%s: %s\n", m_name.c_str(), failure.c_str());
        m_logger.Error("%s", failure.c_str());
    }
}

} // namespace Novatel
