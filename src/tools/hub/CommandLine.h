// The hub's command line.
#pragma once

#include "hub/Settings.h"

#include <optional>

namespace Hub {

/// How the program ends.
enum class EStatus {
    ended = 0,  ///< by a signal, or after help or version
    failed = 1, ///< it cannot do what the settings ask for
    usage = 2,  ///< the command line or the settings file is wrong
};

/// Reads the settings from their file and the command line, which wins. The status to end with when
/// there is nothing to run: help was asked for, or something is wrong, which is told.
std::optional<EStatus> ReadCommandLine(int argc, const char* const argv[], SSettings& settings);

} // namespace Hub
