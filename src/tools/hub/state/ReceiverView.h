// The receiver as its status values tell it.
#pragma once

#include "hub/state/State.h"

#include <nlohmann/json_fwd.hpp>

namespace Hub {

/// Member "receiver" of the panel; what has not been told is null.
nlohmann::json ReceiverJSON(const CState& state, const SNow& now);

} // namespace Hub
