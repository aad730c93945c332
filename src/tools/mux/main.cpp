// corvane-mux: owns serial devices and hands them out as the sockets of logical ports.

#include "mux/CommandLine.h"
#include "mux/Multiplexer.h"
#include "platform/DebugPrint.h"
#include "platform/Process.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t s_shallEnd = 0;

void End(int) {
    s_shallEnd = 1;
}

/// They come only while the loop waits, so that none is missed. Returns those that were blocked.
sigset_t CatchEndings() {
    sigset_t endings;
    sigset_t before;
    sigemptyset(&endings);
    struct sigaction action {};
    action.sa_handler = End;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&endings, number);
        sigaction(number, &action, nullptr);
    }
    sigprocmask(SIG_BLOCK, &endings, &before);
    return before;
}

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
    const sigset_t blocked = CatchEndings();
    Mux::CMultiplexer multiplexer(settings);
    if (!multiplexer.Start()) {
        deprintf("corvane-mux: not one port can be served\n");
        return ToInt(Mux::EStatus::failed);
    }
    multiplexer.Run(s_shallEnd, blocked);
    return ToInt(Mux::EStatus::ended);
}
