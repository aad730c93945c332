#include "platform/EndSignals.h"

#include "ChildProcess.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/select.h>

using Core::Utilities::CatchEndSignals;
using Core::Utilities::IsAskedToEnd;

namespace {

constexpr int kYes = 3;
constexpr int kNo = 4;

/// Whether `check` holds in a process of its own, whose signals are those of any program.
bool Holds(const std::function<bool()>& check) {
    const SChildEnd end = RunInChild([&] { std::_Exit(check() ? kYes : kNo); });
    EXPECT_TRUE(end.HasExitedWith(kYes) || end.HasExitedWith(kNo)) << end.status;
    return end.HasExitedWith(kYes);
}

/// False when the wait was interrupted.
bool Wait(const sigset_t& blocked) {
    const timespec atOnce = {0, 0};
    return pselect(0, nullptr, nullptr, nullptr, &atOnce, &blocked) == 0;
}

} // namespace

TEST(EndSignals, are_taken_only_while_the_program_waits) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        EXPECT_TRUE(Holds([number] {
            const sigset_t blocked = CatchEndSignals();
            std::raise(number);
            const bool isTakenEarly = IsAskedToEnd();
            const bool isInterrupted = !Wait(blocked) && errno == EINTR;
            return !isTakenEarly && isInterrupted && IsAskedToEnd();
        })) << number;
    }
}

TEST(EndSignals, that_do_not_come_end_nothing) {
    EXPECT_TRUE(Holds([] {
        const sigset_t blocked = CatchEndSignals();
        return Wait(blocked) && !IsAskedToEnd();
    }));
}

TEST(EndSignals, leave_others_blocked_as_they_were) {
    EXPECT_TRUE(Holds([] {
        sigset_t others;
        sigemptyset(&others);
        sigaddset(&others, SIGUSR1);
        sigprocmask(SIG_BLOCK, &others, nullptr);
        const sigset_t blocked = CatchEndSignals();
        return sigismember(&blocked, SIGUSR1) == 1 && sigismember(&blocked, SIGUSR2) == 0 &&
               sigismember(&blocked, SIGTERM) == 0 && sigismember(&blocked, SIGINT) == 0 &&
               sigismember(&blocked, SIGHUP) == 0;
    }));
}
