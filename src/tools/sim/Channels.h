// The receiver's channels: how its channel configuration shares them, and what each of them does.
#pragma once

#include "LogEncoder.h"

#include <cstdint>
#include <vector>

namespace Sim {

enum class EBand { gps, glonass, sbas, lBand };

/// One signal of a channel; a channel for two frequencies is two of these.
struct SSignalChannel {
    EBand band = EBand::gps;
    std::uint32_t number = 0; ///< shared by both signals of a satellite
    bool isSecondFrequency = false;
    bool hasSecondFrequency = false;       ///< the channel, of the other signal or this one
    const SSatellite* satellite = nullptr; ///< of the state; null while it is idle

    /// dB-Hz; 0 when it is not tracking.
    float CarrierToNoise() const;
    /// The receiver's channel tracking status word.
    std::uint32_t TrackingStatus() const;
};

/// All channels of the configuration in use, with the satellites in the state's order. Tracked ones
/// come first; where channels are left, they search for the others.
std::vector<SSignalChannel> ChannelsOf(const SState& state, const SReceiverInfo& info);

} // namespace Sim
