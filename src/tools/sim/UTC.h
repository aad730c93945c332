// The civil time of a moment of GPS time.
#pragma once

#include "World.h"

#include <cstdint>

namespace Sim {

struct SUTC {
    std::uint32_t year = 0;
    std::uint8_t month = 0;
    std::uint8_t day = 0;
    std::uint8_t hour = 0;
    std::uint8_t minute = 0;
    std::uint32_t milliseconds = 0; ///< of the minute
    std::uint32_t leapSeconds = 0;  ///< by which GPS time is ahead
};

SUTC UTCOf(STime time);

} // namespace Sim
