// This receiver's solutions in Cartesian coordinates; observers that take any of them look for
// this.
#pragma once

#include "Logs/CartesianLog.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

class CNovatelCartesianLog : public CCartesianLog, public virtual CNovatelRecord {
protected:
    CNovatelCartesianLog() = default;
};

} // namespace Novatel
