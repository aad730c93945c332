#include "platform/Process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace Core::Utilities {

namespace {

constexpr int kTimeSharing = 0;
constexpr int kRealTime = 1;

bool SetScheduler(int policy, int priority) {
    sched_param parameters = {};
    parameters.sched_priority = priority;
    return sched_setscheduler(0, policy, &parameters) == 0;
}

} // namespace

int SetProcessPriority(int priority, int priorityClass) {
    switch (priorityClass) {
    case kTimeSharing:
        return SetScheduler(SCHED_OTHER, 0);
    case kRealTime:
        return SetScheduler(SCHED_RR, priority); // the kernel refuses what is not 1 to 99
    default:
        return 0;
    }
}

void PrepareProcess() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // In ascending order: open() returns the lowest that is free, which is this one.
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            open("/dev/null", O_RDWR);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace Core::Utilities
