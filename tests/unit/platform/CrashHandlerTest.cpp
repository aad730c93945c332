#include "platform/Process.h"

#include "ChildProcess.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

using Core::Utilities::CrashHandler;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct SFatalSignal {
    int number;
    const char* name;
    const char* description;
};

constexpr SFatalSignal kFatalSignals[] = {
    {SIGSEGV, "SIGSEGV", "Segmentation fault"},
    {SIGBUS, "SIGBUS", "Bus error"},
    {SIGFPE, "SIGFPE", "Floating point exception"},
    {SIGILL, "SIGILL", "Illegal instruction"},
    {SIGABRT, "SIGABRT", "Aborted"},
    {SIGSYS, "SIGSYS", "Bad system call"},
};

void LeaveNoCoreFile() {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

/// User-mode emulation tells of fatal signals on standard error by itself, and waits for that.
bool IsUnderAnEmulator() {
    const SChildEnd end = RunInChild([] {
        LeaveNoCoreFile();
        std::signal(SIGILL, SIG_DFL); // a sanitizer would tell, too
        raise(SIGILL);
    });
    return !end.standardError.empty();
}

/// The end of a process with the handler enabled.
SChildEnd EndOf(const std::function<void()>& body) {
    return RunInChild([&] {
        LeaveNoCoreFile();
        CrashHandler::Get().Enable("corvane");
        body();
    });
}

void WriteToForbiddenPage() {
    void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    *static_cast<volatile char*>(page) = 1;
}

/// Deep enough for any stack, each level with a kilobyte that cannot be optimised away.
[[gnu::noinline]] int Descend(int depth) {
    volatile char room[1024];
    room[0] = static_cast<char>(depth);
    return depth == 0 ? room[0] : Descend(depth - 1) + room[0];
}

/// From now on every write() raises SIGSYS. False where the system has no such thing.
bool ForbidWriting() {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_write, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {std::size(steps), steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

bool IsDefault(int signal) {
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

class FatalSignal : public testing::TestWithParam<SFatalSignal> {};

} // namespace

TEST_P(FatalSignal, is_told_with_a_backtrace_and_then_taken) {
    const SChildEnd end = EndOf([] { raise(GetParam().number); });
    EXPECT_TRUE(end.HasDiedOf(GetParam().number)) << end.status;
    const std::string head = "corvane: fatal signal " + std::to_string(GetParam().number) + " (" +
                             GetParam().description + "), backtrace:\n";
    EXPECT_THAT(end.standardError, StartsWith(head));
    EXPECT_GT(std::count(end.standardError.begin(), end.standardError.end(), '\n'), 2)
        << end.standardError;
    EXPECT_THAT(end.standardError, HasSubstr("[0x"));
}

INSTANTIATE_TEST_SUITE_P(CrashHandler, FatalSignal, testing::ValuesIn(kFatalSignals),
                         [](const testing::TestParamInfo<SFatalSignal>& fatal) {
                             return fatal.param.name;
                         });

TEST(CrashHandler, tells_of_a_real_fault) {
    const SChildEnd end = EndOf(WriteToForbiddenPage);
    EXPECT_TRUE(end.HasDiedOf(SIGSEGV)) << end.status;
    EXPECT_THAT(end.standardError, StartsWith("corvane: fatal signal 11 (Segmentation fault)"));
}

TEST(CrashHandler, tells_of_an_abort) {
    const SChildEnd end = EndOf([] { std::abort(); });
    EXPECT_TRUE(end.HasDiedOf(SIGABRT)) << end.status;
    EXPECT_THAT(end.standardError, StartsWith("corvane: fatal signal 6 (Aborted)"));
}

TEST(CrashHandler, tells_of_a_stack_that_overflows) {
    const SChildEnd end = EndOf([] {
        const rlimit small = {1024 * 1024, 1024 * 1024};
        setrlimit(RLIMIT_STACK, &small);
        std::_Exit(Descend(1'000'000) & 1);
    });
    EXPECT_TRUE(end.HasDiedOf(SIGSEGV)) << end.status;
    EXPECT_THAT(end.standardError, StartsWith("corvane: fatal signal 11 (Segmentation fault)"));
}

TEST(CrashHandler, does_not_wait_for_a_reader_that_has_stopped) {
    if (IsUnderAnEmulator()) {
        GTEST_SKIP() << "the emulator waits, whatever the handler does";
    }
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const std::string filler(4096, 'x');
    while (write(ends[1], filler.data(), filler.size()) > 0) {
    }
    fcntl(ends[1], F_SETFL, 0);
    const SChildEnd end = EndOf([&] {
        dup2(ends[1], STDERR_FILENO);
        raise(SIGSEGV);
    });
    EXPECT_TRUE(end.HasDiedOf(SIGSEGV)) << end.status;
    EXPECT_EQ(fcntl(ends[1], F_GETFL) & O_NONBLOCK, 0) << "others share that pipe";
    close(ends[0]);
    close(ends[1]);
}

TEST(CrashHandler, lets_the_first_signal_count_when_telling_of_it_raises_another) {
    constexpr int kCannotForbid = 9;
    const SChildEnd end = EndOf([] {
        if (!ForbidWriting()) {
            std::_Exit(kCannotForbid);
        }
        raise(SIGSEGV);
    });
    if (end.HasExitedWith(kCannotForbid)) {
        GTEST_SKIP() << "this system cannot forbid a system call";
    }
    EXPECT_TRUE(end.HasDiedOf(SIGSEGV)) << end.status;
}

TEST(CrashHandler, tells_under_the_last_name_it_was_given_cut_to_a_line) {
    const SChildEnd end = EndOf([] {
        CrashHandler::Get().Enable(std::string(1000, 'n').c_str());
        raise(SIGBUS);
    });
    EXPECT_THAT(end.standardError, StartsWith(std::string(63, 'n') + ": fatal signal 7 ("));
}

TEST(CrashHandler, says_nothing_when_the_process_ends_as_it_should) {
    const SChildEnd end = EndOf([] {});
    EXPECT_TRUE(end.HasExitedWith(0));
    EXPECT_EQ(end.standardError, "");
}

TEST(CrashHandler, gives_the_default_actions_back_at_exit) {
    const SChildEnd end = RunInChild([] {
        // Registered before the handler is constructed, so run after it is destroyed.
        std::atexit([] {
            const bool isDefault =
                std::all_of(std::begin(kFatalSignals), std::end(kFatalSignals),
                            [](const SFatalSignal& fatal) { return IsDefault(fatal.number); });
            std::_Exit(isDefault ? 3 : 4);
        });
        CrashHandler::Get().Enable("corvane");
        std::exit(IsDefault(SIGSEGV) ? 5 : 0);
    });
    EXPECT_TRUE(end.HasExitedWith(3)) << end.status;
}
