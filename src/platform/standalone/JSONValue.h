// Between the values of remote procedure calls and their JSON text on the wire.
#pragma once

#include "platform/BAtom.h"

#include <optional>
#include <string>
#include <string_view>

namespace JSONValue {

/// Lists and dictionaries may lie in each other this deep; no message of the project needs ten.
inline constexpr std::size_t kMaxDepth = 32;

/// The value of one JSON text; nothing when it is not JSON, is nested deeper than kMaxDepth, or
/// holds a number beyond the range of a double. Of a repeated name the last value holds.
///
/// A whole number beyond 32 bits becomes a double; `true` and `false`, which are no value here,
/// become nothing: so neither reads as an integer.
std::optional<BAtomC> Read(std::string_view text);

/// Appends a value as JSON text without any line break.
void Append(std::string& out, const BAtomC& value);

} // namespace JSONValue
