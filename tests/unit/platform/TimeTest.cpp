#include "platform/Time.h"
#include "Support/FakeClock.h"

#include "Clock.h"

#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>

using Core::MonotonicTime;
using Core::Time;
using Core::UnixTime;

namespace {

std::int64_t NanosecondsOf(double seconds) {
    return Time::FromSeconds(seconds).AsNanoseconds();
}

/// Puts clocks of the test's own in place for as long as it lives.
class CHooks {
public:
    CHooks() {
        Core::ClockHooks().monotonic = [] { return Time::FromSeconds(12.5); };
        Core::ClockHooks().unix = [] { return Time::FromSeconds(1e9); };
    }
    ~CHooks() { Core::ClockHooks() = Core::SClockHooks(); }
};

} // namespace

TEST(Time, is_rounded_to_the_nearest_nanosecond) {
    EXPECT_EQ(NanosecondsOf(1.5), 1'500'000'000);
    EXPECT_EQ(NanosecondsOf(0.6e-9), 1);
    EXPECT_EQ(NanosecondsOf(0.4e-9), 0);
    EXPECT_EQ(NanosecondsOf(-0.6e-9), -1);
    EXPECT_EQ(NanosecondsOf(-2.25), -2'250'000'000);
}

TEST(Time, keeps_every_digit_of_a_long_span) {
    EXPECT_EQ(NanosecondsOf(4e9 + std::ldexp(1.0, -20)), 4'000'000'000'000'000'954);
}

TEST(Time, comes_back_as_the_seconds_it_was_made_of) {
    for (const double seconds : {0.05, 0.3, 1.1, 86'400.7, 1e9, -0.3}) {
        EXPECT_EQ(Time::FromSeconds(seconds).AsSeconds(), seconds);
    }
}

TEST(Time, is_clamped_where_64_bits_end) {
    constexpr std::int64_t kLongest = 9'200'000'000'000'000'000;
    EXPECT_EQ(NanosecondsOf(9.2e9), kLongest);
    EXPECT_EQ(NanosecondsOf(9.3e9), kLongest);
    EXPECT_EQ(NanosecondsOf(1e300), kLongest);
    EXPECT_EQ(NanosecondsOf(std::numeric_limits<double>::infinity()), kLongest);
    EXPECT_EQ(NanosecondsOf(-9.3e9), -kLongest);
    EXPECT_EQ(NanosecondsOf(-std::numeric_limits<double>::infinity()), -kLongest);
}

TEST(Time, of_what_is_no_number_is_zero) {
    EXPECT_EQ(NanosecondsOf(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Time, adds_subtracts_and_compares) {
    const Time one = Time::FromMilliseconds(1000);
    const Time quarter = Time::FromSeconds(0.25);
    EXPECT_EQ((one + quarter).AsSeconds(), 1.25);
    EXPECT_EQ((quarter - one).AsSeconds(), -0.75);
    EXPECT_TRUE((quarter - one).IsNegative());
    EXPECT_FALSE(Time().IsNegative());
    EXPECT_LT(quarter, one);
    EXPECT_EQ(one, Time::FromNanoseconds(1'000'000'000));
}

TEST(MonotonicTime, never_goes_back_and_is_never_before_the_default_one) {
    const MonotonicTime first = MonotonicTime::Now();
    const MonotonicTime second = MonotonicTime::Now();
    EXPECT_LE(first, second);
    EXPECT_LT(MonotonicTime(), first);
    EXPECT_TRUE(MonotonicTime().IsZero());
    EXPECT_FALSE(first.IsZero());
}

TEST(MonotonicTime, is_the_kernels_monotonic_clock) {
    timespec before = {};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const double now = MonotonicTime::Now().AsSeconds();
    timespec after = {};
    clock_gettime(CLOCK_MONOTONIC, &after);
    EXPECT_GE(now, static_cast<double>(before.tv_sec));
    EXPECT_LE(now, static_cast<double>(after.tv_sec) + 1.0);
}

TEST(MonotonicTime, times_in_whole_seconds) {
    CFakeClock clock;
    const MonotonicTime timer = MonotonicTime::Timer(30);
    clock.Advance(Time::FromNanoseconds(29'999'999'999));
    EXPECT_FALSE(timer.HasExpired());
    clock.Advance(Time::FromNanoseconds(1));
    EXPECT_TRUE(timer.HasExpired());
    EXPECT_TRUE(MonotonicTime::Timer(0).HasExpired());
    EXPECT_TRUE(MonotonicTime::Timer(-5).HasExpired());
    EXPECT_TRUE(MonotonicTime().HasExpired());
    EXPECT_FALSE(MonotonicTime::Timer(2'147'483'647).HasExpired());
}

TEST(MonotonicTime, moves_by_spans) {
    const MonotonicTime start = MonotonicTime::Now();
    const MonotonicTime later = start + Time::FromSeconds(2.5);
    EXPECT_LT(start, later);
    EXPECT_EQ((later - start).AsSeconds(), 2.5);
}

TEST(UnixTime, is_the_wall_clock) {
    const std::time_t before = std::time(nullptr);
    const double now = UnixTime::Now().AsSeconds();
    const std::time_t after = std::time(nullptr);
    EXPECT_GE(now, static_cast<double>(before) - 0.1); // time() may lag by a tick
    EXPECT_LE(now, static_cast<double>(after) + 1.0);
}

TEST(UnixTime, tells_the_span_since_another) {
    const UnixTime earlier(Time::FromSeconds(1e9));
    const UnixTime later(Time::FromSeconds(1e9 + 0.5));
    EXPECT_EQ((later - earlier).AsSeconds(), 0.5);
    EXPECT_LT(earlier, later);
    EXPECT_EQ(UnixTime().AsSeconds(), 0.0);
}

TEST(Clock, of_a_test_stands_in_for_the_kernels) {
    const CHooks hooks;
    EXPECT_EQ(MonotonicTime::Now().AsSeconds(), 12.5);
    EXPECT_EQ(UnixTime::Now().AsSeconds(), 1e9);
}
