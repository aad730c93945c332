#include "Words.h"

#include "platform/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Sim {

namespace {

constexpr double kMostSeconds = 1e9;

char Capital(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

} // namespace

std::string Capitals(std::string_view text) {
    std::string capitals(text);
    std::transform(capitals.begin(), capitals.end(), capitals.begin(), Capital);
    return capitals;
}

bool IsSameWord(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return Capital(left) == Capital(right); });
}

std::optional<std::int64_t> WholeNumber(std::string_view word) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size()) {
        return std::nullopt;
    }
    return number;
}

std::optional<std::int64_t> WholeMilliseconds(std::string_view word) {
    double seconds = 0.0;
    if (!Core::Utilities::ParseDouble(word, seconds) || std::fabs(seconds) > kMostSeconds) {
        return std::nullopt;
    }
    const double milliseconds = seconds * 1000.0;
    const double rounded = std::round(milliseconds);
    if (std::fabs(milliseconds - rounded) > 1e-6) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(rounded);
}

} // namespace Sim
