// What a program sets for its whole process: its priority and what it prints when it crashes.
#pragma once

namespace Core::Utilities {

/// Asks the kernel for a scheduling priority. Class 1 is real time (SCHED_RR, 1 to 99); class 0 is
/// ordinary time-sharing, where `priority` is ignored. Returns 0 when refused (it takes
/// CAP_SYS_NICE or root) or when the arguments are not valid, non-zero on success.
int SetProcessPriority(int priority, int priorityClass);

/// Tells of a fatal signal before the process dies of it: program, signal and a backtrace on
/// standard error, then the signal's default action.
class CrashHandler {
public:
    /// The one handler of the process.
    static CrashHandler& Get();

    /// From now on fatal signals are told under this program name.
    void Enable(const char* program);

    CrashHandler(const CrashHandler&) = delete;
    CrashHandler& operator=(const CrashHandler&) = delete;

private:
    CrashHandler() = default;
    ~CrashHandler();
};

/// Descriptors 0 to 2 that are closed are opened on /dev/null, so that no port becomes one of them,
/// and SIGPIPE is ignored. To be called first in main.
void PrepareProcess();

} // namespace Core::Utilities
