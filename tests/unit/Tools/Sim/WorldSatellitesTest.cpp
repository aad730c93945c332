#include "Tools/Sim/WorldTesting.h"

#include "sim/Orbits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

using namespace SimTesting;
using Sim::ESystem;
using Sim::SOrbit;
using Sim::SSatellite;

namespace {

constexpr std::int64_t kDay = 86'400'000;

const SSatellite* Find(const Sim::SState& state, int prn) {
    const auto found = std::ranges::find(state.satellites, prn, &SSatellite::prn);
    return found == state.satellites.end() ? nullptr : &*found;
}

Sim::SVector PositionOf(const SOrbit& orbit, std::int64_t milliseconds) {
    return Sim::StateOf(orbit, milliseconds, 0.0).position;
}

/// The Earth-fixed frame turned back to where it was at the beginning of GPS time.
Sim::SVector Inertial(const Sim::SVector& a, std::int64_t milliseconds) {
    const double angle = 7.2921151467e-5 * static_cast<double>(milliseconds) / 1000.0;
    return {a.x * std::cos(angle) - a.y * std::sin(angle),
            a.x * std::sin(angle) + a.y * std::cos(angle), a.z};
}

double RadiusOf(ESystem system) {
    switch (system) {
    case ESystem::gps:
        return 26'560e3;
    case ESystem::glonass:
        return 25'510e3;
    case ESystem::sbas:
        return 42'164e3;
    }
    return 0.0;
}

} // namespace

TEST(WorldSatellites, six_to_fifteen_of_gps_are_in_view_all_day) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kDay; t += 300'050) {
        const auto satellites = At(t).satellites;
        const auto count = std::ranges::count_if(satellites, [](const SSatellite& satellite) {
            return satellite.system == ESystem::gps && satellite.elevation >= 5.0;
        });
        EXPECT_GE(count, 6) << t;
        EXPECT_LE(count, 15) << t;
    }
}

TEST(WorldSatellites, are_numbered_as_the_receiver_does) {
    std::set<int> numbers;
    for (const SOrbit& orbit : Sim::Constellation()) {
        EXPECT_TRUE(numbers.insert(orbit.prn).second) << orbit.prn;
        switch (orbit.system) {
        case ESystem::gps:
            EXPECT_TRUE(orbit.prn >= 1 && orbit.prn <= 32);
            EXPECT_EQ(orbit.glonassFrequency, 0);
            break;
        case ESystem::glonass:
            EXPECT_TRUE(orbit.prn >= 38 && orbit.prn <= 61);
            EXPECT_TRUE(orbit.glonassFrequency >= -7 && orbit.glonassFrequency <= 6);
            break;
        case ESystem::sbas:
            EXPECT_TRUE(orbit.prn >= 120 && orbit.prn <= 138);
            break;
        }
    }
    EXPECT_EQ(numbers.size(), 30U + 24U + 3U);
}

// Pairs of number and frequency field that a receiver has been seen to report.
TEST(WorldSatellites, glonass_frequencies_are_the_real_ones) {
    const std::map<int, int> fields = {{47, 0}, {58, 11}, {57, 9}, {48, 7},
                                       {46, 5}, {45, 13}, {38, 8}, {56, 10}};
    int matches = 0;
    for (const SOrbit& orbit : Sim::Constellation()) {
        const auto field = fields.find(orbit.prn);
        if (field != fields.end()) {
            EXPECT_EQ(orbit.glonassFrequency + 7, field->second) << orbit.prn;
            ++matches;
        }
    }
    EXPECT_EQ(matches, 8);
}

TEST(WorldSatellites, glonass_satellites_of_one_frequency_are_opposite_each_other) {
    const auto& orbits = Sim::Constellation();
    for (const SOrbit& a : orbits) {
        for (const SOrbit& b : orbits) {
            if (a.system == ESystem::glonass && b.system == ESystem::glonass && a.prn < b.prn &&
                a.glonassFrequency == b.glonassFrequency) {
                EXPECT_LT(Norm(PositionOf(a, kSomeDay) + PositionOf(b, kSomeDay)), 1.0);
            }
        }
    }
}

TEST(WorldSatellites, keep_the_radius_of_their_orbits) {
    for (const SOrbit& orbit : Sim::Constellation()) {
        for (std::int64_t t = kSomeDay; t < kSomeDay + kDay; t += 3'600'000) {
            EXPECT_NEAR(Norm(PositionOf(orbit, t)), RadiusOf(orbit.system), 5e3) << orbit.prn;
        }
    }
}

TEST(WorldSatellites, come_back_after_a_period_but_not_before) {
    const std::map<ESystem, double> hours = {
        {ESystem::gps, 11.967}, {ESystem::glonass, 11.262}, {ESystem::sbas, 23.934}};
    for (const SOrbit& orbit : Sim::Constellation()) {
        const auto period = static_cast<std::int64_t>(hours.at(orbit.system) * 3600.0) * 1000;
        const Sim::SVector now = Inertial(PositionOf(orbit, kSomeDay), 0);
        const Sim::SVector after = Inertial(PositionOf(orbit, kSomeDay + period), period);
        const Sim::SVector half = Inertial(PositionOf(orbit, kSomeDay + period / 2), period / 2);
        EXPECT_LT(Norm(after - now), 20e3) << orbit.prn; // 5 s of rounding in the figures above
        EXPECT_NEAR(Norm(half - now), 2.0 * RadiusOf(orbit.system), 20e3) << orbit.prn;
    }
}

TEST(WorldSatellites, reach_the_latitude_of_their_inclination) {
    for (const SOrbit& orbit : Sim::Constellation()) {
        double highest = 0.0;
        for (std::int64_t t = kSomeDay; t < kSomeDay + kDay; t += 60'000) {
            const Sim::SVector position = PositionOf(orbit, t);
            highest = std::max(highest, DegreesOf(std::asin(position.z / Norm(position))));
        }
        const double inclination = orbit.system == ESystem::gps       ? 55.0
                                   : orbit.system == ESystem::glonass ? 64.8
                                                                      : 0.0;
        EXPECT_NEAR(highest, inclination, 0.01) << orbit.prn;
    }
}

TEST(WorldSatellites, six_planes_of_gps_and_three_of_glonass_are_evenly_spread) {
    std::map<ESystem, std::set<long>> poles;
    for (const SOrbit& orbit : Sim::Constellation()) {
        const Sim::SOrbitState state = Sim::StateOf(orbit, kSomeDay, 0.0);
        const Sim::SVector& r = state.position;
        const Sim::SVector& v = state.orbitalVelocity;
        const double x = r.y * v.z - r.z * v.y;
        const double y = r.z * v.x - r.x * v.z;
        poles[orbit.system].insert(std::lround(DegreesOf(std::atan2(y, x)) + 360.0) % 360);
    }
    EXPECT_EQ(poles[ESystem::gps].size(), 6U);
    EXPECT_EQ(poles[ESystem::glonass].size(), 3U);
    EXPECT_NEAR(
        static_cast<double>(*std::next(poles[ESystem::gps].begin()) - *poles[ESystem::gps].begin()),
        60.0, 1.0);
}

TEST(WorldSatellites, sbas_satellites_stand_still_above_the_equator) {
    const std::map<int, double> longitudes = {{120, -15.5}, {124, 21.5}, {126, 25.0}};
    for (const SOrbit& orbit : Sim::Constellation()) {
        if (orbit.system == ESystem::sbas) {
            for (const std::int64_t t : {kSomeDay, kSomeDay + 12'345'678}) {
                const Sim::SVector position = PositionOf(orbit, t);
                EXPECT_NEAR(DegreesOf(std::atan2(position.y, position.x)), longitudes.at(orbit.prn),
                            1e-6);
                EXPECT_NEAR(position.z, 0.0, 1.0);
            }
        }
    }
}

// Where a satellite is seen and how far off is where its orbit has it, when the signal left: the
// Earth turns on for the seventh of a second that it takes at most.
TEST(WorldSatellites, azimuth_elevation_and_range_lead_to_the_orbit) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kDay; t += 7'200'050) {
        const Sim::SState state = At(t);
        ASSERT_GT(state.satellites.size(), 10U);
        for (const SSatellite& satellite : state.satellites) {
            const auto& orbits = Sim::Constellation();
            const auto orbit = std::ranges::find(orbits, satellite.prn, &SOrbit::prn);
            const Sim::SVector seen =
                Position(state) + satellite.range * DirectionTo(satellite, Position(state));
            const double ago = satellite.range / 299792458.0;
            // Rounded to whole milliseconds, which are 2 m of its orbit at most.
            const auto sent = t - std::llround(ago * 1000.0);
            const double turn = 7.2921151467e-5 * static_cast<double>(t - sent) / 1000.0;
            const Sim::SVector then = PositionOf(*orbit, sent);
            const Sim::SVector expected = {then.x * std::cos(turn) + then.y * std::sin(turn),
                                           then.y * std::cos(turn) - then.x * std::sin(turn),
                                           then.z};
            EXPECT_LT(Norm(seen - expected), 2.5) << satellite.prn;
            EXPECT_GE(satellite.azimuth, 0.0);
            EXPECT_LT(satellite.azimuth, 360.0);
            EXPECT_GT(satellite.elevation, 0.0);
        }
    }
}

TEST(WorldSatellites, range_rates_are_the_derivatives_of_ranges) {
    // In the same straight row of every lap: in a turn, the vehicle's own velocity changes.
    for (std::int64_t t = kSomeDay + 30'000; t < kSomeDay + kDay; t += 7'200'000) {
        const Sim::SState before = At(t - 500);
        const Sim::SState after = At(t + 500);
        const Sim::SState state = At(t);
        int compared = 0;
        for (const SSatellite& satellite : state.satellites) {
            const SSatellite* const first = Find(before, satellite.prn);
            const SSatellite* const last = Find(after, satellite.prn);
            if (first != nullptr && last != nullptr) {
                EXPECT_NEAR(satellite.rangeRate, last->range - first->range, 1e-3)
                    << satellite.prn << " at " << t;
                ++compared;
            }
        }
        EXPECT_GT(compared, 10);
    }
}

TEST(WorldSatellites, are_tracked_above_five_degrees_and_the_stronger_the_higher) {
    const Sim::SState state = At(kSomeDay + 100'000);
    int tracked = 0;
    for (const SSatellite& satellite : state.satellites) {
        if (satellite.system == ESystem::sbas) {
            continue;
        }
        EXPECT_EQ(satellite.cn0L1 > 0.0F, satellite.elevation >= 5.0) << satellite.prn;
        EXPECT_EQ(satellite.cn0L2 > 0.0F, satellite.elevation >= 5.0) << satellite.prn;
        EXPECT_EQ(satellite.isUsed, satellite.elevation >= 5.0) << satellite.prn;
        if (satellite.cn0L1 > 0.0F) {
            const double sine = std::sin(satellite.elevation * kPi / 180.0);
            EXPECT_NEAR(satellite.cn0L1, 37.0 + 13.0 * sine, 1.6) << satellite.prn;
            EXPECT_LT(satellite.cn0L2, satellite.cn0L1) << satellite.prn;
            ++tracked;
        }
    }
    EXPECT_GT(tracked, 10);
}

TEST(WorldSatellites, two_of_sbas_are_tracked_on_one_frequency_and_not_used) {
    int tracked = 0;
    for (const SSatellite& satellite : At(kSomeDay + 100'000).satellites) {
        if (satellite.system == ESystem::sbas) {
            tracked += satellite.cn0L1 > 0.0F ? 1 : 0;
            EXPECT_EQ(satellite.cn0L2, 0.0F);
            EXPECT_FALSE(satellite.isUsed);
        }
    }
    EXPECT_EQ(tracked, 2);
}

TEST(WorldSatellites, too_few_for_a_position_are_tracked_under_the_bridge) {
    int epochs = 0;
    for (std::int64_t t = kSomeDay; t < kSomeDay + 300'000; t += 1'000) {
        const Sim::SState state = At(t);
        if (state.isUnderBridge) {
            const auto tracked =
                std::ranges::count_if(state.satellites, [](const SSatellite& satellite) {
                    return satellite.cn0L1 > 0.0F;
                });
            EXPECT_EQ(tracked, 3);
            EXPECT_TRUE(std::ranges::none_of(state.satellites, &SSatellite::isUsed));
            ++epochs;
        }
    }
    EXPECT_EQ(epochs, 8);
}

TEST(WorldSatellites, lock_times_count_the_seconds_of_tracking) {
    std::map<int, double> expected;
    int starts = 0;
    for (std::int64_t t = kSomeDay; t < kSomeDay + 3'600'000; t += 1'000) {
        const Sim::SState state = At(t);
        std::map<int, double> now;
        for (const SSatellite& satellite : state.satellites) {
            if (satellite.cn0L1 <= 0.0F) {
                EXPECT_EQ(satellite.lockTime, 0.0F);
                continue;
            }
            now[satellite.prn] = double{satellite.lockTime};
            const auto before = expected.find(satellite.prn);
            const bool isNew = satellite.lockTime < 1.0F;
            starts += isNew ? 1 : 0;
            if (!isNew && t > kSomeDay) {
                ASSERT_NE(before, expected.end()) << satellite.prn << " at " << t;
                ASSERT_NEAR(satellite.lockTime, before->second + 1.0, 0.01) << satellite.prn;
            }
        }
        expected = now;
    }
    EXPECT_GT(starts, 12 * 10); // at least those that a bridge has cut off
}
