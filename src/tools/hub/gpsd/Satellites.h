// SKY reports: the satellites in view, from the receiver's sentences and from its channels.
#pragma once

#include "hub/gpsd/Reports.h"
#include "hub/state/SkyView.h"
#include "hub/state/State.h"

#include <map>
#include <optional>

namespace Hub::GPSD {

/// The sentences tell GPS and SBAS satellites with their places; the channels fill in those that
/// the sentences do not know, GLONASS above all, with their signals alone. What is older than
/// kKeptFor is not told any more.
class CSatellites {
public:
    static constexpr double kKeptFor = 10.0; ///< seconds; receivers tell once a second

    /// Each returns whether there is something new to report.
    bool Add(const SSentence& sentence);
    bool Add(const SSky& sky);

    /// Nothing when nothing is known. `usedCount` is how many satellites the solution has used;
    /// without it, those that are marked are counted.
    std::optional<TReport> Report(std::optional<std::int32_t> usedCount) const;
    std::optional<double> HDOP() const;

private:
    struct SSatellite {
        std::optional<int> system; ///< "gnssid", where the number tells it
        int inSystem = 0;          ///< "svid"
        std::optional<double> elevation;
        std::optional<double> azimuth;
        std::optional<double> cn0;
        bool isUsed = false;
    };
    using TSatellites = std::map<int, SSatellite>; ///< by "PRN"

    static SSatellite& Find(TSatellites& satellites, int nmeaNumber);
    static TReport Describe(int prn, const SSatellite& satellite);
    bool IsViewFresh() const;
    bool IsSkyFresh() const;
    std::optional<CSkyView::SUse> FreshUse() const;
    void AddView(TSatellites& satellites) const;
    void AddChannels(TSatellites& satellites) const;

    CSkyView m_view;
    std::optional<SSky> m_sky;
};

} // namespace Hub::GPSD
