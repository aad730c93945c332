#include "Reception.h"

#include "Logs/NovatelOEMV/PositionType.h"

#include <algorithm>
#include <cstddef>

namespace Sim {

namespace {

constexpr std::uint32_t kInsufficientObservations = 1;

// Signal types of CHANCONFIGLIST.
constexpr std::uint32_t kGPSL1 = 0;
constexpr std::uint32_t kGPSL1L2 = 1;
constexpr std::uint32_t kSBASL1 = 4;
constexpr std::uint32_t kGLONASSL1L2 = 8;
constexpr std::uint32_t kLBand = 9;
constexpr std::uint32_t kGLONASSL1 = 10;

/// How much less certain a float solution is than an integer one.
constexpr float kFloatFactor = 20.0F;

struct SShares {
    std::uint32_t gps;
    std::uint32_t glonass;
    std::uint32_t sbas;
    std::uint32_t lBand = 0;
};

/// All that an OEMV-3 has at once; the other sets are those of a 14-channel receiver.
constexpr SShares kWholeCard = {14, 12, 2, 1};
constexpr SShares kShared[] = {{14, 0, 0}, {12, 0, 2}, {10, 4, 0},
                               {8, 6, 0},  {8, 4, 2},  {10, 2, 2}};
constexpr std::size_t kSetsWithoutGLONASS = 2;

std::vector<SChannelGroup> Groups(const SShares& shares, bool hasL2) {
    std::vector<SChannelGroup> groups;
    const auto add = [&](std::uint32_t channels, std::uint32_t signal) {
        if (channels > 0) {
            groups.push_back({channels, signal});
        }
    };
    // In this order: the receiver numbers its channels so.
    add(shares.gps, hasL2 ? kGPSL1L2 : kGPSL1);
    add(shares.sbas, kSBASL1);
    add(shares.glonass, hasL2 ? kGLONASSL1L2 : kGLONASSL1);
    add(shares.lBand, kLBand);
    return groups;
}

bool Tracks(std::uint32_t signal, ESystem system) {
    switch (system) {
    case ESystem::gps:
        return signal == kGPSL1 || signal == kGPSL1L2;
    case ESystem::glonass:
        return signal == kGLONASSL1 || signal == kGLONASSL1L2;
    case ESystem::sbas:
        return signal == kSBASL1;
    }
    return false;
}

std::size_t CountChannels(ESystem system, const std::vector<SChannelGroup>& channels) {
    std::size_t count = 0;
    for (const SChannelGroup& group : channels) {
        count += Tracks(group.signalType, system) ? group.channels : 0;
    }
    return count;
}

/// Channels go to the highest satellites; the order stays.
void KeepHighest(std::vector<SSatellite>& satellites, ESystem system, std::size_t count) {
    std::vector<double> elevations;
    for (const SSatellite& each : satellites) {
        if (each.system == system) {
            elevations.push_back(each.elevation);
        }
    }
    if (elevations.size() <= count) {
        return;
    }
    std::sort(elevations.begin(), elevations.end(), std::greater<>());
    std::erase_if(satellites, [&](const SSatellite& each) {
        return each.system == system && (count == 0 || each.elevation < elevations[count - 1]);
    });
}

void RestrictSatellites(SState& state, const SModel& model,
                        const std::vector<SChannelGroup>& channels, const SReception& reception) {
    for (const ESystem system : {ESystem::gps, ESystem::glonass, ESystem::sbas}) {
        const bool isOff = reception.isStarting ||
                           (system == ESystem::glonass && !model.hasGLONASS) ||
                           (system == ESystem::sbas && !reception.isSBASOn);
        KeepHighest(state.satellites, system, isOff ? 0 : CountChannels(system, channels));
    }
    if (!model.hasL2) {
        for (SSatellite& each : state.satellites) {
            each.cn0L2 = 0.0F;
        }
    }
}

/// What a log has when there is no solution: zeros.
SSolution NoSolution(std::uint8_t tracked) {
    SSolution solution;
    solution.status = kInsufficientObservations;
    solution.satellitesTracked = tracked;
    return solution;
}

void Recount(SSolution& solution, std::uint8_t tracked, std::uint8_t used) {
    solution.satellitesTracked = tracked;
    solution.satellitesUsed = std::min(solution.satellitesUsed, used);
}

void Loosen(SSolution& solution) {
    solution.type = Novatel::PositionType::kNarrowFloat;
    solution.deviationX *= kFloatFactor;
    solution.deviationY *= kFloatFactor;
    solution.deviationZ *= kFloatFactor;
}

} // namespace

/// G and R stand for GLONASS and RTK, an L behind the first letter for the L band.
SModel ModelNamed(std::string_view name) {
    const auto has = [&](char letter) { return name.find(letter) != std::string_view::npos; };
    SModel model;
    const bool isOEMStar = name.starts_with("LX");
    model.hasGLONASS = has('G');
    model.hasRTK = has('R');
    model.isPDPOnAtFirst = isOEMStar;
    model.hasL2 = !isOEMStar && (!name.starts_with("L1") || name.starts_with("L12"));
    const std::size_t count = model.hasGLONASS ? std::size(kShared) : kSetsWithoutGLONASS;
    for (std::size_t number = 0; number < count; ++number) {
        SShares shares = kShared[number];
        if (number == 0 && !isOEMStar) {
            shares = kWholeCard;
            shares.glonass = model.hasGLONASS ? shares.glonass : 0;
            shares.lBand = name.find('L', 1) != std::string_view::npos ? shares.lBand : 0;
        }
        model.channelSets.push_back(Groups(shares, model.hasL2));
    }
    return model;
}

void Restrict(SState& state, const SModel& model, const std::vector<SChannelGroup>& channels,
              const SReception& reception) {
    RestrictSatellites(state, model, channels, reception);
    std::uint8_t tracked = 0;
    std::uint8_t used = 0;
    for (const SSatellite& each : state.satellites) {
        tracked = static_cast<std::uint8_t>(tracked + (each.cn0L1 > 0.0F ? 1 : 0));
        used = static_cast<std::uint8_t>(used + (each.isUsed ? 1 : 0));
    }
    for (SSolution* solution : {&state.pseudorange, &state.rtk, &state.pdp}) {
        Recount(*solution, tracked, used);
        if (reception.isStarting) {
            *solution = NoSolution(tracked);
        }
    }
    if (!model.hasRTK) {
        state.rtk = NoSolution(tracked);
    } else if (reception.isRTKConverging &&
               state.rtk.type == Novatel::PositionType::kNarrowInteger) {
        Loosen(state.rtk);
    }
    if (!reception.isPDPOn) {
        state.pdp = NoSolution(tracked);
    } else if (reception.isPDPConverging) {
        state.pdp = state.pseudorange;
    }
}

} // namespace Sim
