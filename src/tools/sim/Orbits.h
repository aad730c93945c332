// The satellites' orbits: circles of round numbers, of GPS, GLONASS and the SBAS ones.
#pragma once

#include "LocalFrame.h"
#include "World.h"

#include <cstdint>
#include <vector>

namespace Sim {

struct SOrbit {
    ESystem system = ESystem::gps;
    std::uint16_t prn = 0;
    std::int8_t glonassFrequency = 0;
    std::int64_t period = 0;  ///< milliseconds
    double inclination = 0.0; ///< degrees
    double node = 0.0;        ///< longitude of the ascending node at the beginning of GPS time
    double phase = 0.0;       ///< degrees from the node, then
};

/// Sorted by system and number.
const std::vector<SOrbit>& Constellation();

/// In the Earth-fixed frame of the moment of reception.
struct SOrbitState {
    SVector position;        ///< metres
    SVector orbitalVelocity; ///< metres per second, along the orbit
    SVector frameVelocity;   ///< metres per second, by the Earth's rotation below it
};

/// Where the satellite was `ago` seconds before the moment, `milliseconds` since the beginning of
/// GPS time.
SOrbitState StateOf(const SOrbit& orbit, std::int64_t milliseconds, double ago);

/// A satellite as the receiver sees it: where it was when it sent what arrives now.
struct SSight {
    SVector direction;      ///< towards it, of length 1
    double range = 0.0;     ///< metres
    double rangeRate = 0.0; ///< metres per second
};

SSight SightOf(const SOrbit& orbit, std::int64_t milliseconds, const SVector& receiver,
               const SVector& receiverVelocity);

} // namespace Sim
