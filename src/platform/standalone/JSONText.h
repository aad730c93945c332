// JSON text as every socket of the project writes it: shortest numbers, valid UTF-8, one line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace JSONText {

/// Appends a quoted string. The text ends at its first zero byte; control characters, `"` and `\`
/// are escaped; a byte above 0x7F that is not part of valid UTF-8 is written as U+0080..U+00FF.
void AppendString(std::string& out, std::string_view text);

/// Appends the shortest text that reads back as the same double; `null` when it is not finite.
/// Whole numbers are written without a fraction.
void AppendDouble(std::string& out, double value);

void AppendInteger(std::string& out, std::int64_t value);

} // namespace JSONText
