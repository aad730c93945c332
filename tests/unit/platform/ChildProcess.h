// Runs a part of a test in a process of its own, for what ends a process or happens at its end.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

struct SChildEnd {
    int status = 0;            ///< as waitpid gives it
    std::string standardError; ///< all that was written to it

    bool HasExitedWith(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
    bool HasDiedOf(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
};

/// Runs `body` in a forked child, which ends with exit(0) after it, or dies of SIGALRM when it has
/// not ended after 30 seconds.
inline SChildEnd RunInChild(const std::function<void()>& body) {
    SChildEnd end;
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) {
        return end;
    }
    std::fflush(nullptr); // or the child would write it once more
    const pid_t child = fork();
    if (child == 0) {
        alarm(30);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        body();
        std::exit(0);
    }
    close(ends[1]);
    char buffer[4096];
    for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
        end.standardError.append(buffer, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    waitpid(child, &end.status, 0);
    return end;
}
