// What a TRACKSTAT says about the satellites: how many, of which system, on which frequency.
#pragma once

#include "Logs/NovatelOEMV/NovatelTRACKSTAT.h"

#include <cstdint>
#include <string>

/// Counted over the channels that the receiver has not rejected.
struct STrackedSatellites {
    std::int32_t gpsL1 = 0; ///< channels, like the next three
    std::int32_t gpsL2 = 0;
    std::int32_t glonassL1 = 0;
    std::int32_t glonassL2 = 0;
    /// Different PRNs of any system, 0 of idle channels with them.
    std::int32_t distinctPRNs = 0;
    /// "122 (WAAS),131 (EGNOS),": in channel order, each once.
    std::string sbas;

    static STrackedSatellites Of(const Novatel::CNovatelTRACKSTAT& log);
};

/// The system that an SBAS satellite belongs to; empty for one of none that is known.
const char* SBASSystemName(std::uint16_t prn);
