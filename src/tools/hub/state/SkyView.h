// Where the GPS satellites stand, gathered from the receiver's NMEA sentences.
#pragma once

#include "hub/Messages.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace Hub {

/// Takes GPGSV (in the parts of one view) and GPGSA. A sentence that is damaged or makes no sense
/// changes nothing.
class CSkyView {
public:
    struct SSatellite {
        std::int32_t prn = 0; ///< as NMEA 0183 numbers them: GPS 1 to 32, SBAS 33 to 64,
                              ///< GLONASS 65 to 96
        std::optional<std::int32_t> elevation; ///< degrees, 0 to 90
        std::optional<std::int32_t> azimuth;   ///< degrees from true north, 0 to 359
        std::optional<std::int32_t> cn0;       ///< dB-Hz; none while it is not tracked
        bool isUsed = false;
    };

    void Add(const SSentence& sentence);

    /// The last view that was whole, by rising number.
    const std::vector<SSatellite>& Satellites() const { return m_satellites; }
    /// When the last whole view was published; none before the first one.
    std::optional<double> Time() const { return m_time; }

    /// From GPGSA: 1 no fix, 2 in the plane, 3 in space; the dilutions of precision.
    struct SUse {
        double time = 0.0;
        std::int32_t mode = 1;
        std::set<std::int32_t> prns;
        std::optional<double> pdop;
        std::optional<double> hdop;
        std::optional<double> vdop;
    };
    const std::optional<SUse>& Use() const { return m_use; }

private:
    void AddView(const SSentence& sentence);
    void AddUse(const SSentence& sentence);
    void MarkUsed();

    std::vector<SSatellite> m_satellites;
    std::optional<double> m_time;
    std::optional<SUse> m_use;
    std::vector<SSatellite> m_parts; ///< of the view that comes in now
    std::int32_t m_partCount = 0;
    std::int32_t m_nextPart = 1;
};

/// Whether it is a sentence from its "$" to its checksum and the two agree (NMEA 0183).
bool IsSentence(std::string_view sentence);

/// The fields of a sentence, behind its address, without the checksum.
std::vector<std::string_view> FieldsOf(std::string_view sentence);

} // namespace Hub
