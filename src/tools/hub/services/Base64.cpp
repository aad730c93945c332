#include "hub/services/Base64.h"

#include <array>
#include <cstdint>

namespace Hub {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeDigits() {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return digits;
}

constexpr std::array<std::uint8_t, 256> kDigits = MakeDigits();

} // namespace

std::optional<std::string> FromBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t padding = 0;
    while (padding < 2 && !text.empty() && text.back() == '=') {
        text.remove_suffix(1);
        ++padding;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const std::uint8_t digit = kDigits[static_cast<unsigned char>(c)];
        if (digit == kNoDigit) {
            return std::nullopt;
        }
        bits = (bits << 6 | digit) & 0xFFFF;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    const bool areRestZero = (bits & ((1U << count) - 1)) == 0;
    return areRestZero ? std::optional(bytes) : std::nullopt;
}

} // namespace Hub
