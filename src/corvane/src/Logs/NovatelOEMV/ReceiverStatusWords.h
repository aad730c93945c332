// The bits of the receiver's error and status words and their texts, the vocabulary of whatever
// publishes them.
#pragma once

#include "Logs/NamedBits.h"

namespace Novatel {

/// The decoded bits and their texts, lowest bit first. Each text ends in a comma.
extern const std::span<const SNamedBit> kReceiverErrorBits;
extern const std::span<const SNamedBit> kReceiverStatusBits;

/// The texts of the set bits one after another; "No Errors" for a word of 0.
std::string ReceiverErrorText(std::uint32_t errorWord);
/// The texts of the set bits one after another; empty when none of them is listed.
std::string ReceiverStatusText(std::uint32_t statusWord);

} // namespace Novatel
