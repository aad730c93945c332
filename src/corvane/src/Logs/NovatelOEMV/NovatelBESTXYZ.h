// BESTXYZ: the best solution that the receiver has, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelBESTXYZ : public virtual CNovatelCartesianLog {
public:
    static constexpr std::uint16_t kMessageID = 241;

protected:
    CNovatelBESTXYZ() = default;
};

} // namespace Novatel
