// corvane-hub: the controller's services on one ordinary Linux machine.

#include "hub/CommandLine.h"
#include "hub/Hub.h"
#include "platform/DebugPrint.h"
#include "platform/EndSignals.h"
#include "platform/Process.h"

#include <systemd/sd-daemon.h>

int main(int argc, char* argv[]) {
    Core::Utilities::PrepareProcess();
    Hub::SSettings settings;
    if (const auto status = Hub::ReadCommandLine(argc, argv, settings)) {
        return static_cast<int>(*status);
    }
    // Before any thread is made, so that none but the main loop hears of them.
    const sigset_t blocked = Core::Utilities::CatchEndSignals();
    Hub::CHub hub(settings);
    if (const std::string why = hub.Start(); !why.empty()) {
        deprintf("corvane-hub: %s\n", why.c_str());
        return static_cast<int>(Hub::EStatus::failed);
    }
    sd_notify(0, "READY=1"); // who publishes is taken from now on
    hub.Run(blocked);
    return static_cast<int>(Hub::EStatus::ended);
}
