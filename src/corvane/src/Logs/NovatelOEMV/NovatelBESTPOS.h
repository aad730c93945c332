// BESTPOS: what the position observers need of the best geodetic solution.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

class CNovatelBESTPOS : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 42;

    /// The geoid's height above the ellipsoid, in metres.
    double GetUndulation() const { return m_undulation; }
    std::uint8_t GetExtendedSolutionStatus() const { return m_extendedSolutionStatus; }
    std::uint8_t GetGPSGLONASSMask() const { return m_gpsGLONASSMask; }

protected:
    CNovatelBESTPOS() = default;

    double m_undulation = 0;
    std::uint8_t m_extendedSolutionStatus = 0;
    std::uint8_t m_gpsGLONASSMask = 0;
};

} // namespace Novatel
