// OMNIHPPOS: the high-precision L-band service's solution, geodetic.
#pragma once

#include "Logs/NovatelOEMV/NovatelGeodeticLog.h"

namespace Novatel {

class CNovatelOMNIHPPOS : public virtual CNovatelGeodeticLog {
public:
    static constexpr std::uint16_t kMessageID = 495;

protected:
    CNovatelOMNIHPPOS() = default;
};

} // namespace Novatel
