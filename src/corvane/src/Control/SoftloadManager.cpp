#include "Control/SoftloadManager.h"

#include "IO/InputOutputHandler.h"
#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"
#include "platform/Text.h"

#include <utility>

using Novatel::CNovatelSoftLoadStatusRecord;

namespace {

constexpr std::uint16_t kSoftloadStatusID = 1235;

constexpr std::int32_t kIdle = 0;
constexpr std::int32_t kStarted = 1;
constexpr std::int32_t kReadyForSetup = 2;
constexpr std::int32_t kReadyForData = 3;
constexpr std::int32_t kWroteFlash = 6;
constexpr std::int32_t kComplete = 12;
constexpr std::int32_t kFirstFinal = 13;
constexpr std::int32_t kLastFinal = 26;

constexpr Core::Time kStartPause = Core::Time::FromMilliseconds(50);
/// A receiver that is busy with its output must not miss the commands that start a load.
constexpr int kStartRepetitions = 3;

} // namespace

void SoftloadManager::NewRecord(CGPSRecord* record) {
    if (record != nullptr) {
        DispatchLog(*record);
    }
}

void SoftloadManager::DispatchLog(const CGPSRecord& record) {
    const auto* const status = CLogCast(record).As<CNovatelSoftLoadStatusRecord>(kSoftloadStatusID);
    if (status == nullptr) {
        return;
    }
    m_logger.Error("SoftloadManager::DispatchLog status is %d", status->GetStatus());
    if (status->GetStatus() == CNovatelSoftLoadStatusRecord::kUnknownStatus) {
        m_logger.Error("SoftloadManager: the receiver reports the unknown status \"%s\"",
                       status->GetStatusText().c_str());
    }
    updateSoftloadStatus(status->GetStatus());
}

void SoftloadManager::updateSoftloadStatus(std::int32_t status) {
    m_status = status;
    m_logger.Error("SoftloadManager::updateSoftloadStatus set status to %d",
                   static_cast<int>(status));
    if (status >= kFirstFinal && status <= kLastFinal) {
        m_logger.Error("Ending upgrade because status is %d", static_cast<int>(status));
        EndUpgrade();
    } else if (status == kWroteFlash || status == kComplete) {
        m_logger.Error("SoftloadManager::updateSoftloadStatus triggering reset");
        m_isResetPending = true;
    }
}

void SoftloadManager::EndUpgrade() {
    m_file.Close();
    if (m_status > kStarted) {
        m_lastEndStatus = m_status;
    }
    m_status = kIdle;
    m_logger.Error("SoftloadManager::EndUpgrade: upgrade complete");
}

bool SoftloadManager::SendCommand(const std::string& text) {
    if (m_source == nullptr) {
        return false;
    }
    if (!m_source->IsOpen()) {
        m_logger.Error("SoftloadManager::Has to reopen port");
        if (!m_source->Open()) {
            return false;
        }
    }
    if (!m_source->Write(text)) {
        m_logger.Error("SoftloadManager::SendCommand: write failed");
    }
    return true;
}

bool SoftloadManager::StartUpgrade(const std::string& path) {
    m_file.Close();
    m_logger.SetEssentialStatus("firmware_file_used", "%s", path.c_str());
    CLineFile file;
    if (!file.Open(path)) {
        m_logger.Error("SoftloadManager::StartUpgrade: failed to open file");
        m_logger.Error("SoftloadManager: %s", file.LastError().c_str());
        return false;
    }
    m_file = std::move(file);
    m_isCommitSent = false;
    m_isResetPending = false;
    PutIntoLoadingMode();
    m_logger.Error("SoftloadManager::StartUpgrade openned file <%s>  command <SOFTLOADRESET>, "
                   "FileSize:%lld",
                   path.c_str(), static_cast<long long>(m_file.Size()));
    m_nextBurst = Core::MonotonicTime();
    m_status = kStarted;
    m_lastEndStatus = 0;
    return true;
}

void SoftloadManager::PutIntoLoadingMode() {
    for (int i = 0; i < kStartRepetitions; ++i) {
        for (const char* command :
             {"UNLOGALL\r\n", "LOG SOFTLOADSTATUSA ONCHANGED\r\n", "SOFTLOADRESET\r\n"}) {
            Core::Sleep(kStartPause);
            SendCommand(command);
        }
        Core::Sleep(kStartPause);
    }
}

bool SoftloadManager::IsLoading() const {
    return m_status == kReadyForSetup || m_status == kReadyForData;
}

std::int32_t SoftloadManager::Service(Core::MonotonicTime now) {
    if (!IsLoading()) {
        if (m_isResetPending) {
            ResetReceiver();
        }
        return m_status;
    }
    if (!m_file.IsAtEnd()) {
        // What waits leaves first; without a file the load is somebody else's.
        const bool canSend = m_source == nullptr || !m_source->HasWaitingBytes();
        if (m_file.IsOpen() && now >= m_nextBurst && canSend) {
            SendBurst(now);
        }
        m_logger.SetEssentialStatus(
            "softload_status", "%lld,%lld,%d", static_cast<long long>(m_file.BytesRead()),
            static_cast<long long>(m_file.Size()), static_cast<int>(m_status));
        if (m_file.IsOpen() && m_file.HasFailed()) {
            GiveUp();
        }
    } else if (!m_isCommitSent) {
        Commit();
    }
    return m_status;
}

/// Always so many reads: those past the end of the file give empty lines, which are not sent.
void SoftloadManager::SendBurst(Core::MonotonicTime now) {
    for (int i = 0; i < kLinesInBurst; ++i) {
        const std::string text = m_file.ReadLine();
        const std::string_view line = Core::Utilities::Trim(text);
        if (!line.empty()) {
            SendCommand("SOFTLOADSREC \"" + std::string(line) + "\"\r\n");
        }
    }
    m_nextBurst = now + kBurstInterval;
}

/// An image with a part missing must never be committed.
void SoftloadManager::GiveUp() {
    m_logger.Error("SoftloadManager: the firmware file cannot be read to its end (%s): the upgrade "
                   "is given up, the receiver keeps the firmware it has",
                   m_file.LastError().c_str());
    m_status = kFileLost;
    EndUpgrade();
}

void SoftloadManager::Commit() {
    SendCommand("SOFTLOADCOMMIT\r\n");
    m_logger.Error("SoftloadManager sent command <SOFTLOADCOMMIT>");
    m_isCommitSent = true;
}

void SoftloadManager::ResetReceiver() {
    SendCommand("FRESET\r\n");
    m_logger.Error("SoftloadManager sent command <FRESET>");
    m_isResetPending = false;
    EndUpgrade();
}

bool SoftloadManager::IsUpgrading() const {
    if (m_status == kIdle) {
        return false;
    }
    return m_status < kComplete || m_isResetPending;
}

bool SoftloadManager::IsComplete() const {
    return m_status == kComplete;
}

bool SoftloadManager::GetProgress(bool& ended, std::int32_t& percent) const {
    ended = m_lastEndStatus != 0;
    percent = m_file.Size() == 0
                  ? 0
                  : static_cast<std::int32_t>(m_file.BytesRead() * 100 / m_file.Size());
    return m_lastEndStatus < kFirstFinal;
}
