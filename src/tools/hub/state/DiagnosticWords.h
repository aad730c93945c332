// What the daemon's diagnostics mean.
#pragma once

#include <cstdint>
#include <string_view>

namespace Hub {

/// Empty for a pair that is not known.
std::string_view DiagnosticWords(std::int32_t code, std::int32_t sub);

} // namespace Hub
