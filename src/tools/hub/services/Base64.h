// Bytes that were written as base64 (RFC 4648, section 4).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Hub {

/// Nothing when the text is no base64, padding included.
std::optional<std::string> FromBase64(std::string_view text);

} // namespace Hub
