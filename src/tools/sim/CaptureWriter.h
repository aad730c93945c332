// Writes what the receiver's first port says to a file, as fast as it goes.
#pragma once

#include "Options.h"

namespace Sim {

/// The program's exit status; a failure is told on standard error.
int WriteCapture(const SOptions& options, const std::vector<std::string>& commands);

} // namespace Sim
