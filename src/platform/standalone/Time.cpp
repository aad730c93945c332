#include "platform/Time.h"

#include "Clock.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace Core {

namespace {

constexpr double kLongestSpanSeconds = 9.2e9;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

Time Read(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return Time::FromNanoseconds(static_cast<std::int64_t>(now.tv_sec) * kNanosecondsPerSecond +
                                 now.tv_nsec);
}

} // namespace

Time Time::FromSeconds(double seconds) {
    if (std::isnan(seconds)) {
        return Time();
    }
    const double clamped = std::clamp(seconds, -kLongestSpanSeconds, kLongestSpanSeconds);
    // Apart, so that the product of a large span keeps every digit that the double has.
    const double whole = std::trunc(clamped);
    return Time(static_cast<std::int64_t>(whole) * kNanosecondsPerSecond +
                std::llround((clamped - whole) * 1e9));
}

MonotonicTime MonotonicTime::Now() {
    const auto hook = ClockHooks().monotonic;
    return MonotonicTime(hook ? hook() : Read(CLOCK_MONOTONIC));
}

MonotonicTime MonotonicTime::Timer(std::int32_t seconds) {
    return Now() + Time::FromMilliseconds(std::int64_t{seconds} * 1000);
}

UnixTime UnixTime::Now() {
    const auto hook = ClockHooks().unix;
    return UnixTime(hook ? hook() : Read(CLOCK_REALTIME));
}

} // namespace Core
