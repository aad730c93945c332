#include "platform/Time.h"

#include <array>
#include <chrono>
#include <cmath>

namespace Core {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kSecondsPerWeek = 604'800;
constexpr std::int64_t kNanosecondsPerWeek = kSecondsPerWeek * kNanosecondsPerSecond;

/// POSIX seconds at 00:00:00 UTC of the first day of a month.
constexpr std::int64_t FirstOf(int year, unsigned month) {
    using namespace std::chrono;
    const sys_days day = std::chrono::year(year) / std::chrono::month(month) / 1;
    return duration_cast<seconds>(day.time_since_epoch()).count();
}

constexpr std::int64_t kGPSEpoch = FirstOf(1980, 1) + 5 * 86'400;

/// The first moment after each leap second since the GPS epoch, by IERS Bulletin C. The last one
/// was inserted at the end of 2016-12-31 (Bulletin C 52); those up to Bulletin C 70 (July 2025)
/// announce none since.
constexpr std::array kAfterLeapSecond = {
    FirstOf(1981, 7), FirstOf(1982, 7), FirstOf(1983, 7), FirstOf(1985, 7), FirstOf(1988, 1),
    FirstOf(1990, 1), FirstOf(1991, 1), FirstOf(1992, 7), FirstOf(1993, 7), FirstOf(1994, 7),
    FirstOf(1996, 1), FirstOf(1997, 7), FirstOf(1999, 1), FirstOf(2006, 1), FirstOf(2009, 1),
    FirstOf(2012, 7), FirstOf(2015, 7), FirstOf(2017, 1),
};
static_assert(kAfterLeapSecond.size() == 18);

std::int64_t LeapSecondsInsertedBy(Time sinceUnixEpoch) {
    std::int64_t count = 0;
    for (const std::int64_t moment : kAfterLeapSecond) {
        if (sinceUnixEpoch.AsNanoseconds() >= moment * kNanosecondsPerSecond) {
            ++count;
        }
    }
    return count;
}

} // namespace

GPSTime GPSTime::FromUnixTime(UnixTime time) {
    const Time sinceUnixEpoch = time.SinceEpoch();
    GPSTime result;
    if (sinceUnixEpoch.AsNanoseconds() > kGPSEpoch * kNanosecondsPerSecond) {
        const std::int64_t offset = LeapSecondsInsertedBy(sinceUnixEpoch) - kGPSEpoch;
        result.m_sinceEpoch =
            sinceUnixEpoch + Time::FromNanoseconds(offset * kNanosecondsPerSecond);
    }
    return result;
}

GPSTime GPSTime::FromWeekSeconds(std::uint32_t week, double seconds) {
    // Inside these limits the sum fits 64 bits to the nanosecond; outside, only a broken message
    // leads, and clamping it is enough.
    constexpr std::uint32_t kLastExactWeek = 15'000;
    constexpr double kLongestExactSeconds = 1e8;

    const double wholeWeeks = static_cast<double>(week) * static_cast<double>(kSecondsPerWeek);
    const bool isExact = week <= kLastExactWeek && !(std::fabs(seconds) > kLongestExactSeconds);
    const Time sinceEpoch =
        isExact ? Time::FromNanoseconds(week * kNanosecondsPerWeek) + Time::FromSeconds(seconds)
                : Time::FromSeconds(std::isnan(seconds) ? wholeWeeks : wholeWeeks + seconds);
    GPSTime result;
    if (!sinceEpoch.IsNegative()) {
        result.m_sinceEpoch = sinceEpoch;
    }
    return result;
}

void GPSTime::AsGPSTime(std::uint32_t& week, double& seconds) const {
    const std::int64_t nanoseconds = m_sinceEpoch.AsNanoseconds();
    week = static_cast<std::uint32_t>(nanoseconds / kNanosecondsPerWeek);
    // A division rounds once, so that a reading such as 0.3 comes back as it went in.
    seconds = static_cast<double>(nanoseconds % kNanosecondsPerWeek) / 1e9;
}

} // namespace Core
