#include "Channels.h"

#include <algorithm>
#include <array>
#include <span>

namespace Sim {

namespace {

/// The receiver's signal types of channel configurations, as far as it has channels for them.
struct SSignalType {
    std::uint32_t number;
    EBand band;
    bool hasSecondFrequency;
};

constexpr SSignalType kSignalTypes[] = {
    {0, EBand::gps, false},   {1, EBand::gps, true},       {4, EBand::sbas, false},
    {6, EBand::gps, true},    {7, EBand::gps, true},       {8, EBand::glonass, true},
    {9, EBand::lBand, false}, {10, EBand::glonass, false},
};

/// GPS L1/L2, SBAS L1, GLONASS L1/L2 and L band, as the full model of the receiver has them.
constexpr std::array<SChannelGroup, 4> kFullModel = {{{14, 1}, {2, 4}, {12, 8}, {1, 9}}};

constexpr unsigned kNumberShift = 5;

/// Tracking status words without the channel's number, as receivers send them.
struct SStatusWords {
    std::uint32_t tracking;
    std::uint32_t searching;
    std::uint32_t idle;
};

/// The channel has an associated signal.
constexpr std::uint32_t kGrouped = 0x00100000;

constexpr SStatusWords kGPSL1 = {0x08009C04, 0x08008002, 0x08008000};
constexpr SStatusWords kGPSL2 = {0x01209C0B, 0x0120800A, 0x01208008};
constexpr SStatusWords kGLONASSL1 = {0x08019C04, 0x08018002, 0x08018000};
constexpr SStatusWords kGLONASSL2 = {0x00A19C0B, 0x00A1800A, 0x00A18008};
constexpr SStatusWords kSBASL1 = {0x0C023C04, 0x0C022002, 0x0C022000};
constexpr SStatusWords kLBand = {0x0AE70000, 0x0AE70000, 0x0AE70000};

const SStatusWords& StatusWords(EBand band, bool isSecondFrequency) {
    switch (band) {
    case EBand::gps:
        return isSecondFrequency ? kGPSL2 : kGPSL1;
    case EBand::glonass:
        return isSecondFrequency ? kGLONASSL2 : kGLONASSL1;
    case EBand::sbas:
        return kSBASL1;
    case EBand::lBand:
        break;
    }
    return kLBand;
}

bool IsOfBand(const SSatellite& satellite, EBand band) {
    switch (band) {
    case EBand::gps:
        return satellite.system == ESystem::gps;
    case EBand::glonass:
        return satellite.system == ESystem::glonass;
    case EBand::sbas:
        return satellite.system == ESystem::sbas;
    case EBand::lBand:
        break;
    }
    return false;
}

/// The satellites of a band, tracked ones first.
std::vector<const SSatellite*> Candidates(const SState& state, EBand band) {
    std::vector<const SSatellite*> candidates;
    for (const bool isTracked : {true, false}) {
        for (const SSatellite& satellite : state.satellites) {
            if (IsOfBand(satellite, band) && (satellite.cn0L1 > 0.0F) == isTracked) {
                candidates.push_back(&satellite);
            }
        }
    }
    return candidates;
}

std::span<const SChannelGroup> GroupsInUse(const SReceiverInfo& info) {
    const std::size_t index = std::size_t{info.channelConfigurationInUse} - 1;
    if (index < info.channelConfigurations.size()) {
        return info.channelConfigurations[index];
    }
    return kFullModel;
}

} // namespace

float SSignalChannel::CarrierToNoise() const {
    if (satellite == nullptr) {
        return 0.0F;
    }
    return isSecondFrequency ? satellite->cn0L2 : satellite->cn0L1;
}

std::uint32_t SSignalChannel::TrackingStatus() const {
    const SStatusWords& words = StatusWords(band, isSecondFrequency);
    const std::uint32_t ownNumber = number << kNumberShift;
    if (satellite == nullptr) {
        return words.idle | ownNumber;
    }
    if (CarrierToNoise() <= 0.0F) {
        return words.searching | ownNumber;
    }
    return words.tracking | ownNumber | (hasSecondFrequency ? kGrouped : 0);
}

std::vector<SSignalChannel> ChannelsOf(const SState& state, const SReceiverInfo& info) {
    std::vector<SSignalChannel> channels;
    std::array<std::size_t, 4> taken{}; ///< satellites of each band that have a channel
    std::uint32_t number = 0;
    for (const SChannelGroup& group : GroupsInUse(info)) {
        const auto* const type =
            std::ranges::find(kSignalTypes, group.signalType, &SSignalType::number);
        if (type == std::end(kSignalTypes)) {
            continue;
        }
        const std::vector<const SSatellite*> candidates = Candidates(state, type->band);
        std::size_t& next = taken[static_cast<std::size_t>(type->band)];
        for (std::uint32_t i = 0; i < group.channels; ++i, ++number) {
            SSignalChannel channel = {.band = type->band,
                                      .number = number,
                                      .hasSecondFrequency = type->hasSecondFrequency};
            channel.satellite = next < candidates.size() ? candidates[next++] : nullptr;
            channels.push_back(channel);
            if (type->hasSecondFrequency) {
                channel.isSecondFrequency = true;
                channels.push_back(channel);
            }
        }
    }
    return channels;
}

} // namespace Sim
