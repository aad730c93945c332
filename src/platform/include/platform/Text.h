// Text helpers of the platform: reading numbers as the configuration and the command line mean
// them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Core::Utilities {

/// Reads leading blanks, a sign and decimal digits and ignores what follows ("3\r\n" is 3,
/// "010201RN0000" is 10201). False, and `value` unchanged, without a digit or out of range.
bool ParseInt(std::string_view text, std::int32_t& value);

/// Reads a whole decimal number (blanks around it allowed, nothing else), never by the locale.
/// False, and `value` unchanged, otherwise; infinities and NaN are refused.
bool ParseDouble(std::string_view text, double& value);

/// The parts of the text between separators, empty ones included; a text without a separator is
/// one part. Of more than `maxParts` the last one keeps the rest.
std::vector<std::string_view> Split(std::string_view text, char separator,
                                    std::size_t maxParts = std::string_view::npos);

/// The text without blanks, tabs and line ends on either side.
std::string_view Trim(std::string_view text);

} // namespace Core::Utilities
