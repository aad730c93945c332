#include "platform/Text.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace Core::Utilities {

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string_view WithoutLeadingBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text;
}

} // namespace

bool ParseInt(std::string_view text, std::int32_t& value) {
    std::string_view number = WithoutLeadingBlanks(text);
    if (number.starts_with('+')) {
        number.remove_prefix(1);
        if (number.starts_with('-')) {
            return false;
        }
    }
    // from_chars knows the minus sign and leaves the value alone when it fails.
    return std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc();
}

bool ParseDouble(std::string_view text, double& value) {
    std::string_view number = Trim(text);
    if (number.starts_with('+')) {
        number.remove_prefix(1);
        if (number.starts_with('-')) {
            return false;
        }
    }
    double parsed = 0.0;
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, parsed);
    if (error != std::errc() || stop != end || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

std::vector<std::string_view> Split(std::string_view text, char separator, std::size_t maxParts) {
    std::vector<std::string_view> parts;
    std::size_t at = 0;
    while (parts.size() + 1 < maxParts && (at = text.find(separator)) != std::string_view::npos) {
        parts.push_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    parts.push_back(text);
    return parts;
}

std::string_view Trim(std::string_view text) {
    const std::string_view left = WithoutLeadingBlanks(text);
    return left.substr(0, left.find_last_not_of(kBlanks) + 1);
}

} // namespace Core::Utilities
