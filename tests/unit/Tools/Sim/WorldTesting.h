// What the tests of the simulated world share: moments, and geometry of their own.
#pragma once

#include "sim/LocalFrame.h"
#include "sim/World.h"

#include <cmath>
#include <cstdint>

namespace SimTesting {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr std::int64_t kWeek = 604'800'000;

/// Begins in the middle of 2024.
inline constexpr std::int64_t kSomeDay = 2321 * kWeek + 3 * 86'400'000;

inline Sim::SState At(std::int64_t milliseconds, std::uint64_t seed = 1) {
    return Sim::CWorld(seed).At({static_cast<std::uint32_t>(milliseconds / kWeek),
                                 static_cast<std::uint32_t>(milliseconds % kWeek)});
}

inline Sim::SVector Position(const Sim::SState& state) {
    return {state.x, state.y, state.z};
}

inline Sim::SVector Velocity(const Sim::SState& state) {
    return {state.velocityX, state.velocityY, state.velocityZ};
}

inline Sim::SVector Position(const Sim::SSolution& solution) {
    return {solution.x, solution.y, solution.z};
}

inline double Norm(const Sim::SVector& a) {
    return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

inline double DegreesOf(double radians) {
    return radians * 180.0 / kPi;
}

/// The direction to a satellite, put together from its azimuth and elevation at a geodetic place
/// that is found by iterating (Heiskanen and Moritz), unlike the simulator's.
inline Sim::SVector DirectionTo(const Sim::SSatellite& satellite, const Sim::SVector& place) {
    const double f = 1.0 / 298.257223563;
    const double e2 = f * (2.0 - f);
    const double p = std::hypot(place.x, place.y);
    double latitude = std::atan2(place.z, p * (1.0 - e2));
    for (int i = 0; i < 10; ++i) {
        const double sine = std::sin(latitude);
        const double n = 6378137.0 / std::sqrt(1.0 - e2 * sine * sine);
        latitude = std::atan2(place.z + e2 * n * sine, p);
    }
    const double longitude = std::atan2(place.y, place.x);
    const double azimuth = satellite.azimuth * kPi / 180.0;
    const double elevation = satellite.elevation * kPi / 180.0;
    const double east = std::cos(elevation) * std::sin(azimuth);
    const double north = std::cos(elevation) * std::cos(azimuth);
    const double up = std::sin(elevation);
    const double outward = up * std::cos(latitude) - north * std::sin(latitude);
    return {outward * std::cos(longitude) - east * std::sin(longitude),
            outward * std::sin(longitude) + east * std::cos(longitude),
            north * std::cos(latitude) + up * std::sin(latitude)};
}

} // namespace SimTesting
