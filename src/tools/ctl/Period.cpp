#include "Period.h"

#include "Values.h"

#include <cmath>

namespace Ctl {

namespace {

constexpr double kLongest = 86'400'000.0; // milliseconds of a day

/// What stands before the unit, when it is a number above 0.
std::optional<double> Before(std::string_view unit, std::string_view text) {
    if (!text.ends_with(unit)) {
        return std::nullopt;
    }
    const std::optional<double> number = ParseNumber(text.substr(0, text.size() - unit.size()));
    return number && *number > 0.0 ? number : std::nullopt;
}

std::optional<double> Milliseconds(std::string_view text) {
    for (const std::string_view unit : {"Hz", "hz", "HZ"}) {
        if (const auto rate = Before(unit, text)) {
            return 1000.0 / *rate;
        }
    }
    if (const auto milliseconds = Before("ms", text)) {
        return milliseconds;
    }
    if (const auto seconds = Before("s", text)) {
        return 1000.0 * *seconds;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::int32_t> ParsePeriod(std::string_view text) {
    if (text == "off") {
        return kOff;
    }
    if (text == "once") {
        return kOnce;
    }
    const std::optional<double> milliseconds = Milliseconds(text);
    if (!milliseconds || *milliseconds < 1.0 || *milliseconds > kLongest) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(std::lround(*milliseconds));
}

std::string PeriodText(std::int32_t milliseconds) {
    if (milliseconds == kOff) {
        return "off";
    }
    return milliseconds < 0 ? "once" : "every " + NumberText(milliseconds / 1000.0) + " s";
}

} // namespace Ctl
