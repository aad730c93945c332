// PSRSATS, RTKSATS, PDPSATS: the satellites of a solution. Their identifier tells them apart.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

class CNovatelSatsLog : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kPSRSATS = 1162;
    static constexpr std::uint16_t kRTKSATS = 1174;
    static constexpr std::uint16_t kPDPSATS = 1234;

    static constexpr std::uint32_t kGPS = 0;
    static constexpr std::uint32_t kGLONASS = 1;

    struct SSatellite {
        std::uint32_t system = 0;          ///< the receiver's numbering: kGPS, kGLONASS, ...
        std::uint32_t id = 0;              ///< PRN, or GLONASS slot
        std::int32_t glonassFrequency = 0; ///< -7 to 6 for GLONASS; otherwise as received
        std::uint32_t status = 0;          ///< 0 used, otherwise the reason for rejection
        std::uint32_t signalMask = 0;      ///< bit 0 L1, bit 1 L2, bit 2 L5
    };

    /// Empty when the sentence is too short for the entries it announces.
    const std::vector<SSatellite>& GetSatellites() const { return m_satellites; }

protected:
    CNovatelSatsLog() = default;

    std::vector<SSatellite> m_satellites;
};

} // namespace Novatel
