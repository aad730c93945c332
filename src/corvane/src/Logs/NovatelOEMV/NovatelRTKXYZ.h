// RTKXYZ: the solution relative to a reference station, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelRTKXYZ : public virtual CNovatelCartesianLog {
public:
    static constexpr std::uint16_t kMessageID = 244;

protected:
    CNovatelRTKXYZ() = default;
};

} // namespace Novatel
