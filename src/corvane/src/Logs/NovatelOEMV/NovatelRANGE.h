// RANGE: the raw measurements, one observation per tracked signal.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

class CNovatelRANGE : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 43;

    struct SObservation {
        std::uint16_t prn = 0;              ///< GPS 1 to 32, GLONASS slot + 37, SBAS 120 to 138
        std::uint16_t glonassFrequency = 0; ///< channel + 7
        double pseudorange = 0;             ///< metres
        float pseudorangeDeviation = 0;     ///< metres
        double carrierPhase = 0;            ///< accumulated Doppler range, cycles
        float carrierPhaseDeviation = 0;    ///< cycles
        float doppler = 0;                  ///< Hz
        float carrierToNoise = 0;           ///< dB-Hz
        float lockTime = 0;                 ///< seconds
        std::uint32_t trackingStatus = 0;   ///< the receiver's channel tracking status word
    };

    std::uint32_t GetNumberOfObservations() const { return m_numberOfObservations; }
    const std::vector<SObservation>& GetObservations() const { return m_observations; }

protected:
    CNovatelRANGE() = default;

    std::uint32_t m_numberOfObservations = 0;
    std::vector<SObservation> m_observations;
};

} // namespace Novatel
