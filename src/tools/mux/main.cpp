// corvane-mux: owns serial devices and hands them out as the sockets of logical ports.

#include "mux/CommandLine.h"
#include "mux/Multiplexer.h"
#include "platform/DebugPrint.h"
#include "platform/EndSignals.h"
#include "platform/Process.h"

#include <systemd/sd-daemon.h>

namespace {

int ToInt(Mux::EStatus status) {
    return static_cast<int>(status);
}

} // namespace

int main(int argc, char* argv[]) {
    Core::Utilities::PrepareProcess();
    Mux::SSettings settings;
    if (const auto status = Mux::ReadCommandLine(argc, argv, settings)) {
        return ToInt(*status);
    }
    const sigset_t blocked = Core::Utilities::CatchEndSignals();
    Mux::CMultiplexer multiplexer(settings);
    if (!multiplexer.Start()) {
        deprintf("corvane-mux: not one port can be served\n");
        return ToInt(Mux::EStatus::failed);
    }
    // The daemon shall find its ports when it is started next: what it writes to a port that is not
    // there is lost, and it looks again only when the port has been silent for long.
    sd_notify(0, "READY=1");
    multiplexer.Run(blocked);
    return ToInt(Mux::EStatus::ended);
}
