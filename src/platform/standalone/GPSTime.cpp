#include "platform/Time.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <limits>

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
        const std::int64_t nanoseconds =
            sinceUnixEpoch.AsNanoseconds() + offset * kNanosecondsPerSecond;
        result.m_week = static_cast<std::int32_t>(nanoseconds / kNanosecondsPerWeek);
        result.m_nanoseconds = nanoseconds % kNanosecondsPerWeek;
    }
    return result;
}

GPSTime GPSTime::FromGPSTime(std::int32_t week, double seconds) {
    // Seconds beyond this only a broken message has; inside, all sums fit 64 bits.
    constexpr double kLongestSeconds = 9e15;
    constexpr std::int32_t kLastWeek = std::numeric_limits<std::int32_t>::max();

    const double limited =
        std::isnan(seconds) ? 0.0 : std::clamp(seconds, -kLongestSeconds, kLongestSeconds);
    const double whole = std::floor(limited);
    const auto wholeSeconds = static_cast<std::int64_t>(whole);
    std::int64_t secondOfWeek = wholeSeconds % kSecondsPerWeek;
    std::int64_t resultWeek = week + wholeSeconds / kSecondsPerWeek;
    if (secondOfWeek < 0) {
        secondOfWeek += kSecondsPerWeek;
        --resultWeek;
    }
    std::int64_t nanoseconds =
        secondOfWeek * kNanosecondsPerSecond + std::llround((limited - whole) * 1e9);
    if (nanoseconds >= kNanosecondsPerWeek) {
        nanoseconds -= kNanosecondsPerWeek;
        ++resultWeek;
    }
    GPSTime result;
    if (resultWeek >= 0) {
        result.m_week = static_cast<std::int32_t>(std::min<std::int64_t>(resultWeek, kLastWeek));
        result.m_nanoseconds = nanoseconds;
    }
    return result;
}

void GPSTime::AsGPSTime(std::uint32_t& week, double& seconds) const {
    week = static_cast<std::uint32_t>(m_week);
    // A division rounds once, so that a reading such as 0.3 comes back as it went in.
    seconds = static_cast<double>(m_nanoseconds) / 1e9;
}

UnixTime GPSTime::AsUnixTime() const {
    // Some 260 years, which 64 bits of nanoseconds since 1970 hold.
    constexpr std::int32_t kLastWeek = 13'500;
    const std::int64_t sinceEpoch =
        std::min(m_week, kLastWeek) * kNanosecondsPerWeek + m_nanoseconds;
    // In steps of whole leap seconds, since only UTC tells how many there were.
    const auto toUTC = [&](std::int64_t leapSeconds) {
        return Time::FromNanoseconds(sinceEpoch +
                                     (kGPSEpoch - leapSeconds) * kNanosecondsPerSecond);
    };
    auto leapSeconds = static_cast<std::int64_t>(kAfterLeapSecond.size());
    while (leapSeconds > 0 && LeapSecondsInsertedBy(toUTC(leapSeconds)) < leapSeconds) {
        --leapSeconds;
    }
    return UnixTime(toUTC(leapSeconds));
}

double GPSTime::SecondsSince(GPSTime earlier) const {
    const std::int64_t weeks = std::int64_t{m_week} - earlier.m_week;
    const std::int64_t nanoseconds = m_nanoseconds - earlier.m_nanoseconds;
    // Apart: all nanoseconds together are more digits than a double has.
    const std::int64_t whole = weeks * kSecondsPerWeek + nanoseconds / kNanosecondsPerSecond;
    const std::int64_t fraction = nanoseconds % kNanosecondsPerSecond;
    return static_cast<double>(whole) + static_cast<double>(fraction) / 1e9;
}

} // namespace Core
