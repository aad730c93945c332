// Values as people write them on a command line, and as they are shown.
#pragma once

#include "Output.h"
#include "platform/BAtom.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Ctl {

/// on, true, yes, 1 and off, false, no, 0, in upper or lower case.
std::optional<bool> ParseSwitch(std::string_view text);

/// A whole number of 32 bits and nothing else.
std::optional<std::int32_t> ParseWhole(std::string_view text);

/// A finite number and nothing else.
std::optional<double> ParseNumber(std::string_view text);

/// Before an argument of a call.
inline constexpr std::string_view kTextMark = "text:";

/// An argument of a call: a whole number, a number, or anything else as a text. "text:" before it
/// makes it a text whatever it is.
BAtomC ParseCallArgument(std::string_view text);

/// The shortest text that reads back the same.
std::string NumberText(double number);
/// With so many decimals.
std::string FixedText(double number, int decimals);
std::string SwitchText(bool isOn);

/// What programs read of a value.
TJSON JSONOf(const BAtomC& value);

/// The candidate that was probably meant; empty when none is near.
std::string Nearest(std::string_view word, const std::vector<std::string>& candidates);

} // namespace Ctl
