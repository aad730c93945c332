// How the history lies in its database. The writer makes it so, the readers find it so.
#pragma once

#include <cstdint>

namespace Hub::History {

/// In the file's header, told by file(1): a history of ours, and the form of it below.
inline constexpr std::int64_t kApplication = 0x436F7276; // "Corv"
inline constexpr std::int64_t kVersion = 1;

inline constexpr std::int64_t kMinute = 60; // seconds

/// The second is a position's row number, so that a span of time is a range of rows. What stands
/// for a minute is kept besides, under its first second, so that long spans are quickly read.
inline constexpr char kSchema[] = R"(
CREATE TABLE position(
    second INTEGER PRIMARY KEY,
    time REAL NOT NULL,
    quality INTEGER NOT NULL,
    latitude REAL, longitude REAL, height REAL,
    satellites INTEGER NOT NULL,
    sigma_horizontal REAL, sigma_up REAL, differential_age REAL, cn0 REAL);
CREATE TABLE position_minute(
    second INTEGER PRIMARY KEY,
    time REAL NOT NULL,
    quality INTEGER NOT NULL,
    latitude REAL, longitude REAL, height REAL,
    satellites INTEGER NOT NULL,
    sigma_horizontal REAL, sigma_up REAL, differential_age REAL, cn0 REAL);
CREATE TABLE event(
    id INTEGER PRIMARY KEY,
    time REAL NOT NULL,
    level TEXT NOT NULL, name TEXT NOT NULL, text TEXT NOT NULL);
CREATE INDEX event_time ON event(time);
CREATE TABLE diagnostic(
    id INTEGER PRIMARY KEY,
    time REAL NOT NULL,
    name TEXT NOT NULL, code INTEGER NOT NULL, sub INTEGER NOT NULL,
    is_raised INTEGER NOT NULL, value REAL);
CREATE INDEX diagnostic_time ON diagnostic(time);
CREATE INDEX diagnostic_name ON diagnostic(name, code, sub, time);
CREATE TABLE series(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL, key TEXT NOT NULL,
    UNIQUE(name, key));
CREATE TABLE status(
    series INTEGER NOT NULL,
    time REAL NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY(series, time)) WITHOUT ROWID;
CREATE INDEX status_time ON status(time);
)";

} // namespace Hub::History
