#include "hub/history/Store.h"

#include "hub/Folder.h"
#include "hub/history/Schema.h"
#include "platform/DebugPrint.h"
#include "platform/Time.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace Hub {

namespace {

constexpr std::int64_t kMegabyte = 1'000'000;
constexpr std::int64_t kPageBytes = 4096;
constexpr std::int64_t kMaxLogBytes = 4 * kMegabyte;
constexpr double kSecondsPerDay = 86'400.0;

/// How often what is too old is looked for, in calls of Write().
constexpr unsigned kWritesBetweenRemovals = 60;

/// Of each table whose rows go when they are too old.
struct STable {
    const char* timeOfNth; ///< from the oldest one
    const char* remove;    ///< up to a time
};
constexpr STable kTables[] = {
    {"SELECT second FROM position ORDER BY second LIMIT 1 OFFSET ?1",
     "DELETE FROM position WHERE second <= ?1"},
    {"SELECT second FROM position_minute ORDER BY second LIMIT 1 OFFSET ?1",
     "DELETE FROM position_minute WHERE second <= ?1"},
    {"SELECT time FROM event ORDER BY time LIMIT 1 OFFSET ?1",
     "DELETE FROM event WHERE time <= ?1"},
    {"SELECT time FROM diagnostic ORDER BY time LIMIT 1 OFFSET ?1",
     "DELETE FROM diagnostic WHERE time <= ?1"},
    {"SELECT time FROM status ORDER BY time LIMIT 1 OFFSET ?1",
     "DELETE FROM status WHERE time <= ?1"},
};

} // namespace

CHistoryStore::CHistoryStore(const std::string& path, int days, int megabytes)
    : m_path(path),
      m_maxAge(days * kSecondsPerDay),
      m_logBytes(std::min(megabytes * kMegabyte / 2, kMaxLogBytes)),
      m_maxBytes(megabytes * kMegabyte - m_logBytes) {
}

void CHistoryStore::Write(SHistoryRows rows) {
    m_hasWaiting = true;
    if (!rows.IsEmpty()) {
        m_waitingBytes += rows.bytes;
        m_waiting.push_back(std::move(rows));
    }
    while (m_waitingBytes > kMostWaitingBytes) {
        m_waitingBytes -= m_waiting.front().bytes;
        m_waiting.pop_front();
    }
    if (!Prepare() || !AddAll()) {
        return;
    }
    m_waiting.clear();
    m_waitingBytes = 0;
    m_hasWaiting = false;
    const bool isDue = m_writes++ % kWritesBetweenRemovals == 0;
    if ((!isDue || RemoveOld()) && RemoveExcess()) {
        m_complaint.TellOver(m_path + " is written again");
    }
}

bool CHistoryStore::Prepare() {
    if (m_database.IsOpen() && !m_database.HasMoved()) {
        return true;
    }
    Close();
    if (Open()) {
        return true;
    }
    Close();
    return false;
}

/// The statements before their connection.
void CHistoryStore::Close() {
    m_inserts.reset();
    m_database.Close();
}

/// A database that is of no use is moved aside, and a new one made in its place.
bool CHistoryStore::Open() {
    const std::string folder = std::filesystem::path(m_path).parent_path();
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::string why = MakeFolder(folder);
        why = why.empty() ? m_database.Open(m_path, CDatabase::EAccess::write) : why;
        if (!why.empty()) {
            m_complaint.Tell("cannot open " + m_path + ": " + why);
            return false;
        }
        const ELook look = Look();
        if ((look == ELook::usable || look == ELook::fresh) && SetUp(look == ELook::fresh)) {
            return true;
        }
        if (look == ELook::unreadable || m_whyUnusable.empty()) {
            m_complaint.Tell("cannot use " + m_path + ": " + m_database.Error());
            return false;
        }
        MoveAside();
    }
    return false;
}

CHistoryStore::ELook CHistoryStore::Look() {
    m_whyUnusable.clear();
    const auto application = m_database.Number("PRAGMA application_id");
    const auto version = m_database.Number("PRAGMA user_version");
    const auto tables = m_database.Number("SELECT count(*) FROM sqlite_schema");
    if (!application || !version || !tables) {
        m_whyUnusable = m_database.IsDamaged() ? m_database.Error() : "";
        return m_whyUnusable.empty() ? ELook::unreadable : ELook::unusable;
    }
    if (*application == 0 && *version == 0 && *tables == 0) {
        return ELook::fresh;
    }
    if (*application != History::kApplication || *version != History::kVersion) {
        m_whyUnusable = "it is no history of this version";
        return ELook::unusable;
    }
    return IsWhole() ? ELook::usable : ELook::unusable;
}

/// Once: it reads all of the file.
bool CHistoryStore::IsWhole() {
    constexpr int kInstructions = 10'000;
    if (m_isChecked) {
        return true;
    }
    m_isChecked = true;
    sqlite3_progress_handler(
        m_database.Connection(), kInstructions,
        [](void* store) { return static_cast<CHistoryStore*>(store)->m_isInHurry ? 1 : 0; }, this);
    CStatement check(m_database, "PRAGMA quick_check(1)");
    const bool hasFinding = check.Step();
    m_whyUnusable = hasFinding && check.Text(0) != "ok" ? check.Text(0) : "";
    if (!hasFinding && m_database.IsDamaged()) {
        m_whyUnusable = m_database.Error();
    }
    sqlite3_progress_handler(m_database.Connection(), 0, nullptr, nullptr);
    return m_whyUnusable.empty();
}

/// Each call to SQLite that fails leaves the reason with it; a form that is not ours is told in
/// m_whyUnusable.
bool CHistoryStore::SetUp(bool isFresh) {
    // A file that shrinks must be one before the write-ahead log is.
    std::string settings = isFresh ? "PRAGMA auto_vacuum = incremental;" : "";
    settings += "PRAGMA journal_mode = wal; PRAGMA synchronous = normal; PRAGMA wal_autocheckpoint "
                "= " +
                std::to_string(m_logBytes / kPageBytes / 4) +
                "; PRAGMA journal_size_limit = " + std::to_string(m_logBytes);
    if (!m_database.Execute(settings.c_str())) {
        return false;
    }
    if (isFresh) {
        const std::string schema =
            std::string("BEGIN IMMEDIATE;") + History::kSchema +
            "PRAGMA application_id = " + std::to_string(History::kApplication) +
            "; PRAGMA user_version = " + std::to_string(History::kVersion) + "; COMMIT";
        if (!m_database.Execute(schema.c_str())) {
            return false;
        }
    }
    m_inserts = std::make_unique<CHistoryInserts>(m_database);
    if (!m_inserts->IsValid()) {
        m_whyUnusable = m_inserts->IsOfOtherForm() ? "its tables are not those of a history" : "";
        return false;
    }
    return true;
}

/// One that was moved there before is replaced, so that no more than two are ever kept.
void CHistoryStore::MoveAside() {
    const std::string aside = m_path + ".aside";
    Close();
    for (const char* const part : {"-wal", "-shm"}) {
        ::unlink((aside + part).c_str());
        std::rename((m_path + part).c_str(), (aside + part).c_str());
    }
    if (std::rename(m_path.c_str(), aside.c_str()) != 0) {
        m_complaint.Tell(m_path + " is of no use (" + m_whyUnusable +
                         ") and cannot be moved aside: " + std::strerror(errno));
        return;
    }
    deprintf("The history: %s is of no use (%s); it is now %s and a new one is begun\n",
             m_path.c_str(), m_whyUnusable.c_str(), aside.c_str());
}

bool CHistoryStore::AddAll() {
    const bool isAdded = m_database.Execute("BEGIN IMMEDIATE") &&
                         std::all_of(m_waiting.begin(), m_waiting.end(),
                                     [this](const auto& rows) { return m_inserts->Add(rows); }) &&
                         m_database.Execute("COMMIT");
    if (!isAdded) {
        Fail();
    }
    return isAdded;
}

void CHistoryStore::Fail() {
    const int code = m_database.Code();
    const std::string why = m_database.Error();
    const bool isDamaged = m_database.IsDamaged();
    m_database.Execute("ROLLBACK"); // fails where the failure itself has done it
    if (isDamaged) {
        m_whyUnusable = why;
        MoveAside();
    } else {
        m_complaint.Tell("cannot write to " + m_path + ": " + why);
        if (code != SQLITE_FULL && code != SQLITE_BUSY) {
            Close();
        }
    }
}

bool CHistoryStore::RemoveOld() {
    return RemoveUntil(Core::UnixTime::Now().AsSeconds() - m_maxAge);
}

/// What is too much goes in steps, the oldest rows of all kinds first. The room is used again; only
/// a file that is larger than it may be shrinks.
bool CHistoryStore::RemoveExcess() {
    const std::int64_t most = m_maxBytes / kPageBytes;
    while (UsedPages() > most) {
        const std::optional<double> oldest = TimeOfOldest();
        if (!oldest || !RemoveUntil(*oldest)) {
            return false;
        }
    }
    return m_database.Number("PRAGMA page_count").value_or(0) <= most ||
           m_database.Execute("PRAGMA incremental_vacuum");
}

/// Up to when rows have to go so that room is made: about two hundred of the oldest, or less when
/// there are few.
std::optional<double> CHistoryStore::TimeOfOldest() {
    std::optional<double> oldest;
    for (const int offset : {200, 10, 0}) {
        for (const STable& table : kTables) {
            CStatement nth(m_database, table.timeOfNth);
            if (nth.Bind(offset).Step() && (!oldest || nth.Real(0) < *oldest)) {
                oldest = nth.Real(0);
            }
        }
        if (oldest) {
            break;
        }
    }
    return oldest;
}

/// The rows of that time and those before it.
bool CHistoryStore::RemoveUntil(double time) {
    bool isRemoved = m_database.Execute("BEGIN IMMEDIATE");
    for (const STable& table : kTables) {
        CStatement statement(m_database, table.remove);
        isRemoved = isRemoved && statement.Bind(time).Run();
    }
    isRemoved = isRemoved &&
                m_database.Execute("DELETE FROM series WHERE NOT EXISTS "
                                   "(SELECT 1 FROM status WHERE status.series = series.id)") &&
                m_database.Execute("COMMIT");
    if (!isRemoved) {
        Fail();
    }
    return isRemoved;
}

std::int64_t CHistoryStore::UsedPages() {
    return m_database.Number("PRAGMA page_count").value_or(0) -
           m_database.Number("PRAGMA freelist_count").value_or(0);
}

} // namespace Hub
