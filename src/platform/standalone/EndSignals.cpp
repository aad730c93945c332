#include "platform/EndSignals.h"

#include <initializer_list>

namespace Core::Utilities {

namespace {

volatile std::sig_atomic_t s_isAskedToEnd = 0;

void End(int) {
    s_isAskedToEnd = 1;
}

} // namespace

sigset_t CatchEndSignals() {
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

bool IsAskedToEnd() {
    return s_isAskedToEnd != 0;
}

} // namespace Core::Utilities
