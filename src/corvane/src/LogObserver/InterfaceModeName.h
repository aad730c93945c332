// The names of the receiver's interface modes, as COMCONFIG numbers them.
#pragma once

#include <cstdint>
#include <string>

/// "UNKNOWN (11)" for a number without a name.
std::string InterfaceModeName(std::uint32_t mode);
