// NMEA 0183 (4.10) sentences made from the solution, for clients that watch NMEA.
#pragma once

#include "hub/gpsd/Reports.h"
#include "platform/Time.h"

#include <array>
#include <string>
#include <string_view>

namespace Hub::GPSD {

/// Makes GGA, RMC and VTG, unless the receiver sends the same itself.
class CNMEASentences {
public:
    /// One that has come from the receiver counts for so long.
    static constexpr Core::Time kReceiversOwn = Core::Time::FromMilliseconds(10'000);

    /// A sentence has come from the receiver.
    void Received(const SSentence& sentence);

    /// Each with its line end.
    std::string Make(const SFix& fix) const;

    /// From "$" to checksum. Fields of what is not known are empty.
    static std::string GGA(const SFix& fix);
    static std::string RMC(const SFix& fix);
    static std::string VTG(const SFix& fix);

private:
    struct SKind {
        std::string_view name;
        std::string (*make)(const SFix& fix);
    };
    static constexpr std::array<SKind, 3> kKinds = {{{"GGA", GGA}, {"RMC", RMC}, {"VTG", VTG}}};

    /// Until when the receiver's own stand in for ours.
    std::array<Core::MonotonicTime, kKinds.size()> m_receivedUntil;
};

} // namespace Hub::GPSD
