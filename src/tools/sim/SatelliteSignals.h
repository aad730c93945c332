// The satellites above the vehicle's horizon and how strongly they are received.
#pragma once

#include "LocalFrame.h"
#include "Track.h"
#include "World.h"

#include <cstdint>
#include <vector>

namespace Sim {

/// Degrees; what stands lower is not tracked.
inline constexpr double kElevationMask = 5.0;

struct SReceiverMotion {
    SVector position; ///< Earth-centred Earth-fixed, metres
    SVector velocity; ///< metres per second
};

/// `milliseconds` since the beginning of GPS time. In the order of the constellation.
std::vector<SSatellite> SatellitesAt(std::uint64_t seed, std::int64_t milliseconds,
                                     const SReceiverMotion& receiver, const Track::SSky& sky);

} // namespace Sim
