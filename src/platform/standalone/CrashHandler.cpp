#include "CrashBacktrace.h"
#include "platform/Process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <execinfo.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace Core::Utilities {

namespace {

struct SFatalSignal {
    int number;
    std::string_view description;
};

constexpr std::array<SFatalSignal, 6> kFatalSignals = {{
    {SIGSEGV, "Segmentation fault"},
    {SIGBUS, "Bus error"},
    {SIGFPE, "Floating point exception"},
    {SIGILL, "Illegal instruction"},
    {SIGABRT, "Aborted"},
    {SIGSYS, "Bad system call"},
}};

constexpr std::size_t kLongestProgram = 64;
constexpr std::size_t kDeepestBacktrace = 64;
constexpr std::size_t kAlternateStackSize = 64 * 1024;

// At fixed places, since a signal handler must not allocate. The alternate stack serves the thread
// that enabled the handler, so that it can tell of its own stack's overflow, too.
std::array<char, kLongestProgram> s_program = {};
alignas(16) std::array<char, kAlternateStackSize> s_alternateStack;
stack_t s_formerStack = {};
bool s_isEnabled = false;
volatile std::sig_atomic_t s_signal = 0;     // the first that came
volatile std::sig_atomic_t s_errorFlags = 0; // of standard error, as they were when it came

/// Only what POSIX allows in a signal handler; what standard error does not take is lost.
void Tell(std::string_view text) {
    while (!text.empty()) {
        const ssize_t taken = write(STDERR_FILENO, text.data(), text.size());
        if (taken <= 0 && errno != EINTR) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(taken, 0)));
    }
}

void TellNumber(int number) {
    const std::array<char, 2> digits = {static_cast<char>('0' + number / 10),
                                        static_cast<char>('0' + number % 10)};
    Tell(number < 10 ? std::string_view(&digits[1], 1) : std::string_view(digits.data(), 2));
}

std::string_view Description(int signal) {
    for (const SFatalSignal& fatal : kFatalSignals) {
        if (fatal.number == signal) {
            return fatal.description;
        }
    }
    return "unknown";
}

void TellBacktrace(void* context) {
    std::array<void*, kDeepestBacktrace> frames;
    const std::size_t count = CrashBacktrace::Collect(frames, context);
    backtrace_symbols_fd(frames.data(), static_cast<int>(count), STDERR_FILENO);
}

void Tell(int signal, void* context) {
    Tell(s_program.data());
    Tell(": fatal signal ");
    TellNumber(signal);
    Tell(" (");
    Tell(Description(signal));
    Tell("), backtrace:\n");
    TellBacktrace(context);
}

/// Of the signal's default action, which is in force again (SA_RESETHAND).
void Die(int signal) {
    fcntl(STDERR_FILENO, F_SETFL, static_cast<int>(s_errorFlags));
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, signal);
    raise(signal);
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

void HandleFatalSignal(int signal, siginfo_t*, void* context) {
    // A second one comes of telling about a damaged stack: it is the first that counts.
    if (s_signal == 0) {
        s_signal = signal;
        s_errorFlags = fcntl(STDERR_FILENO, F_GETFL);
        // A reader of standard error that has stopped reading must not keep us from dying.
        fcntl(STDERR_FILENO, F_SETFL, static_cast<int>(s_errorFlags) | O_NONBLOCK);
        Tell(signal, context);
    }
    Die(static_cast<int>(s_signal));
}

void SetAlternateStack() {
    stack_t stack = {};
    stack.ss_sp = s_alternateStack.data();
    stack.ss_size = s_alternateStack.size();
    sigaltstack(&stack, &s_formerStack);
}

} // namespace

CrashHandler& CrashHandler::Get() {
    static CrashHandler handler;
    return handler;
}

void CrashHandler::Enable(const char* program) {
    const std::size_t length = std::min(std::strlen(program), s_program.size() - 1);
    std::fill(std::copy_n(program, length, s_program.begin()), s_program.end(), '\0');
    if (s_isEnabled) {
        return;
    }
    s_isEnabled = true;
    CrashBacktrace::Prepare();
    SetAlternateStack();
    struct sigaction action = {};
    action.sa_sigaction = HandleFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const SFatalSignal& fatal : kFatalSignals) {
        sigaction(fatal.number, &action, nullptr);
    }
}

CrashHandler::~CrashHandler() {
    if (!s_isEnabled) {
        return;
    }
    for (const SFatalSignal& fatal : kFatalSignals) {
        std::signal(fatal.number, SIG_DFL);
    }
    sigaltstack(&s_formerStack, nullptr);
    s_isEnabled = false;
}

} // namespace Core::Utilities
