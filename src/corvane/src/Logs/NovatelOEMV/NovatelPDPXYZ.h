// PDPXYZ: the smoothed pseudorange solution, Cartesian; the daemon's main source of positions.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelPDPXYZ : public virtual CNovatelCartesianLog {
public:
    static constexpr std::uint16_t kMessageID = 471;

protected:
    CNovatelPDPXYZ() = default;
};

} // namespace Novatel
