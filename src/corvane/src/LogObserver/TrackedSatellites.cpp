#include "LogObserver/TrackedSatellites.h"

#include <bitset>

namespace {

using SChannel = Novatel::CNovatelTRACKSTAT::SChannel;

/// The receiver's range reject code of a channel that has no measurement.
constexpr std::uint32_t kNoMeasurement = 99;

bool IsGPS(std::uint16_t prn) {
    return prn >= 1 && prn <= 32;
}

/// GLONASS slots are numbered from 38.
bool IsGLONASS(std::uint16_t prn) {
    return prn >= 38 && prn <= 61;
}

std::uint32_t SignalType(const SChannel& channel) {
    return channel.trackingStatus >> 21 & 0x1FU;
}

bool IsL1(std::uint32_t signalType) {
    return signalType == 0;
}

/// L2 P codeless, L2 P and L2 C.
bool IsL2(std::uint32_t signalType) {
    return signalType == 5 || signalType == 9 || signalType == 17;
}

void CountSignal(STrackedSatellites& tracked, const SChannel& channel) {
    const std::uint32_t signalType = SignalType(channel);
    if (IsGPS(channel.prn)) {
        tracked.gpsL1 += IsL1(signalType) ? 1 : 0;
        tracked.gpsL2 += IsL2(signalType) ? 1 : 0;
    } else if (IsGLONASS(channel.prn)) {
        tracked.glonassL1 += IsL1(signalType) ? 1 : 0;
        tracked.glonassL2 += IsL2(signalType) ? 1 : 0;
    }
}

} // namespace

STrackedSatellites STrackedSatellites::Of(const Novatel::CNovatelTRACKSTAT& log) {
    STrackedSatellites tracked;
    std::bitset<65536> seen;
    for (const SChannel& channel : log.GetChannels()) {
        if (channel.rejectCode == kNoMeasurement) {
            continue;
        }
        CountSignal(tracked, channel);
        if (seen.test(channel.prn)) {
            continue;
        }
        seen.set(channel.prn);
        ++tracked.distinctPRNs;
        const char* const system = SBASSystemName(channel.prn);
        if (*system != '\0') {
            tracked.sbas += std::to_string(channel.prn) + " (" + system + "),";
        }
    }
    return tracked;
}

const char* SBASSystemName(std::uint16_t prn) {
    switch (prn) {
    case 122:
    case 134:
    case 135:
    case 138:
        return "WAAS";
    case 120:
    case 124:
    case 126:
    case 131:
        return "EGNOS";
    case 129:
    case 137:
        return "MSAS";
    default:
        return "";
    }
}
