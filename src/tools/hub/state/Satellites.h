// Satellites by their numbers.
#pragma once

#include "hub/Messages.h"

#include <cstdint>
#include <string_view>

namespace Hub {

/// The system of a satellite by the receiver's numbering (the receiver's manual): GPS 1 to 32,
/// GLONASS 38 to 61 (its slot and 37), SBAS 120 to 138.
std::string_view SystemName(std::int32_t prn);

/// How many satellites the solution has used, of all systems.
std::int32_t SatellitesUsed(const SSolution& solution);

} // namespace Hub
