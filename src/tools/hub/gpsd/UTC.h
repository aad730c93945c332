// Moments as calendar and clock show them, rounded as reports and sentences need them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Hub::GPSD {

struct SUTC {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int fraction = 0; ///< in the parts that were asked for
};

/// Seconds since the Unix epoch, rounded to one of so many parts of a second. Nothing outside of
/// the years 1970 to 9999.
std::optional<SUTC> ToUTC(double seconds, int partsOfSecond);

/// Such as "2026-11-21T19:30:00.125Z".
std::optional<std::string> ISO8601(double seconds);

} // namespace Hub::GPSD
