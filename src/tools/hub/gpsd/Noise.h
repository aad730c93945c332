// GST reports: how far positions scatter, from the receiver's own sentence or from the solution.
#pragma once

#include "hub/gpsd/Reports.h"

#include <optional>

namespace Hub::GPSD {

/// From the solution's standard deviations; nothing without a position.
std::optional<TReport> NoiseOf(const SFix& fix);

/// From the receiver's GPGST. The sentence has the time of day alone: its date is the one that
/// brings it next to `about`, seconds since the Unix epoch. Nothing when it is damaged or empty.
std::optional<TReport> NoiseOf(const SSentence& sentence, double about);

} // namespace Hub::GPSD
