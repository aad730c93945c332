#include "hub/history/Reader.h"

#include "hub/history/Track.h"
#include "platform/Time.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace Hub {

namespace {

constexpr int kUnavailable = 503;

using TJSON = nlohmann::ordered_json;

constexpr char kEvents[] = "SELECT time, level, name, text FROM event "
                           "WHERE time BETWEEN ?1 AND ?2 ORDER BY time DESC, id DESC LIMIT ?3";

constexpr char kDiagnostics[] = "SELECT time, name, code, sub, is_raised, value FROM diagnostic "
                                "WHERE time BETWEEN ?1 AND ?2 ORDER BY time DESC, id DESC LIMIT ?3";

constexpr char kStatuses[] = "SELECT time, name, key, value FROM status JOIN series ON id = series "
                             "WHERE time BETWEEN ?1 AND ?2 ORDER BY time DESC LIMIT ?3";

/// The newest of each of the statuses that are asked for, of which the newest of all: so that one
/// that seldom changes is found without a look at all the others.
constexpr char kSomeStatuses[] = R"(
SELECT time, name, key, value FROM series CROSS JOIN status ON status.series = series.id
WHERE (?4 IS NULL OR name = ?4) AND (?5 IS NULL OR key = ?5)
    AND time BETWEEN coalesce((SELECT time FROM status AS newer
        WHERE newer.series = series.id AND newer.time BETWEEN ?1 AND ?2
        ORDER BY newer.time DESC LIMIT 1 OFFSET ?3 - 1), ?1) AND ?2
ORDER BY time DESC LIMIT ?3)";

TJSON EventOf(const CStatement& row) {
    return {{"time", row.Real(0)},
            {"level", row.Text(1)},
            {"name", row.Text(2)},
            {"text", row.Text(3)}};
}

TJSON DiagnosticOf(const CStatement& row) {
    const auto value = row.OptionalReal(5);
    return {{"time", row.Real(0)},
            {"name", row.Text(1)},
            {"code", row.Integer(2)},
            {"sub", row.Integer(3)},
            {"isRaised", row.Integer(4) != 0},
            {"value", value ? TJSON(*value) : TJSON()}};
}

TJSON StatusOf(const CStatement& row) {
    return {
        {"time", row.Real(0)}, {"name", row.Text(1)}, {"key", row.Text(2)}, {"value", row.Text(3)}};
}

struct SList {
    const char* what;
    const char* sql;
    TJSON (*document)(const CStatement&);
};

constexpr SList kLists[] = {{"events", kEvents, EventOf},
                            {"diagnostics", kDiagnostics, DiagnosticOf},
                            {"statuses", kStatuses, StatusOf}};

/// Nothing when the database cannot be read.
std::optional<std::string> ReadList(const CDatabase& database, const SList& list,
                                    const SHistoryArguments& arguments) {
    const bool areSome = arguments.name || arguments.key;
    CStatement rows(database, areSome ? kSomeStatuses : list.sql);
    if (!rows.IsValid()) {
        return std::nullopt;
    }
    // Parameters that a statement does not have are passed over.
    rows.Bind(arguments.from, arguments.to, arguments.limit, arguments.name, arguments.key);
    TJSON array = TJSON::array();
    while (rows.Step()) {
        array.push_back(list.document(rows));
    }
    if (!rows.IsDone()) {
        return std::nullopt;
    }
    // Texts are not always UTF-8.
    return TJSON{{list.what, array}}.dump(-1, ' ', false, TJSON::error_handler_t::replace);
}

std::optional<std::string> Read(const CDatabase& database, const std::string& what,
                                const SHistoryArguments& arguments) {
    for (const SList& list : kLists) {
        if (list.what == what) {
            return ReadList(database, list, arguments);
        }
    }
    return ReadTrack(database, arguments);
}

} // namespace

SReply CHistoryReader::Answer(const std::string& what, const TQuery& query) {
    const SHistoryQuestion* const question = FindQuestion(what);
    if (question == nullptr) {
        return {404, "There is no history of '" + what + "'.\n"};
    }
    SHistoryArguments arguments;
    const double now = Core::UnixTime::Now().AsSeconds();
    if (const std::string why = ReadArguments(*question, query, now, arguments); !why.empty()) {
        return {400, "Wrong argument: " + why + ".\n"};
    }
    const std::lock_guard lock(m_mutex);
    std::string why = Prepare();
    if (why.empty()) {
        if (std::optional<std::string> body = Read(m_database, what, arguments)) {
            return {200, std::move(*body)};
        }
        why = m_database.Error();
        m_database.Close();
    }
    return {kUnavailable, "The history cannot be read now: " + why + ".\n"};
}

/// A database that the writer has moved aside is left for the one in its place.
std::string CHistoryReader::Prepare() {
    if (m_database.HasMoved()) {
        m_database.Close();
    }
    return m_database.IsOpen() ? "" : m_database.Open(m_path, CDatabase::EAccess::read);
}

} // namespace Hub
