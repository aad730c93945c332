// The state as Prometheus reads it (text format 0.0.4).
#pragma once

#include "hub/state/State.h"

#include <string>

namespace Hub {

/// `uptime` of the hub in seconds.
std::string MetricsText(const CState& state, const SNow& now, double uptime);

} // namespace Hub
