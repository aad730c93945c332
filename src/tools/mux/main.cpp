// corvane-mux: owns serial devices and hands them out as the sockets of logical ports.

#include "mux/CommandLine.h"
#include "mux/Multiplexer.h"
#include "platform/DebugPrint.h"
#include "platform/EndSignals.h"
#include "platform/Process.h"

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
    multiplexer.Run(blocked);
    return ToInt(Mux::EStatus::ended);
}
