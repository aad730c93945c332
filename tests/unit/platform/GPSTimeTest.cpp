#include "platform/Time.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using Core::GPSTime;
using Core::Time;
using Core::UnixTime;

namespace {

constexpr std::int64_t kGPSEpoch = 315'964'800; // 1980-01-06 00:00:00 UTC

struct SLeapSecond {
    const char* firstDay;
    std::int64_t unixSeconds; ///< at 00:00:00 UTC of that day
    int offset;               ///< GPS time minus UTC from then on, in seconds
};

constexpr SLeapSecond kLeapSeconds[] = {
    {"1981-07-01", 362'793'600, 1},    {"1982-07-01", 394'329'600, 2},
    {"1983-07-01", 425'865'600, 3},    {"1985-07-01", 489'024'000, 4},
    {"1988-01-01", 567'993'600, 5},    {"1990-01-01", 631'152'000, 6},
    {"1991-01-01", 662'688'000, 7},    {"1992-07-01", 709'948'800, 8},
    {"1993-07-01", 741'484'800, 9},    {"1994-07-01", 773'020'800, 10},
    {"1996-01-01", 820'454'400, 11},   {"1997-07-01", 867'715'200, 12},
    {"1999-01-01", 915'148'800, 13},   {"2006-01-01", 1'136'073'600, 14},
    {"2009-01-01", 1'230'768'000, 15}, {"2012-07-01", 1'341'100'800, 16},
    {"2015-07-01", 1'435'708'800, 17}, {"2017-01-01", 1'483'228'800, 18},
};

GPSTime FromUnixNanoseconds(std::int64_t nanoseconds) {
    return GPSTime::FromUnixTime(UnixTime(Time::FromNanoseconds(nanoseconds)));
}

struct SWeekSeconds {
    std::uint32_t week = 0;
    double seconds = 0.0;

    bool operator==(const SWeekSeconds&) const = default;
};

std::ostream& operator<<(std::ostream& out, const SWeekSeconds& time) {
    return out << "week " << time.week << ", " << time.seconds << " s";
}

SWeekSeconds WeekSecondsOf(GPSTime time) {
    SWeekSeconds result;
    time.AsGPSTime(result.week, result.seconds);
    return result;
}

/// GPS time minus UTC at a moment, in nanoseconds.
std::int64_t OffsetAt(std::int64_t unixNanoseconds) {
    const SWeekSeconds time = WeekSecondsOf(FromUnixNanoseconds(unixNanoseconds));
    const std::int64_t sinceEpoch =
        time.week * 604'800'000'000'000 + std::llround(time.seconds * 1e9);
    return sinceEpoch - (unixNanoseconds - kGPSEpoch * 1'000'000'000);
}

SWeekSeconds ThereAndBack(std::int32_t week, double seconds) {
    return WeekSecondsOf(GPSTime::FromGPSTime(week, seconds));
}

/// The moment, in nanoseconds since the Unix epoch, so many seconds and nanoseconds after the GPS
/// epoch.
std::int64_t UnixNanosecondsOf(std::int64_t gpsSeconds, std::int64_t nanoseconds = 0) {
    const auto week = static_cast<std::int32_t>(gpsSeconds / 604'800);
    const double seconds =
        static_cast<double>(gpsSeconds % 604'800) + static_cast<double>(nanoseconds) / 1e9;
    return GPSTime::FromGPSTime(week, seconds).AsUnixTime().SinceEpoch().AsNanoseconds();
}

class LeapSecond : public testing::TestWithParam<SLeapSecond> {};

} // namespace

TEST_P(LeapSecond, counts_from_its_end_and_not_before) {
    const std::int64_t moment = GetParam().unixSeconds * 1'000'000'000;
    EXPECT_EQ(OffsetAt(moment - 1), (GetParam().offset - 1) * 1'000'000'000LL);
    EXPECT_EQ(OffsetAt(moment), GetParam().offset * 1'000'000'000LL);
}

TEST_P(LeapSecond, is_taken_off_again_from_its_end) {
    const std::int64_t moment = GetParam().unixSeconds;
    const std::int64_t after = moment - kGPSEpoch + GetParam().offset; // the GPS time of it
    EXPECT_EQ(UnixNanosecondsOf(after), moment * 1'000'000'000);
    EXPECT_EQ(UnixNanosecondsOf(after, 500'000'000), moment * 1'000'000'000 + 500'000'000);
    EXPECT_EQ(UnixNanosecondsOf(after + 86'400), (moment + 86'400) * 1'000'000'000);
}

TEST_P(LeapSecond, is_counted_like_the_second_behind_it) {
    // 23:59:60 is the second whose end is the moment of the table.
    const std::int64_t moment = GetParam().unixSeconds;
    const std::int64_t inserted = moment - kGPSEpoch + GetParam().offset - 1;
    EXPECT_EQ(UnixNanosecondsOf(inserted), moment * 1'000'000'000);
    EXPECT_EQ(UnixNanosecondsOf(inserted, 500'000'000), moment * 1'000'000'000 + 500'000'000);
}

TEST_P(LeapSecond, is_not_taken_off_before_its_begin) {
    const std::int64_t moment = GetParam().unixSeconds;
    const std::int64_t last = moment - kGPSEpoch + GetParam().offset - 2; // 23:59:59
    EXPECT_EQ(UnixNanosecondsOf(last), (moment - 1) * 1'000'000'000);
    EXPECT_EQ(UnixNanosecondsOf(last, 999'000'000), (moment - 1) * 1'000'000'000 + 999'000'000);
    EXPECT_EQ(UnixNanosecondsOf(last - 86'400), (moment - 86'401) * 1'000'000'000);
}

INSTANTIATE_TEST_SUITE_P(GPSTime, LeapSecond, testing::ValuesIn(kLeapSeconds),
                         [](const testing::TestParamInfo<SLeapSecond>& leap) {
                             std::string name = leap.param.firstDay;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(GPSTime, has_no_leap_second_after_the_last_one) {
    EXPECT_EQ(OffsetAt(2'000'000'000LL * 1'000'000'000), 18'000'000'000);
}

TEST(GPSTime, starts_at_its_epoch_and_nothing_is_before) {
    EXPECT_EQ(FromUnixNanoseconds(kGPSEpoch * 1'000'000'000), GPSTime());
    EXPECT_EQ(FromUnixNanoseconds(kGPSEpoch * 1'000'000'000 - 1), GPSTime());
    EXPECT_EQ(FromUnixNanoseconds(-1), GPSTime());
    EXPECT_EQ(FromUnixNanoseconds(kGPSEpoch * 1'000'000'000 + 1), GPSTime::FromGPSTime(0, 1e-9));
}

TEST(GPSTime, of_a_known_moment_is_its_week_and_seconds) {
    // 2017-01-01 00:00:00 UTC was a Sunday: the week had begun 18 leap seconds earlier.
    EXPECT_EQ(WeekSecondsOf(FromUnixNanoseconds(1'483'228'800'000'000'000)),
              (SWeekSeconds{1930, 18.0}));
}

TEST(GPSTime, comes_back_as_the_week_and_seconds_it_was_made_of) {
    for (const double seconds : {0.0, 0.3, 0.05, 1.1, 86'400.0, 302'400.7, 604'799.95}) {
        EXPECT_EQ(ThereAndBack(1800, seconds), (SWeekSeconds{1800, seconds}));
    }
    EXPECT_EQ(ThereAndBack(0, 0.0), (SWeekSeconds{0, 0.0}));
}

TEST(GPSTime, never_shows_a_whole_week_of_seconds) {
    EXPECT_EQ(ThereAndBack(1800, 604'800.0), (SWeekSeconds{1801, 0.0}));
    EXPECT_EQ(ThereAndBack(1800, 604'799.9999999999), (SWeekSeconds{1801, 0.0}));
    const SWeekSeconds last = ThereAndBack(1800, 604'799.999999999);
    EXPECT_EQ(last.week, 1800U);
    EXPECT_LT(last.seconds, 604'800.0);
}

TEST(GPSTime, takes_seconds_outside_the_week) {
    EXPECT_EQ(ThereAndBack(1800, -1.0), (SWeekSeconds{1799, 604'799.0}));
    EXPECT_EQ(ThereAndBack(1800, 604'800.0 * 3 + 5.5), (SWeekSeconds{1803, 5.5}));
}

TEST(GPSTime, before_its_epoch_is_the_epoch) {
    EXPECT_EQ(ThereAndBack(0, -1.0), (SWeekSeconds{0, 0.0}));
    EXPECT_EQ(ThereAndBack(1, -1e12), (SWeekSeconds{0, 0.0}));
}

TEST(GPSTime, keeps_every_week_that_a_header_can_hold) {
    EXPECT_EQ(ThereAndBack(65'535, 4'294'967.295), (SWeekSeconds{65'542, 61'367.295}));
    EXPECT_EQ(ThereAndBack(2'147'483'647, 0.5), (SWeekSeconds{2'147'483'647U, 0.5}));
}

TEST(GPSTime, of_a_broken_message_is_clamped) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr std::int32_t kLastWeek = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(WeekSecondsOf(GPSTime::FromGPSTime(kLastWeek, 1e15)).week, 2'147'483'647U);
    EXPECT_EQ(GPSTime::FromGPSTime(0, kInfinity), GPSTime::FromGPSTime(0, 1e300));
    EXPECT_EQ(WeekSecondsOf(GPSTime::FromGPSTime(kLastWeek, kInfinity)).week, 2'147'483'647U);
    EXPECT_EQ(GPSTime::FromGPSTime(1800, -kInfinity), GPSTime());
    EXPECT_EQ(GPSTime::FromGPSTime(-1, 0.0), GPSTime());
    EXPECT_EQ(ThereAndBack(-1, 604'800.0), (SWeekSeconds{0, 0.0}));
}

TEST(GPSTime, of_seconds_that_are_no_number_is_the_start_of_the_week) {
    EXPECT_EQ(ThereAndBack(1800, std::numeric_limits<double>::quiet_NaN()),
              (SWeekSeconds{1800, 0.0}));
}

TEST(GPSTime, tells_the_span_between_two_moments) {
    const GPSTime earlier = GPSTime::FromGPSTime(1800, 604'799.5);
    const GPSTime later = GPSTime::FromGPSTime(1801, 0.25);
    EXPECT_EQ(later.SecondsSince(earlier), 0.75);
    EXPECT_EQ(earlier.SecondsSince(later), -0.75);
    EXPECT_LT(earlier, later);
    EXPECT_EQ(GPSTime::FromGPSTime(65'535, 0.125).SecondsSince(GPSTime()),
              65'535 * 604'800.0 + 0.125);
}

TEST(GPSTime, begins_in_UTC_at_its_epoch) {
    EXPECT_EQ(GPSTime().AsUnixTime().AsSeconds(), static_cast<double>(kGPSEpoch));
    EXPECT_EQ(UnixNanosecondsOf(0, 1), kGPSEpoch * 1'000'000'000 + 1);
}

TEST(GPSTime, of_a_known_moment_is_its_UTC) {
    // 2025-11-22 18:06:40 UTC is day 20414 and second 65200 since the Unix epoch.
    EXPECT_EQ(GPSTime::FromGPSTime(2393, 583'618.0).AsUnixTime().AsSeconds(), 1'763'834'800.0);
    EXPECT_EQ(GPSTime::FromGPSTime(2393, 583'618.25).AsUnixTime().AsSeconds(), 1'763'834'800.25);
}

TEST(GPSTime, comes_back_from_UTC_as_it_was) {
    for (const std::int64_t seconds :
         {kGPSEpoch + 1, std::int64_t{362'793'599}, std::int64_t{362'793'600},
          std::int64_t{1'234'567'890}, std::int64_t{1'483'228'800}, std::int64_t{4'000'000'000}}) {
        const std::int64_t nanoseconds = seconds * 1'000'000'000 + 123'456'789;
        EXPECT_EQ(FromUnixNanoseconds(nanoseconds).AsUnixTime().SinceEpoch().AsNanoseconds(),
                  nanoseconds);
    }
}

TEST(GPSTime, of_a_receiver_that_has_lost_its_time_is_a_moment_that_can_be_told) {
    // The last week that is: 13500 * 604800 s after the epoch, less 18 leap seconds.
    constexpr std::int64_t kLast = (315'964'800 + 13'500LL * 604'800 - 18) * 1'000'000'000;
    EXPECT_EQ(UnixNanosecondsOf(13'500LL * 604'800), kLast);
    for (const std::int32_t week : {13'501, 65'535, std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(GPSTime::FromGPSTime(week, 1.0).AsUnixTime().SinceEpoch().AsNanoseconds(),
                  kLast + 1'000'000'000);
    }
    EXPECT_EQ(GPSTime::FromGPSTime(-5, 1.0).AsUnixTime().AsSeconds(),
              static_cast<double>(kGPSEpoch));
}
