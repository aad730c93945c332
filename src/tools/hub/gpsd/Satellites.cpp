#include "hub/gpsd/Satellites.h"

#include "platform/Time.h"

#include <algorithm>
#include <cmath>

namespace Hub::GPSD {

namespace {

enum ESystem { kGPS = 0, kSBAS = 1, kQZSS = 5, kGLONASS = 6 };

/// A range of numbers as NMEA 0183 gives them to the satellites of a system. Reports number as NMEA
/// does but for SBAS, whose satellites keep the numbers of their signals there.
struct SNumbers {
    int first;
    int last;
    ESystem system;
    int toReport; ///< what is added for a report
    int inSystem; ///< and for the number within the system, "svid"
};

constexpr std::array kNMEANumbers = {
    SNumbers{1, 32, kGPS, 0, 0},
    SNumbers{33, 64, kSBAS, 87, 87},
    SNumbers{65, 96, kGLONASS, 0, -64},
    SNumbers{193, 202, kQZSS, 0, -192},
};

/// The receiver numbers its channels' satellites as NMEA does but for GLONASS and SBAS.
std::optional<int> ToNMEA(std::uint8_t channelPRN) {
    if (channelPRN >= 1 && channelPRN <= 32) {
        return channelPRN;
    }
    if (channelPRN >= 38 && channelPRN <= 61) {
        return channelPRN - 37 + 64;
    }
    if (channelPRN >= 120 && channelPRN <= 138) {
        return channelPRN - 87;
    }
    return std::nullopt;
}

bool IsFresh(double time) {
    return std::fabs(Core::UnixTime::Now().AsSeconds() - time) <= CSatellites::kKeptFor;
}

} // namespace

bool CSatellites::Add(const SSentence& sentence) {
    const std::optional<double> before = m_view.Time();
    m_view.Add(sentence);
    return m_view.Time() != before;
}

/// A view is more than the channels, and comes as often: while there is one, it sets the pace.
bool CSatellites::Add(const SSky& sky) {
    m_sky = sky;
    return !IsViewFresh();
}

bool CSatellites::IsViewFresh() const {
    return m_view.Time() && IsFresh(*m_view.Time());
}

bool CSatellites::IsSkyFresh() const {
    return m_sky && IsFresh(m_sky->time);
}

std::optional<CSkyView::SUse> CSatellites::FreshUse() const {
    return m_view.Use() && IsFresh(m_view.Use()->time) ? m_view.Use() : std::nullopt;
}

std::optional<double> CSatellites::HDOP() const {
    const auto use = FreshUse();
    return use ? use->hdop : std::nullopt;
}

CSatellites::SSatellite& CSatellites::Find(TSatellites& satellites, int nmeaNumber) {
    const auto* const numbers =
        std::find_if(kNMEANumbers.begin(), kNMEANumbers.end(), [&](const SNumbers& each) {
            return nmeaNumber >= each.first && nmeaNumber <= each.last;
        });
    if (numbers == kNMEANumbers.end()) {
        return satellites[nmeaNumber];
    }
    SSatellite& satellite = satellites[nmeaNumber + numbers->toReport];
    satellite.system = numbers->system;
    satellite.inSystem = nmeaNumber + numbers->inSystem;
    return satellite;
}

void CSatellites::AddView(TSatellites& satellites) const {
    for (const CSkyView::SSatellite& seen : m_view.Satellites()) {
        SSatellite& satellite = Find(satellites, seen.prn);
        satellite.elevation = seen.elevation;
        satellite.azimuth = seen.azimuth;
        satellite.cn0 = seen.cn0;
        satellite.isUsed = seen.isUsed && FreshUse();
    }
}

/// A satellite that is received on several frequencies has several channels: its strongest counts.
void CSatellites::AddChannels(TSatellites& satellites) const {
    TSatellites received;
    for (const SSky::SChannel& channel : m_sky->channels) {
        if (const auto number = ToNMEA(channel.prn)) {
            SSatellite& satellite = Find(received, *number);
            if (channel.cn0 && *channel.cn0 > 0.0) {
                satellite.cn0 = std::max(satellite.cn0.value_or(0.0), *channel.cn0);
            }
        }
    }
    satellites.merge(received);
    // Those that stay behind are known from the view.
    for (const auto& [prn, satellite] : received) {
        SSatellite& known = satellites[prn];
        known.cn0 = known.cn0 ? known.cn0 : satellite.cn0;
    }
}

TReport CSatellites::Describe(int prn, const SSatellite& satellite) {
    TReport report;
    report["PRN"] = prn;
    SetNumber(report, "el", satellite.elevation);
    SetNumber(report, "az", satellite.azimuth);
    SetNumber(report, "ss", satellite.cn0);
    report["used"] = satellite.isUsed;
    if (satellite.system) {
        report["gnssid"] = *satellite.system;
        report["svid"] = satellite.inSystem;
    }
    return report;
}

std::optional<TReport> CSatellites::Report(std::optional<std::int32_t> usedCount) const {
    TSatellites satellites;
    double time = 0.0;
    if (IsViewFresh()) {
        AddView(satellites);
        time = *m_view.Time();
    }
    if (IsSkyFresh()) {
        AddChannels(satellites);
        time = std::max(time, m_sky->time);
    }
    if (time == 0.0) {
        return std::nullopt;
    }
    TReport report = ReportOfDevice("SKY");
    SetTime(report, time);
    if (const auto use = FreshUse()) {
        SetNumber(report, "vdop", use->vdop);
        SetNumber(report, "hdop", use->hdop);
        SetNumber(report, "pdop", use->pdop);
    }
    const auto marked = std::count_if(satellites.begin(), satellites.end(),
                                      [](const auto& entry) { return entry.second.isUsed; });
    report["nSat"] = satellites.size();
    report["uSat"] = usedCount.value_or(static_cast<std::int32_t>(marked));
    report["satellites"] = TReport::array();
    for (const auto& [prn, satellite] : satellites) {
        report["satellites"].push_back(Describe(prn, satellite));
    }
    return report;
}

} // namespace Hub::GPSD
