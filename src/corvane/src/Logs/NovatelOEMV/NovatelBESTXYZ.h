// BESTXYZ: the best solution that the receiver has, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelBESTXYZ : public virtual CNovatelCartesianLog {
protected:
    CNovatelBESTXYZ() = default;
};

} // namespace Novatel
