#include "UTC.h"

#include "Moment.h"

#include "platform/Time.h"

#include <chrono>
#include <cmath>

namespace Sim {

namespace {

using std::chrono::milliseconds;

constexpr std::chrono::sys_days kGPSEpoch = std::chrono::year(1980) / 1 / 6;

milliseconds LeapSecondsBy(std::chrono::sys_time<milliseconds> utc) {
    const auto sinceUnixEpoch = Core::Time::FromMilliseconds(utc.time_since_epoch().count());
    std::uint32_t week = 0;
    double seconds = 0.0;
    Core::GPSTime::FromUnixTime(Core::UnixTime(sinceUnixEpoch)).AsGPSTime(week, seconds);
    const milliseconds gps(Milliseconds{week} * kWeek + std::llround(seconds * 1000.0));
    return gps - (utc - kGPSEpoch);
}

} // namespace

SUTC UTCOf(STime time) {
    const std::chrono::sys_time<milliseconds> gps = kGPSEpoch + milliseconds(SinceGPSEpoch(time));
    // Those by the moment itself; GPS time is that much later.
    const milliseconds leap = LeapSecondsBy(gps - LeapSecondsBy(gps));
    const auto utc = gps - leap;
    const auto midnight = std::chrono::floor<std::chrono::days>(utc);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss clock(utc - midnight);
    SUTC result;
    result.year = static_cast<std::uint32_t>(static_cast<int>(date.year()));
    result.month = static_cast<std::uint8_t>(static_cast<unsigned>(date.month()));
    result.day = static_cast<std::uint8_t>(static_cast<unsigned>(date.day()));
    result.hour = static_cast<std::uint8_t>(clock.hours().count());
    result.minute = static_cast<std::uint8_t>(clock.minutes().count());
    result.milliseconds =
        static_cast<std::uint32_t>(milliseconds(clock.seconds() + clock.subseconds()).count());
    result.leapSeconds = static_cast<std::uint32_t>(leap.count() / 1000);
    return result;
}

} // namespace Sim
