// Measurements, channels and the satellites of each solution.
#include "Channels.h"
#include "LogBodies.h"
#include "Moment.h"
#include "Noise.h"
#include "SatelliteSignals.h"

#include "platform/Maths.h"

#include <cmath>

namespace Sim {

namespace {

constexpr double kLight = 299'792'458.0; ///< metres per second

/// The receiver's range reject codes.
enum ERejectCode : std::uint32_t {
    kGood = 0,
    kSecondFrequency = 13,
    kNotUsed = 17,
    kNoObservation = 99,
};

constexpr int kFirstGLONASS = 38; ///< number of slot 1 in measurements

std::uint16_t FrequencyField(const SSatellite& satellite) {
    const bool isGLONASS = satellite.system == ESystem::glonass;
    return isGLONASS ? static_cast<std::uint16_t>(satellite.glonassFrequency + 7)
                     : std::uint16_t{0};
}

/// Hz.
double CarrierFrequency(const SSatellite& satellite, bool isSecond) {
    if (satellite.system == ESystem::glonass) {
        const double channel = satellite.glonassFrequency;
        return isSecond ? 1246e6 + channel * 437.5e3 : 1602e6 + channel * 562.5e3;
    }
    return isSecond ? 1227.60e6 : 1575.42e6;
}

/// What a channel measures. Code errs less and phase far less the stronger the signal is.
struct SMeasurement {
    double pseudorange;          ///< metres
    double pseudorangeError;     ///< metres of it that are noise
    double pseudorangeDeviation; ///< metres
    double carrierPhase;         ///< cycles; falls while the range grows
    double phaseDeviation;       ///< cycles
    double doppler;              ///< Hz
};

SMeasurement Measure(const SSignalChannel& channel, const SState& state) {
    const SSatellite& satellite = *channel.satellite;
    const double wavelength = kLight / CarrierFrequency(satellite, channel.isSecondFrequency);
    const double weakness = std::pow(10.0, (45.0 - double{channel.CarrierToNoise()}) / 20.0);
    const double deviation = 0.08 * weakness;
    const double phaseDeviation = 0.005 * weakness;
    const double range = satellite.range + kLight * state.clockOffset;

    const std::uint64_t sequence = satellite.prn * 4U + (channel.isSecondFrequency ? 2U : 0U);
    const Milliseconds moment = SinceGPSEpoch(state.time);
    const double error = deviation * CNoise(0, sequence).White(moment);
    const double phaseError = phaseDeviation * CNoise(0, sequence + 1).White(moment);
    return {.pseudorange = range + error,
            .pseudorangeError = error,
            .pseudorangeDeviation = deviation,
            .carrierPhase = phaseError - range / wavelength,
            .phaseDeviation = phaseDeviation,
            .doppler = -satellite.rangeRate / wavelength};
}

bool IsTracking(const SSignalChannel& channel) {
    return channel.CarrierToNoise() > 0.0F;
}

void EncodeObservation(CByteWriter& body, const SSignalChannel& channel, const SState& state) {
    const SSatellite& satellite = *channel.satellite;
    const SMeasurement measurement = Measure(channel, state);
    body.U16(satellite.prn).U16(FrequencyField(satellite));
    body.Double(measurement.pseudorange);
    body.Float(static_cast<float>(measurement.pseudorangeDeviation));
    body.Double(measurement.carrierPhase);
    body.Float(static_cast<float>(measurement.phaseDeviation));
    body.Float(static_cast<float>(measurement.doppler));
    body.Float(channel.CarrierToNoise()).Float(satellite.lockTime);
    body.U32(channel.TrackingStatus());
}

std::uint32_t RejectCode(const SSignalChannel& channel) {
    if (channel.isSecondFrequency) {
        return kSecondFrequency;
    }
    return channel.satellite->isUsed ? kGood : kNotUsed;
}

void EncodeChannel(CByteWriter& body, const SSignalChannel& channel, const SState& state) {
    const SSatellite* const satellite = channel.satellite;
    body.U16(satellite == nullptr ? std::uint16_t{0} : satellite->prn);
    body.U16(satellite == nullptr ? std::uint16_t{0} : FrequencyField(*satellite));
    body.U32(channel.TrackingStatus());
    if (satellite == nullptr || !IsTracking(channel)) {
        body.Double(0.0).Float(0.0F).Float(0.0F).Float(0.0F).Float(0.0F);
        body.U32(kNoObservation).Float(0.0F);
        return;
    }
    const SMeasurement measurement = Measure(channel, state);
    const std::uint32_t code = RejectCode(channel);
    const double weight = std::sin(Core::Maths::Radians(satellite->elevation));
    body.Double(measurement.pseudorange).Float(static_cast<float>(measurement.doppler));
    body.Float(channel.CarrierToNoise()).Float(satellite->lockTime);
    body.Float(static_cast<float>(measurement.pseudorangeError));
    body.U32(code).Float(code == kGood ? static_cast<float>(weight) : 0.0F);
}

/// The satellite lists number GLONASS satellites by their slot, and their frequency with a sign.
std::uint16_t NumberInLists(const SSatellite& satellite) {
    return satellite.system == ESystem::glonass
               ? static_cast<std::uint16_t>(satellite.prn - kFirstGLONASS + 1)
               : satellite.prn;
}

void EncodeSatelliteList(CByteWriter& body, const SState& state, const SSolution& solution) {
    constexpr std::uint32_t kL1 = 1;
    constexpr std::uint32_t kL2 = 2;
    std::vector<const SSatellite*> tracked;
    for (const SSatellite& satellite : state.satellites) {
        if (satellite.cn0L1 > 0.0F) {
            tracked.push_back(&satellite);
        }
    }
    body.Count(tracked.size());
    for (const SSatellite* satellite : tracked) {
        const bool isUsed = satellite->isUsed && solution.satellitesUsed > 0;
        const std::uint32_t signals = kL1 | (satellite->cn0L2 > 0.0F ? kL2 : 0);
        body.U32(static_cast<std::uint32_t>(satellite->system));
        body.U16(NumberInLists(*satellite));
        body.U16(static_cast<std::uint16_t>(satellite->glonassFrequency));
        body.U32(isUsed ? kGood : kNotUsed).U32(isUsed ? signals : 0);
    }
}

} // namespace

namespace LogBodies {

void RANGE(CByteWriter& body, const SLogInput& input) {
    const std::vector<SSignalChannel> channels = ChannelsOf(input.state, input.info);
    CByteWriter observations;
    std::size_t count = 0;
    for (const SSignalChannel& channel : channels) {
        if (IsTracking(channel)) {
            EncodeObservation(observations, channel, input.state);
            ++count;
        }
    }
    body.Count(count).Append(observations.Written());
}

void TRACKSTAT(CByteWriter& body, const SLogInput& input) {
    const std::vector<SSignalChannel> channels = ChannelsOf(input.state, input.info);
    const SSolution& solution = input.state.pseudorange;
    body.U32(solution.status).U32(solution.type);
    body.Float(static_cast<float>(kElevationMask)).Count(channels.size());
    for (const SSignalChannel& channel : channels) {
        EncodeChannel(body, channel, input.state);
    }
}

void PSRSATS(CByteWriter& body, const SLogInput& input) {
    EncodeSatelliteList(body, input.state, input.state.pseudorange);
}

void RTKSATS(CByteWriter& body, const SLogInput& input) {
    EncodeSatelliteList(body, input.state, input.state.rtk);
}

void PDPSATS(CByteWriter& body, const SLogInput& input) {
    EncodeSatelliteList(body, input.state, input.state.pdp);
}

} // namespace LogBodies

} // namespace Sim
