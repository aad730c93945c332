// Between the values of remote procedure calls and their JSON text on the wire.
#pragma once

#include "platform/BAtom.h"

#include <optional>
#include <string>
#include <string_view>

namespace JSONValue {

/// Lists and dictionaries may lie in each other this deep; no message of the project needs ten.
inline constexpr std::size_t kMaxDepth = 32;
/// A text may hold so many values, which bounds the memory that they take.
inline constexpr std::size_t kMaxValues = 10'000;

enum class EFault {
    none,
    notJSON,       ///< also a number beyond the range of a double
    tooDeep,       ///< nested deeper than kMaxDepth
    tooManyValues, ///< more than kMaxValues
};

/// The value of one JSON text; nothing, and why in `fault`, when there is none or it is beyond a
/// limit. Of a repeated name the last value holds.
///
/// A whole number beyond 32 bits becomes a double, so that it does not read as an integer.
std::optional<BAtomC> Read(std::string_view text, EFault* fault = nullptr);

/// What is wrong with a JSON text, however many values it holds.
EFault Check(std::string_view text);

/// Appends a value as JSON text without any line break.
void Append(std::string& out, const BAtomC& value);

} // namespace JSONValue
