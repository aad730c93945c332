#include "Tools/Sim/WorldTesting.h"

#include "sim/Track.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace SimTesting;

namespace {

constexpr std::int64_t kLap = 300'000;

} // namespace

TEST(WorldTrack, velocity_is_the_derivative_of_position) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 650) {
        const Sim::SVector difference = 10.0 * (Position(At(t + 50)) - Position(At(t - 50)));
        ASSERT_LT(Norm(difference - Velocity(At(t))), 0.04) << t - kSomeDay;
    }
}

TEST(WorldTrack, nothing_jumps_from_one_epoch_to_the_next) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 50) {
        const Sim::Track::SPoint now = Sim::Track::At(t);
        const Sim::Track::SPoint next = Sim::Track::At(t + 50);
        ASSERT_LT(Norm(next.position - now.position), 0.16) << t - kSomeDay;
        ASSERT_LT(Norm(next.velocity - now.velocity), 0.1) << t - kSomeDay;
    }
}

TEST(WorldTrack, the_vehicle_drives_three_metres_a_second_over_ground) {
    for (std::int64_t t = 0; t < kLap; t += 1'000) {
        const Sim::SVector velocity = Sim::Track::At(t).velocity;
        EXPECT_NEAR(std::hypot(velocity.x, velocity.y), 3.0, 1e-9);
    }
}

TEST(WorldTrack, every_lap_is_the_same_and_ends_where_the_next_begins) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 7'350) {
        const Sim::SVector after = Position(At(t + kLap));
        EXPECT_LT(Norm(after - Position(At(t))), 1e-6);
    }
    const Sim::Track::SPoint end = Sim::Track::At(kLap - 1);
    EXPECT_LT(Norm(end.position - Sim::Track::At(kLap).position), 0.004);
}

TEST(WorldTrack, the_field_is_some_hundred_metres_long) {
    double farthest = 0.0;
    const Sim::SVector start = Position(At(kSomeDay));
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 1'000) {
        farthest = std::max(farthest, Norm(Position(At(t)) - start));
    }
    EXPECT_GT(farthest, 150.0);
    EXPECT_LT(farthest, 300.0);
}

TEST(WorldTrack, the_heading_is_the_direction_of_the_velocity) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 3'000) {
        const Sim::SState state = At(t);
        Sim::SSatellite ahead;
        ahead.azimuth = state.heading;
        const Sim::SVector direction = DirectionTo(ahead, Position(state));
        const Sim::SVector velocity = Velocity(state);
        const double along =
            direction.x * velocity.x + direction.y * velocity.y + direction.z * velocity.z;
        EXPECT_NEAR(along, 3.0, 1e-3);
        EXPECT_GE(state.heading, 0.0);
        EXPECT_LT(state.heading, 360.0);
    }
}

TEST(WorldTrack, there_is_one_bridge_a_lap_for_eight_seconds) {
    int epochs = 0;
    int entries = 0;
    bool wasUnder = Sim::Track::SkyAt(kSomeDay - 50).isUnderBridge;
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 50) {
        const bool isUnder = At(t).isUnderBridge;
        entries += isUnder && !wasUnder ? 1 : 0;
        epochs += isUnder ? 1 : 0;
        wasUnder = isUnder;
    }
    EXPECT_EQ(entries, 1);
    EXPECT_EQ(epochs, 160);
}

TEST(WorldTrack, the_sky_tells_how_long_it_has_been_so) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kLap; t += 50) {
        const Sim::Track::SSky sky = Sim::Track::SkyAt(t);
        const bool isUnder = sky.isUnderBridge;
        ASSERT_EQ(Sim::Track::SkyAt(t - sky.sinceChange).isUnderBridge, isUnder);
        ASSERT_NE(Sim::Track::SkyAt(t - sky.sinceChange - 1).isUnderBridge, isUnder);
    }
}

TEST(WorldTrack, the_reference_station_stands_three_kilometres_away) {
    const Sim::SState state = At(kSomeDay);
    const Sim::SVector base = {state.baseX, state.baseY, state.baseZ};
    EXPECT_NEAR(Norm(base - Position(state)), 3000.0, 300.0);
    EXPECT_EQ(state.baseX, At(kSomeDay + 12'345'650).baseX);
}
