// The history's database as its writer has it.
#pragma once

#include "hub/Complaint.h"
#include "hub/history/Database.h"
#include "hub/history/Inserts.h"
#include "hub/history/Rows.h"

#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <string>

namespace Hub {

/// Makes the database, with the folders above it. One that is damaged or of another form is moved
/// aside. Whatever goes wrong is told on standard error and tried again with the next rows. To be
/// used by one thread.
class CHistoryStore {
public:
    /// So much may wait for a disk that takes nothing; past it the oldest rows are lost.
    static constexpr std::size_t kMostWaitingBytes = std::size_t{8} * 1024 * 1024;

    CHistoryStore(const std::string& path, int days, int megabytes);

    /// Adds the rows, and those that could not be written before, in one transaction; now and then
    /// removes what is too old or too much.
    void Write(SHistoryRows rows);

    /// Whether rows wait for another call of Write(), be it without any. From any thread.
    bool HasWaiting() const { return m_hasWaiting; }

    /// Lets the check of a large database, which takes its time, end at once. From any thread.
    void Hurry() { m_isInHurry = true; }

private:
    enum class ELook { usable, fresh, unusable, unreadable };

    bool Prepare();
    bool Open();
    void Close();
    ELook Look();
    bool IsWhole();
    bool SetUp(bool isFresh);
    void MoveAside();
    bool AddAll();
    void Fail();
    bool RemoveOld();
    bool RemoveExcess();
    std::optional<double> TimeOfOldest();
    bool RemoveUntil(double time);
    std::int64_t UsedPages();

    const std::string m_path;
    const double m_maxAge;         ///< seconds
    const std::int64_t m_logBytes; ///< what SQLite's write-ahead log may take of the room
    const std::int64_t m_maxBytes; ///< of the database without it
    CDatabase m_database;
    std::unique_ptr<CHistoryInserts> m_inserts;
    std::deque<SHistoryRows> m_waiting;
    std::size_t m_waitingBytes = 0;
    CComplaint m_complaint{"The history"};
    std::string m_whyUnusable;
    bool m_isChecked = false;
    unsigned m_writes = 0;
    std::atomic<bool> m_hasWaiting = false;
    std::atomic<bool> m_isInHurry = false;
};

} // namespace Hub
