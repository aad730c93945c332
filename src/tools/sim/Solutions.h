// What the receiver computes of the truth: kinds of solution over time, and their errors.
#pragma once

#include "LocalFrame.h"
#include "Track.h"
#include "World.h"

#include <cstdint>

namespace Sim {

/// Sets the three solutions of a state whose truth and satellites are known.
///
/// The corrections of the reference station stop for the first half minute of every ten; without
/// them the RTK solution is a single one. With them it is a narrow-lane float one for half a minute
/// and then a narrow-lane integer one. After a bridge both take less. Under a bridge only the
/// smoothed solution goes on, propagated.
void SetSolutions(SState& state, std::uint64_t seed, std::int64_t milliseconds,
                  const CLocalFrame& frame, const Track::SSky& sky);

} // namespace Sim
