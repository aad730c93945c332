// Words of commands: letters without case, whole numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Sim {

std::string Capitals(std::string_view text);

bool IsSameWord(std::string_view one, std::string_view other);

/// A whole decimal number with nothing around it.
std::optional<std::int64_t> WholeNumber(std::string_view word);

/// Seconds, as "0.05", in whole milliseconds; nothing for what is none of their multiples.
std::optional<std::int64_t> WholeMilliseconds(std::string_view word);

} // namespace Sim
