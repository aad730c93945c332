// Commands that are given to the receiver's first port at the start.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Sim {

/// The lines of the file; nothing when it cannot be read.
std::optional<std::vector<std::string>> ReadCommands(const std::string& path);

/// The logs that the daemon's configuration asks for unless it is set otherwise, all on the port
/// that takes the commands.
std::vector<std::string> UsualCommands();

} // namespace Sim
