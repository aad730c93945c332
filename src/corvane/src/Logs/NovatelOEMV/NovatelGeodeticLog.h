// This receiver's solutions in geodetic coordinates; observers that take any of them look for this.
#pragma once

#include "Logs/GeodeticLog.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

class CNovatelGeodeticLog : public CGeodeticLog, public virtual CNovatelRecord {
protected:
    CNovatelGeodeticLog() = default;
};

} // namespace Novatel
