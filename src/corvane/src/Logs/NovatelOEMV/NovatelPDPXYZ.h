// PDPXYZ: the smoothed pseudorange solution, Cartesian; the daemon's main source of positions.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelPDPXYZ : public virtual CNovatelCartesianLog {
protected:
    CNovatelPDPXYZ() = default;
};

} // namespace Novatel
