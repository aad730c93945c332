#include "Orbits.h"

#include "platform/Maths.h"

#include <array>
#include <cmath>

namespace Sim {

namespace {

using Core::Maths::Radians;

constexpr double kTurn = 2.0 * Core::Maths::Math<double>::kPi;
/// IS-GPS-200: the Earth's gravitational parameter, m^3/s^2, and the speed of light, m/s.
constexpr double kGravity = 3.986005e14;
constexpr double kLight = 299'792'458.0;

// Whole milliseconds, so that phases are exact however long GPS time has run.
constexpr std::int64_t kSiderealDay = 86'164'100;
constexpr std::int64_t kGPSPeriod = kSiderealDay / 2;
constexpr std::int64_t kGLONASSPeriod = 40'544'000;

constexpr int kGPSPlanes = 6;
constexpr int kGPSSlots = 5;
constexpr int kGLONASSPlanes = 3;
constexpr int kGLONASSSlots = 8;

/// Satellites opposite each other share a frequency.
constexpr std::array<std::array<std::int8_t, 4>, kGLONASSPlanes> kGLONASSFrequencies = {{
    {1, -4, 5, 6},
    {-2, -7, 0, -1},
    {4, -3, 3, 2},
}};

struct SGeostationary {
    std::uint16_t prn;
    double longitude; ///< degrees east
};

constexpr std::array<SGeostationary, 3> kGeostationary = {{{120, -15.5}, {124, 21.5}, {126, 25.0}}};

void AddGPS(std::vector<SOrbit>& orbits) {
    for (int plane = 0; plane < kGPSPlanes; ++plane) {
        for (int slot = 0; slot < kGPSSlots; ++slot) {
            orbits.push_back({.system = ESystem::gps,
                              .prn = static_cast<std::uint16_t>(plane * kGPSSlots + slot + 1),
                              .glonassFrequency = 0,
                              .period = kGPSPeriod,
                              .inclination = 55.0,
                              .node = 60.0 * plane,
                              .phase = 72.0 * slot + 24.0 * plane});
        }
    }
}

void AddGLONASS(std::vector<SOrbit>& orbits) {
    constexpr int kFirstNumber = 38;
    for (int plane = 0; plane < kGLONASSPlanes; ++plane) {
        const auto& frequencies = kGLONASSFrequencies[static_cast<std::size_t>(plane)];
        for (int slot = 0; slot < kGLONASSSlots; ++slot) {
            const int number = kFirstNumber + plane * kGLONASSSlots + slot;
            orbits.push_back({.system = ESystem::glonass,
                              .prn = static_cast<std::uint16_t>(number),
                              .glonassFrequency = frequencies[static_cast<std::size_t>(slot % 4)],
                              .period = kGLONASSPeriod,
                              .inclination = 64.8,
                              .node = 120.0 * plane + 15.0,
                              .phase = 45.0 * slot + 15.0 * plane});
        }
    }
}

void AddGeostationary(std::vector<SOrbit>& orbits) {
    for (const SGeostationary& satellite : kGeostationary) {
        orbits.push_back({.system = ESystem::sbas,
                          .prn = satellite.prn,
                          .glonassFrequency = 0,
                          .period = kSiderealDay,
                          .inclination = 0.0,
                          .node = satellite.longitude,
                          .phase = 0.0});
    }
}

std::vector<SOrbit> MakeConstellation() {
    std::vector<SOrbit> orbits;
    AddGPS(orbits);
    AddGLONASS(orbits);
    AddGeostationary(orbits);
    return orbits;
}

/// Radians turned since the beginning of GPS time, without whole turns.
double Turned(std::int64_t milliseconds, std::int64_t period) {
    return kTurn * static_cast<double>(milliseconds % period) / static_cast<double>(period);
}

} // namespace

const std::vector<SOrbit>& Constellation() {
    static const std::vector<SOrbit> orbits = MakeConstellation();
    return orbits;
}

SOrbitState StateOf(const SOrbit& orbit, std::int64_t milliseconds, double ago) {
    const double motion = kTurn / (static_cast<double>(orbit.period) / 1000.0);
    const double rotation = kTurn / (static_cast<double>(kSiderealDay) / 1000.0);
    const double radius = std::cbrt(kGravity / (motion * motion));

    const double argument =
        Radians(orbit.phase) + Turned(milliseconds, orbit.period) - motion * ago;
    const double node = Radians(orbit.node) - Turned(milliseconds, kSiderealDay);
    const double inclination = Radians(orbit.inclination);
    const SVector towardsNode = {std::cos(node), std::sin(node), 0.0};
    const SVector towardsTop = {-std::sin(node) * std::cos(inclination),
                                std::cos(node) * std::cos(inclination), std::sin(inclination)};

    SOrbitState state;
    state.position =
        (radius * std::cos(argument)) * towardsNode + (radius * std::sin(argument)) * towardsTop;
    state.orbitalVelocity = (-radius * motion * std::sin(argument)) * towardsNode +
                            (radius * motion * std::cos(argument)) * towardsTop;
    state.frameVelocity = {rotation * state.position.y, -rotation * state.position.x, 0.0};
    return state;
}

SSight SightOf(const SOrbit& orbit, std::int64_t milliseconds, const SVector& receiver,
               const SVector& receiverVelocity) {
    // Each round makes the error a hundred-thousandth.
    constexpr int kRounds = 3;
    SOrbitState sender;
    SVector way;
    double range = 0.0;
    for (int i = 0; i < kRounds; ++i) {
        sender = StateOf(orbit, milliseconds, range / kLight);
        way = sender.position - receiver;
        range = Length(way);
    }
    const SVector direction = (1.0 / range) * way;
    // While the way grows, the moment of sending falls back, and the orbit seems to be slower.
    const double rate =
        Dot(direction, sender.orbitalVelocity + sender.frameVelocity - receiverVelocity) /
        (1.0 + Dot(direction, sender.orbitalVelocity) / kLight);
    return {.direction = direction, .range = range, .rangeRate = rate};
}

} // namespace Sim
