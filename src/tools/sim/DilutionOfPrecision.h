// How the geometry of the used satellites turns errors of ranges into errors of position and time.
#pragma once

#include "World.h"

#include <optional>
#include <vector>

namespace Sim {

struct SDilution {
    double geometric = 0.0;
    double position = 0.0;
    double horizontal = 0.0;
    double vertical = 0.0;
    double horizontalAndTime = 0.0;
    double time = 0.0;
};

/// Nothing for satellites that give no position.
std::optional<SDilution> DilutionOf(const std::vector<SSatellite>& satellites);

} // namespace Sim
