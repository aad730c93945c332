#include "hub/history/Inserts.h"

#include "hub/history/Schema.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace Hub {

namespace {

/// A position takes the place of the row that says that there was none.
constexpr char kPosition[] = R"(
INSERT INTO position VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)
ON CONFLICT(second) DO UPDATE SET
    time = ?2, quality = ?3, latitude = ?4, longitude = ?5, height = ?6, satellites = ?7,
    sigma_horizontal = ?8, sigma_up = ?9, differential_age = ?10, cn0 = ?11
WHERE quality = 0 AND ?3 > 0)";

/// Its first position, with the worst accuracy and the lowest quality in it.
constexpr char kMinute[] = R"(
INSERT OR REPLACE INTO position_minute
SELECT ?1, time, (SELECT min(quality) FROM position WHERE second BETWEEN ?1 AND ?2),
    latitude, longitude, height, satellites,
    (SELECT max(sigma_horizontal) FROM position WHERE second BETWEEN ?1 AND ?2),
    (SELECT max(sigma_up) FROM position WHERE second BETWEEN ?1 AND ?2),
    differential_age, cn0
FROM position WHERE second BETWEEN ?1 AND ?2
ORDER BY quality = 0, second LIMIT 1)";

constexpr char kEvent[] = "INSERT INTO event(time, level, name, text) VALUES(?1, ?2, ?3, ?4)";

/// What has never been raised counts as cleared.
constexpr char kDiagnostic[] = R"(
INSERT INTO diagnostic(time, name, code, sub, is_raised, value)
SELECT ?1, ?2, ?3, ?4, ?5, ?6
WHERE ?5 IS NOT coalesce((SELECT is_raised FROM diagnostic
    WHERE name = ?2 AND code = ?3 AND sub = ?4 AND time <= ?1
    ORDER BY time DESC, id DESC LIMIT 1), 0))";

constexpr char kSeries[] = "INSERT OR IGNORE INTO series(name, key) VALUES(?1, ?2)";

constexpr char kStatus[] = R"(
INSERT OR REPLACE INTO status(series, time, value)
SELECT id, ?3, ?4 FROM series
WHERE name = ?1 AND key = ?2
    AND ?4 IS NOT (SELECT value FROM status WHERE series = id AND time <= ?3
        ORDER BY time DESC LIMIT 1))";

} // namespace

CHistoryInserts::CHistoryInserts(const CDatabase& database)
    : m_position(database, kPosition),
      m_minute(database, kMinute),
      m_event(database, kEvent),
      m_diagnostic(database, kDiagnostic),
      m_series(database, kSeries),
      m_status(database, kStatus) {
}

bool CHistoryInserts::IsValid() const {
    const auto all = All();
    return std::all_of(all.begin(), all.end(), [](const auto* each) { return each->IsValid(); });
}

bool CHistoryInserts::IsOfOtherForm() const {
    const auto all = All();
    return std::any_of(all.begin(), all.end(),
                       [](const auto* each) { return each->HasOtherTables(); });
}

bool CHistoryInserts::Add(const SHistoryRows& rows) {
    const auto addAll = [this](const auto& list) {
        return std::all_of(list.begin(), list.end(), [this](const auto& row) { return Add(row); });
    };
    return addAll(rows.positions) && AddMinutes(rows.positions) && addAll(rows.events) &&
           addAll(rows.diagnostics) && addAll(rows.statuses);
}

/// Those that the rows are in, anew.
bool CHistoryInserts::AddMinutes(const std::vector<SPositionRow>& rows) {
    std::set<std::int64_t> minutes;
    for (const SPositionRow& row : rows) {
        minutes.insert(static_cast<std::int64_t>(std::floor(row.time / History::kMinute)));
    }
    return std::all_of(minutes.begin(), minutes.end(), [this](std::int64_t minute) {
        const std::int64_t first = minute * History::kMinute;
        return m_minute.Bind(first, first + History::kMinute - 1).Run();
    });
}

bool CHistoryInserts::Add(const SPositionRow& row) {
    const auto second = static_cast<std::int64_t>(std::floor(row.time));
    return m_position
        .Bind(second, row.time, row.quality, row.latitude, row.longitude, row.height,
              row.satellites, row.sigmaHorizontal, row.sigmaUp, row.differentialAge, row.cn0)
        .Run();
}

bool CHistoryInserts::Add(const SEvent& event) {
    const std::string level = event.level == EEventLevel::error ? "error" : "warning";
    return m_event.Bind(event.time, level, event.name, event.text).Run();
}

bool CHistoryInserts::Add(const SDiagnostic& diagnostic) {
    const std::optional<double> value =
        diagnostic.isRaised ? std::optional(diagnostic.value) : std::nullopt;
    return m_diagnostic
        .Bind(diagnostic.time, diagnostic.name, diagnostic.code, diagnostic.sub,
              diagnostic.isRaised, value)
        .Run();
}

bool CHistoryInserts::Add(const SStatus& status) {
    return m_series.Bind(status.name, status.key).Run() &&
           m_status.Bind(status.name, status.key, status.time, status.value).Run();
}

} // namespace Hub
