// Moments of the receiver's clock as one number, for arithmetic and comparison.
#pragma once

#include "World.h"

#include <cstdint>

namespace Sim {

/// Milliseconds since the GPS epoch, or a span.
using Milliseconds = std::int64_t;

inline constexpr Milliseconds kWeek = 604'800'000;
/// The solution is renewed so often; every log's time is a multiple of it.
inline constexpr Milliseconds kEpoch = 50;

inline Milliseconds SinceGPSEpoch(STime time) {
    return Milliseconds{time.week} * kWeek + Milliseconds{time.milliseconds};
}

inline STime AsTime(Milliseconds moment) {
    return {static_cast<std::uint32_t>(moment / kWeek), static_cast<std::uint32_t>(moment % kWeek)};
}

/// The last multiple of the period that is not after the moment.
inline Milliseconds LastMultiple(Milliseconds moment, Milliseconds period) {
    return moment - moment % period;
}

} // namespace Sim
