// PSRDOP: the dilutions of precision of the pseudorange solution.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

/// The receiver sends IEEE floats; what is kept is the value of their bit pattern as an integer
/// (1.5 on the wire gives 1069547520). Consumers of the published numbers are built on that.
class CNovatelPSRDOP : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 174;

    float GetGDOP() const { return m_gdop; }
    float GetPDOP() const { return m_pdop; }
    float GetHDOP() const { return m_hdop; }
    float GetHTDOP() const { return m_htdop; }
    float GetTDOP() const { return m_tdop; }
    float GetElevationCutOff() const { return m_elevationCutOff; }
    /// The satellites used.
    const std::vector<std::uint32_t>& GetPRNs() const { return m_prns; }

protected:
    CNovatelPSRDOP() = default;

    float m_gdop = 0;
    float m_pdop = 0;
    float m_hdop = 0;
    float m_htdop = 0;
    float m_tdop = 0;
    float m_elevationCutOff = 0;
    std::vector<std::uint32_t> m_prns;
};

} // namespace Novatel
