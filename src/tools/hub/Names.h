// Names as programs tell them, made fit for places where some characters mean something else.
#pragma once

#include <string>
#include <string_view>

namespace Hub {

/// Each byte that is not fit, and "%", as %XX; so other names give other texts, but that only the
/// first hundred bytes of long ones count.
template <class TIsFit>
std::string Escaped(std::string_view name, TIsFit isFit) {
    constexpr std::size_t kLongest = 100;
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string escaped;
    for (const char byte : name.substr(0, kLongest)) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte != '%' && isFit(byte)) {
            escaped += byte;
        } else {
            escaped += {'%', kDigits[value >> 4U], kDigits[value & 0xFU]};
        }
    }
    return escaped;
}

} // namespace Hub
