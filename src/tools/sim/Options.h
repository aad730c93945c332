// The command line of the simulator.
#pragma once

#include "Faults.h"
#include "Receiver.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Sim {

struct SOptions {
    SReceiverSettings receiver;
    SFaultSettings faults;
    double speed = 1.0; ///< of the receiver's clock
    std::string folder = "/tmp/corvane-sim";
    std::vector<EPort> ports = {kPorts.begin(), kPorts.end()};
    std::string captureFile;              ///< empty for ports
    std::string captureFolder;            ///< what the ports say is also kept there; may be empty
    std::optional<Milliseconds> duration; ///< of the receiver's clock; without end by default
    std::optional<std::string> commandsFile; ///< given to COM1 at the start
    int verbosity = 1;                       ///< 0 errors, 1 what is there, 2 what happens
};

/// Nothing when the program is to end at once, with that status: after help and version, and when
/// the command line is wrong, which is told on standard error.
std::optional<SOptions> ParseOptions(int argc, const char* const argv[], int& status);

} // namespace Sim
