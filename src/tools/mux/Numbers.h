// Whole numbers in settings: digits and nothing else.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Mux {

/// A number from 1 up to `largest`; nothing for any other text.
inline std::optional<std::int32_t> ReadPositive(std::string_view text,
                                                std::int32_t largest = INT32_MAX) {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < 1 || number > largest) {
        return std::nullopt;
    }
    return number;
}

} // namespace Mux
