// The vehicle's way: four rows of a field and the headland back, over and over, past a bridge.
#pragma once

#include "LocalFrame.h"

#include <cstdint>

namespace Sim::Track {

/// Milliseconds. A whole number of laps makes a week, so that nothing jumps at its end.
inline constexpr std::int64_t kLap = 300'000;

struct SPoint {
    SVector position; ///< east, north and up of the field's origin, metres
    SVector velocity; ///< its derivative, metres per second
};

/// `milliseconds` since the beginning of GPS time.
SPoint At(std::int64_t milliseconds);

struct SSky {
    bool isUnderBridge = false;
    std::int64_t sinceChange = 0; ///< milliseconds since it last became so
};

SSky SkyAt(std::int64_t milliseconds);

} // namespace Sim::Track
