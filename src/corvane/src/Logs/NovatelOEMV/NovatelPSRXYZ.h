// PSRXYZ: the solution from pseudoranges alone, Cartesian.
#pragma once

#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelPSRXYZ : public virtual CNovatelCartesianLog {
public:
    static constexpr std::uint16_t kMessageID = 243;

protected:
    CNovatelPSRXYZ() = default;
};

} // namespace Novatel
