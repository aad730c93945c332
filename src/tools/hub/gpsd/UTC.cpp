#include "hub/gpsd/UTC.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace Hub::GPSD {

namespace {

constexpr double kYear10000 = 253402300800.0;
constexpr std::int64_t kDaySeconds = 86400;

} // namespace

std::optional<SUTC> ToUTC(double seconds, int partsOfSecond) {
    // Rounded before it is looked at, or the last moments of 9999 would become the year 10000.
    const double rounded = std::round(seconds * partsOfSecond);
    if (!(rounded >= 0.0 && rounded < kYear10000 * partsOfSecond)) {
        return std::nullopt;
    }
    const auto parts = static_cast<std::int64_t>(rounded);
    const std::int64_t whole = parts / partsOfSecond;
    const auto ofDay = static_cast<int>(whole % kDaySeconds);
    const std::chrono::sys_days day{
        std::chrono::days{static_cast<std::chrono::days::rep>(whole / kDaySeconds)}};
    const std::chrono::year_month_day date{day};

    SUTC utc;
    utc.year = static_cast<int>(date.year());
    utc.month = static_cast<unsigned>(date.month());
    utc.day = static_cast<unsigned>(date.day());
    utc.hour = ofDay / 3600;
    utc.minute = ofDay / 60 % 60;
    utc.second = ofDay % 60;
    utc.fraction = static_cast<int>(parts % partsOfSecond);
    return utc;
}

std::optional<std::string> ISO8601(double seconds) {
    const auto utc = ToUTC(seconds, 1000);
    if (!utc) {
        return std::nullopt;
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", utc->year,
                  utc->month, utc->day, utc->hour, utc->minute, utc->second, utc->fraction);
    return text.data();
}

} // namespace Hub::GPSD
