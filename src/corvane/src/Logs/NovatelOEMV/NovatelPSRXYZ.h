// PSRXYZ: the solution from pseudoranges alone, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelPSRXYZ : public virtual CNovatelCartesianLog {
protected:
    CNovatelPSRXYZ() = default;
};

} // namespace Novatel
