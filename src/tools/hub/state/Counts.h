// Counts that programs tell as status values.
#pragma once

#include "hub/state/State.h"

#include <cstdint>
#include <optional>

namespace Hub {

/// Of sentences, the low 32 bits of each, since the program's start.
struct SChecksumCounts {
    std::int64_t good = 0;
    std::int64_t rejected = 0;
};

/// Nothing when the status tells none, or not as a pair of whole numbers.
std::optional<SChecksumCounts> ChecksumCounts(const SStatus& status);

/// The messages that programs had to drop, since nobody took them; the sum over all programs.
std::int64_t DroppedMessages(const CState& state);

} // namespace Hub
