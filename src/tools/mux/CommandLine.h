// The command line of corvane-mux.
#pragma once

#include "mux/Settings.h"

#include <optional>

namespace Mux {

/// The exit statuses.
enum class EStatus { ended = 0, failed = 1, usage = 2 };

/// What the command line and the configuration file that it names say. Otherwise the status to end
/// with: the help or the version was printed, or what is wrong was told on standard error.
std::optional<EStatus> ReadCommandLine(int argc, const char* const argv[], SSettings& settings);

} // namespace Mux
