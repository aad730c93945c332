// What a receiver of a given model, with its settings, makes of the sky.
#pragma once

#include "LogEncoder.h"

#include <string_view>
#include <vector>

namespace Sim {

struct SModel {
    bool hasGLONASS = false;
    bool hasRTK = false;
    bool hasL2 = false;
    bool isPDPOnAtFirst = false;
    /// The sets that SELECTCHANCONFIG chooses from, the factory's first.
    std::vector<std::vector<SChannelGroup>> channelSets;
};

/// By the letters of the model's name, as OEMV and OEMStar have them.
SModel ModelNamed(std::string_view name);

/// What holds at a moment.
struct SReception {
    bool isStarting = false; ///< nothing is found yet
    bool isSBASOn = false;
    bool isPDPOn = false;
    bool isRTKConverging = false; ///< the filter has been restarted: no integer solution yet
    bool isPDPConverging = false; ///< nothing is smoothed yet
};

/// Takes away from the state what this receiver does not track or does not compute.
void Restrict(SState& state, const SModel& model, const std::vector<SChannelGroup>& channels,
              const SReception& reception);

} // namespace Sim
