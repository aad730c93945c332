#include "Tools/Sim/WorldTesting.h"

#include "sim/LogEncoder.h"
#include "sim/UTC.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace SimTesting;
using Sim::SState;

namespace {

/// All that the measuring logs tell of a state.
Sim::Bytes Everything(const SState& state) {
    Sim::Bytes all;
    for (const char* name : {"BESTXYZ", "PSRXYZ", "RTKXYZ", "PDPXYZ", "RANGE", "TRACKSTAT", "TIME",
                             "REFSTATION", "PSRDOP"}) {
        const Sim::Bytes log = Sim::EncodeBinary(name, state, {}, {}).value();
        all.insert(all.end(), log.begin(), log.end());
    }
    return all;
}

void ExpectUTC(Sim::STime time, const Sim::SUTC& expected) {
    const Sim::SUTC utc = Sim::UTCOf(time);
    EXPECT_EQ(utc.year, expected.year);
    EXPECT_EQ(utc.month, expected.month);
    EXPECT_EQ(utc.day, expected.day);
    EXPECT_EQ(utc.hour, expected.hour);
    EXPECT_EQ(utc.minute, expected.minute);
    EXPECT_EQ(utc.milliseconds, expected.milliseconds);
    EXPECT_EQ(utc.leapSeconds, expected.leapSeconds);
}

} // namespace

TEST(World, a_moment_is_the_same_however_one_comes_to_it) {
    const Sim::CWorld world(7);
    const Sim::Bytes first = Everything(world.At({2300, 123'456'050}));
    for (std::uint32_t t = 0; t < 600'000; t += 9'950) {
        world.At({2299, t});
    }
    EXPECT_EQ(Everything(world.At({2300, 123'456'050})), first);
    EXPECT_EQ(Everything(Sim::CWorld(7).At({2300, 123'456'050})), first);
}

TEST(World, seeds_differ_in_what_is_chance_and_in_nothing_else) {
    const SState one = At(kSomeDay + 100'000, 1);
    const SState other = At(kSomeDay + 100'000, 2);
    EXPECT_EQ(one.x, other.x);
    EXPECT_EQ(one.velocityY, other.velocityY);
    EXPECT_EQ(one.satellites.at(0).range, other.satellites.at(0).range);
    EXPECT_EQ(one.rtk.type, other.rtk.type);
    EXPECT_NE(one.rtk.x, other.rtk.x);
    EXPECT_NE(one.pdp.y, other.pdp.y);
    const auto tracked = std::ranges::find_if(
        one.satellites, [](const Sim::SSatellite& satellite) { return satellite.cn0L1 > 0.0F; });
    ASSERT_NE(tracked, one.satellites.end());
    const auto place = static_cast<std::size_t>(tracked - one.satellites.begin());
    EXPECT_NE(tracked->cn0L1, other.satellites.at(place).cn0L1);
}

TEST(World, time_is_told_as_it_was_asked_for) {
    const SState state = Sim::CWorld(1).At({2300, 604'799'950});
    EXPECT_EQ(state.time.week, 2300U);
    EXPECT_EQ(state.time.milliseconds, 604'799'950U);
}

TEST(World, milliseconds_beyond_the_week_are_of_the_next_one) {
    const SState state = Sim::CWorld(1).At({2300, 604'800'050});
    EXPECT_EQ(state.time.week, 2301U);
    EXPECT_EQ(state.time.milliseconds, 50U);
    EXPECT_EQ(Everything(state), Everything(Sim::CWorld(1).At({2301, 50})));
}

TEST(World, goes_on_without_a_jump_when_the_week_ends) {
    const SState last = Sim::CWorld(1).At({2300, 604'799'950});
    const SState first = Sim::CWorld(1).At({2301, 0});
    EXPECT_LT(Norm(Position(first) - Position(last)), 0.16);
    ASSERT_EQ(first.satellites.size(), last.satellites.size());
    for (std::size_t i = 0; i < first.satellites.size(); ++i) {
        EXPECT_EQ(first.satellites[i].prn, last.satellites[i].prn);
        EXPECT_NEAR(first.satellites[i].range - last.satellites[i].range,
                    last.satellites[i].rangeRate * 0.05, 0.01);
    }
    const Sim::SVector error = Position(first.pdp) - Position(first);
    const Sim::SVector lastError = Position(last.pdp) - Position(last);
    EXPECT_LT(Norm(error - lastError), 0.001);
}

TEST(World, stands_in_open_country_in_france) {
    const SState state = At(kSomeDay);
    const Sim::SGeodetic place = Core::Maths::ToGeodetic(Position(state));
    EXPECT_NEAR(DegreesOf(place.latitude), 48.15, 0.01);
    EXPECT_NEAR(DegreesOf(place.longitude), 1.75, 0.01);
    EXPECT_NEAR(place.height, 184.0, 2.0);
    EXPECT_EQ(state.undulation, 45.0F);
}

TEST(World, the_clock_stays_within_tens_of_nanoseconds) {
    double largest = 0.0;
    for (std::int64_t t = kSomeDay; t < kSomeDay + 86'400'000; t += 600'000) {
        largest = std::max(largest, std::abs(At(t).clockOffset));
    }
    EXPECT_LT(largest, 50e-9);
    EXPECT_GT(largest, 10e-9);
}

TEST(World, utc_lags_by_the_leap_seconds_of_the_time) {
    // IS-GPS-200: the epoch.
    ExpectUTC({0, 0}, {1980, 1, 6, 0, 0, 0, 0});
    ExpectUTC({1687, 419'928'000}, {2012, 5, 10, 20, 38, 33'000, 15});
    ExpectUTC({2300, 345'600'000}, {2024, 2, 7, 23, 59, 42'000, 18});
    ExpectUTC({2301, 18'050}, {2024, 2, 11, 0, 0, 50, 18});
}

// 2016 ended with a leap second: Sunday, 2017-01-01 00:00:00 UTC was 18 s into week 1930.
TEST(World, utc_steps_where_a_leap_second_is_inserted) {
    ExpectUTC({1930, 18'000}, {2017, 1, 1, 0, 0, 0, 18});
    ExpectUTC({1930, 16'000}, {2016, 12, 31, 23, 59, 59'000, 17});
}
