// REFSTATION: the reference station whose corrections the receiver uses.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <string>

namespace Novatel {

class CNovatelREFSTATION : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 175;

    /// Earth-centred Earth-fixed, metres.
    double GetX() const { return m_x; }
    double GetY() const { return m_y; }
    double GetZ() const { return m_z; }
    std::uint32_t GetStationType() const { return m_stationType; }
    /// At most five characters.
    const std::string& GetStationID() const { return m_stationID; }

protected:
    CNovatelREFSTATION() = default;

    double m_x = 0;
    double m_y = 0;
    double m_z = 0;
    std::uint32_t m_stationType = 0;
    std::string m_stationID;
};

} // namespace Novatel
