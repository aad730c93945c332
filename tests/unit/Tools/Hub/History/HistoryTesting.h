// Rows, messages and answers of the history, as its tests want them.
#pragma once

#include "hub/history/Reader.h"
#include "hub/history/Rows.h"

#include <nlohmann/json.hpp>
#include <string>

namespace HistoryTesting {

using nlohmann::json;

/// 2025-11-21 18:26:40 UTC.
inline constexpr double kStart = 1763749600.0;

inline Hub::SPositionRow Located(double time) {
    Hub::SPositionRow row;
    row.time = time;
    row.quality = 3;
    row.latitude = 52.1;
    row.longitude = 5.2;
    row.height = 48.9;
    row.satellites = 14;
    row.sigmaHorizontal = 0.014;
    row.sigmaUp = 0.02;
    row.differentialAge = 1.0;
    row.cn0 = 45.5;
    return row;
}

inline Hub::SPositionRow Unlocated(double time) {
    Hub::SPositionRow row;
    row.time = time;
    row.satellites = 3;
    return row;
}

inline Hub::SEvent Event(double time, const std::string& text,
                         Hub::EEventLevel level = Hub::EEventLevel::warning) {
    Hub::SEvent event;
    event.name = "port";
    event.time = time;
    event.level = level;
    event.text = text;
    return event;
}

inline Hub::SDiagnostic Diagnostic(double time, bool isRaised, double value = 1.0) {
    Hub::SDiagnostic diagnostic;
    diagnostic.name = "CPositionManager";
    diagnostic.time = time;
    diagnostic.code = 79141;
    diagnostic.sub = 2;
    diagnostic.isRaised = isRaised;
    diagnostic.value = value;
    return diagnostic;
}

inline Hub::SStatus Status(double time, const std::string& key, const std::string& value) {
    Hub::SStatus status;
    status.name = "port";
    status.time = time;
    status.level = Hub::EStatusLevel::essential;
    status.key = key;
    status.value = value;
    return status;
}

/// A row by itself, or several of one kind.
template <class... TRows>
Hub::SHistoryRows Rows(const TRows&... row) {
    Hub::SHistoryRows rows;
    (rows.Add(row), ...);
    return rows;
}

/// What a reader of the database answers; null with another status than 200.
inline json Answer(const std::string& database, const std::string& what,
                   const Hub::TQuery& query = {}) {
    Hub::CHistoryReader reader(database);
    const Hub::SReply reply = reader.Answer(what, query);
    return reply.status == 200 ? json::parse(reply.body) : json();
}

/// One member of each of a list's entries.
inline json Column(const std::string& database, const std::string& what, const std::string& member,
                   const Hub::TQuery& query = {}) {
    const json answer = Answer(database, what, query);
    json column = json::array();
    for (const json& row : answer.at(what)) {
        column.push_back(row.at(member));
    }
    return column;
}

} // namespace HistoryTesting
