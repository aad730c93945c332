// LBANDSTAT: how well the L-band service is received, with its status words.
#pragma once

#include "Logs/LBandLog.h"
#include "Logs/LBandSignalTracking.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"
#include "Logs/OmnistarHPAdditionalStatusWord.h"
#include "Logs/OmnistarHPStatusWord.h"
#include "Logs/OmnistarVBSStatusWord.h"

namespace Novatel {

class CNovatelLBANDSTAT : public CLBandLog, public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 731;

    /// dB-Hz.
    float GetCarrierToNoise() const { return m_carrierToNoise; }
    /// Seconds.
    float GetLockTime() const { return m_lockTime; }
    const CLBandSignalTracking& GetSignalTracking() const { return m_signalTracking; }
    const COmnistarVBSStatusWord& GetVBSStatus() const { return m_vbsStatus; }
    /// Bytes that have reached the virtual-base-station process.
    std::uint32_t GetVBSBytes() const { return m_vbsBytes; }
    std::uint32_t GetGoodDGPSUpdates() const { return m_goodDGPSUpdates; }
    std::uint32_t GetBadDataUpdates() const { return m_badDataUpdates; }
    const COmnistarHPAdditionalStatusWord& GetHPAdditionalStatus() const {
        return m_hpAdditionalStatus;
    }
    /// Bytes that have reached the high-precision process.
    std::uint32_t GetHPBytes() const { return m_hpBytes; }
    const COmnistarHPStatusWord& GetHPStatus() const { return m_hpStatus; }

    /// The class name and every value as a name=value pair, status words as raw numbers.
    std::string AsText() const;
    /// AsText() as a line on standard output.
    void Print() const;

protected:
    CNovatelLBANDSTAT() = default;

    float m_carrierToNoise = 0;
    float m_lockTime = 0;
    CLBandSignalTracking m_signalTracking;
    COmnistarVBSStatusWord m_vbsStatus;
    std::uint32_t m_vbsBytes = 0;
    std::uint32_t m_goodDGPSUpdates = 0;
    std::uint32_t m_badDataUpdates = 0;
    COmnistarHPAdditionalStatusWord m_hpAdditionalStatus;
    std::uint32_t m_hpBytes = 0;
    COmnistarHPStatusWord m_hpStatus;
};

} // namespace Novatel
