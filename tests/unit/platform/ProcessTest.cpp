#include "platform/Process.h"

#include "ChildProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

using Core::Utilities::PrepareProcess;
using Core::Utilities::SetProcessPriority;

namespace {

constexpr int kYes = 3;
constexpr int kNo = 4;

/// Whether `check` holds in a process of its own.
bool Holds(const std::function<bool()>& check) {
    const SChildEnd end = RunInChild([&] { std::_Exit(check() ? kYes : kNo); });
    EXPECT_TRUE(end.HasExitedWith(kYes) || end.HasExitedWith(kNo)) << end.status;
    return end.HasExitedWith(kYes);
}

bool Runs(int policy, int priority) {
    sched_param parameters = {};
    return sched_getscheduler(0) == policy && sched_getparam(0, &parameters) == 0 &&
           parameters.sched_priority == priority;
}

void GiveUpPrivileges() {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0)) {
        std::_Exit(kNo + 1);
    }
}

bool IsNull(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) &&
           status.st_rdev == makedev(1, 3);
}

} // namespace

TEST(ProcessPriority, is_what_it_says_it_is) {
    // Granted to root, refused to others: either way the answer tells what happened.
    EXPECT_TRUE(Holds([] {
        const bool isGranted = SetProcessPriority(49, 1) != 0;
        return isGranted ? Runs(SCHED_RR, 49) : Runs(SCHED_OTHER, 0);
    }));
}

TEST(ProcessPriority, is_granted_to_root) {
    if (!Holds([] {
            sched_param parameters = {};
            parameters.sched_priority = 1;
            return sched_setscheduler(0, SCHED_RR, &parameters) == 0;
        })) {
        GTEST_SKIP() << "this user may not raise its priority";
    }
    EXPECT_TRUE(Holds([] { return SetProcessPriority(1, 1) != 0 && Runs(SCHED_RR, 1); }));
    EXPECT_TRUE(Holds([] { return SetProcessPriority(99, 1) != 0 && Runs(SCHED_RR, 99); }));
    EXPECT_TRUE(Holds([] {
        return SetProcessPriority(49, 1) != 0 && SetProcessPriority(49, 0) != 0 &&
               Runs(SCHED_OTHER, 0);
    }));
}

TEST(ProcessPriority, is_refused_without_the_privilege) {
    EXPECT_TRUE(Holds([] {
        GiveUpPrivileges();
        return SetProcessPriority(49, 1) == 0 && Runs(SCHED_OTHER, 0);
    }));
}

TEST(ProcessPriority, of_ordinary_time_sharing_takes_no_privilege_and_no_number) {
    EXPECT_TRUE(Holds([] {
        GiveUpPrivileges();
        return SetProcessPriority(49, 0) != 0 && Runs(SCHED_OTHER, 0);
    }));
}

TEST(ProcessPriority, that_does_not_exist_is_refused) {
    EXPECT_TRUE(Holds([] { return SetProcessPriority(0, 1) == 0; }));
    EXPECT_TRUE(Holds([] { return SetProcessPriority(-1, 1) == 0; }));
    EXPECT_TRUE(Holds([] { return SetProcessPriority(100, 1) == 0; }));
    EXPECT_TRUE(Holds([] { return SetProcessPriority(49, 2) == 0; }));
    EXPECT_TRUE(Holds([] { return SetProcessPriority(49, -1) == 0; }));
}

TEST(PrepareProcess, opens_closed_standard_descriptors_on_nothing) {
    EXPECT_TRUE(Holds([] {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
        PrepareProcess();
        return IsNull(STDIN_FILENO) && IsNull(STDOUT_FILENO) && IsNull(STDERR_FILENO);
    }));
    EXPECT_TRUE(Holds([] {
        const bool wasNull = IsNull(STDERR_FILENO);
        close(STDOUT_FILENO);
        PrepareProcess();
        return IsNull(STDOUT_FILENO) && !wasNull && !IsNull(STDERR_FILENO);
    }));
}

TEST(PrepareProcess, keeps_the_standard_descriptors_that_are_open) {
    const SChildEnd end = RunInChild([] {
        PrepareProcess();
        static_cast<void>(!write(STDERR_FILENO, "here\n", 5));
    });
    EXPECT_EQ(end.standardError, "here\n");
}

TEST(PrepareProcess, makes_a_reader_that_has_gone_harmless) {
    const SChildEnd end = RunInChild([] {
        std::signal(SIGPIPE, SIG_DFL);
        PrepareProcess();
        int ends[2] = {-1, -1};
        static_cast<void>(!pipe(ends));
        close(ends[0]);
        std::_Exit(write(ends[1], "a", 1) < 0 && errno == EPIPE ? kYes : kNo);
    });
    EXPECT_TRUE(end.HasExitedWith(kYes)) << end.status;
}
