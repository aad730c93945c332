// The state as the JSON interface shows it (docs/hub-json.md).
#pragma once

#include "hub/state/State.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace Hub {

/// A solution without its age; members that it does not tell are null.
nlohmann::json SolutionJSON(const SSolution& solution, std::optional<double> geoid);

/// The satellites of the receiver's own sentences, without their age.
nlohmann::json SkyJSON(const CSkyView& view);

/// The live view.
std::string LiveText(const CState& state, const SNow& now);

/// The panel. `uptime` in seconds.
std::string PanelText(const CState& state, const SNow& now, double uptime);

} // namespace Hub
