// How often a sentence is wanted, as people write it: "5Hz", "0.2s", "200ms", "once", "off".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Ctl {

/// The daemon's numbers for what is no period.
constexpr std::int32_t kOff = 0;
constexpr std::int32_t kOnce = -1;

/// Milliseconds, rounded to whole ones; nothing for a text that means no period, and for one
/// shorter than a millisecond or longer than a day.
std::optional<std::int32_t> ParsePeriod(std::string_view text);

/// "every 0.2 s", "once", "off".
std::string PeriodText(std::int32_t milliseconds);

} // namespace Ctl
