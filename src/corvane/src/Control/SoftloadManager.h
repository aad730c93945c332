// Loads new firmware into the receiver while the daemon goes on working.
#pragma once

#include "Control/LineFile.h"
#include "LogObserver/LogObserver.h"
#include "platform/Logger.h"
#include "platform/Time.h"

#include <cstdint>
#include <string>

class CInputOutputHandler;

/// Streams a file of S-records in paced bursts, has the receiver commit them and resets it, led by
/// the receiver's own soft-load status. The status numbers are those of the soft-load status
/// record: in 2 and 3 S-records are taken, 6 and 12 ask for a reset, 13 to 26 are final. It has no
/// time-out: only the receiver ends an upgrade, or a firmware file that cannot be read to its end.
class SoftloadManager : public CLogObserver {
public:
    static constexpr int kLinesInBurst = 30;
    static constexpr Core::Time kBurstInterval = Core::Time::FromMilliseconds(80);
    /// The status of an upgrade that was given up because its file could not be read to the end:
    /// one of the final ones, which no receiver reports.
    static constexpr std::int32_t kFileLost = 24;

    /// Neither is owned; without a byte source nothing can be sent.
    SoftloadManager(CInputOutputHandler* source, CLogger& logger)
        : m_source(source), m_logger(logger) {}

    void NewRecord(CGPSRecord* record) override;
    /// Follows the receiver's soft-load status; passes over every other record.
    virtual void DispatchLog(const CGPSRecord& record);
    /// Writes at once, opening the source when it is closed. False without a source, and when it
    /// cannot be opened.
    virtual bool SendCommand(const std::string& text);

    /// Opens the file and puts the receiver into its loading mode, which takes 0.6 s. False when
    /// the path names no regular file that can be read.
    bool StartUpgrade(const std::string& path);

    /// The upgrade's step, to be called once a pass while it lasts. Returns the status.
    std::int32_t Service(Core::MonotonicTime now);

    bool IsUpgrading() const;
    bool IsComplete() const;
    /// `percent` of the file's bytes have been sent. False when the last upgrade ended in an error.
    bool GetProgress(bool& ended, std::int32_t& percent) const;

private:
    bool IsLoading() const;
    void updateSoftloadStatus(std::int32_t status);
    void EndUpgrade();
    void SendBurst(Core::MonotonicTime now);
    void GiveUp();
    void Commit();
    void ResetReceiver();
    void PutIntoLoadingMode();

    CInputOutputHandler* m_source;
    CLogger& m_logger;
    std::int32_t m_status = 0; ///< 0 idle, 1 started here, else what the receiver reported last
    std::int32_t m_lastEndStatus = 0;
    CLineFile m_file;
    Core::MonotonicTime m_nextBurst;
    bool m_isCommitSent = false;
    bool m_isResetPending = false;
};
