// TRACKSTAT: what each channel of the receiver is doing, idle ones included.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

class CNovatelTRACKSTAT : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 83;

    struct SChannel {
        std::uint16_t prn = 0;              ///< as in RANGE; 0 when the channel is idle
        std::uint16_t glonassFrequency = 0; ///< channel + 7
        std::uint32_t trackingStatus = 0;   ///< the receiver's channel tracking status word
        double pseudorange = 0;             ///< metres
        float doppler = 0;                  ///< Hz
        float carrierToNoise = 0;           ///< dB-Hz
        float lockTime = 0;                 ///< seconds
        float pseudorangeResidual = 0;      ///< metres
        std::uint32_t rejectCode = 0;       ///< the receiver's range reject code; 99 none
        float pseudorangeWeight = 0;        ///< in the filter
    };

    std::uint32_t GetSolutionStatus() const { return m_solutionStatus; }
    std::uint32_t GetPositionType() const { return m_positionType; }
    /// Degrees.
    float GetElevationCutOff() const { return m_elevationCutOff; }
    std::uint32_t GetNumberOfChannels() const { return m_numberOfChannels; }
    const std::vector<SChannel>& GetChannels() const { return m_channels; }

protected:
    CNovatelTRACKSTAT() = default;

    std::uint32_t m_solutionStatus = 0;
    std::uint32_t m_positionType = 0;
    float m_elevationCutOff = 0;
    std::uint32_t m_numberOfChannels = 0;
    std::vector<SChannel> m_channels;
};

} // namespace Novatel
