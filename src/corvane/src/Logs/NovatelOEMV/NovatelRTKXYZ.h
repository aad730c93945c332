// RTKXYZ: the solution relative to a reference station, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelRTKXYZ : public virtual CNovatelCartesianLog {
protected:
    CNovatelRTKXYZ() = default;
};

} // namespace Novatel
