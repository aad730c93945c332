#include "TraceSink.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Hands `text` on by `writeSome` until all is taken or something is refused.
template <typename F>
void WriteAll(std::string_view text, F writeSome) {
    while (!text.empty()) {
        const ssize_t taken = writeSome(text);
        if (taken > 0) {
            text.remove_prefix(static_cast<std::size_t>(taken));
        } else if (taken == 0 || errno != EINTR) {
            return;
        }
    }
}

void WriteDirectly(int descriptor, std::string_view text) {
    WriteAll(text, [descriptor](std::string_view rest) {
        return write(descriptor, rest.data(), rest.size());
    });
}

void Send(int descriptor, std::string_view text) {
    WriteAll(text, [descriptor](std::string_view rest) {
        return send(descriptor, rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    });
}

/// A pipe that polls writable takes PIPE_BUF bytes at once.
void WriteWhilePollSaysSo(int descriptor, std::string_view text) {
    WriteAll(text, [descriptor](std::string_view rest) -> ssize_t {
        pollfd state = {descriptor, POLLOUT, 0};
        const int ready = poll(&state, 1, 0);
        if (ready <= 0) {
            return ready;
        }
        return write(descriptor, rest.data(), std::min<std::size_t>(rest.size(), PIPE_BUF));
    });
}

/// A pipe or terminal is shared with other processes: its non-blocking flag is not ours to set, and
/// between a poll and a write another may fill it. So it is opened once more, non-blocking.
void WriteToShared(int descriptor, std::string_view text) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const int own = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own < 0) {
        WriteWhilePollSaysSo(descriptor, text);
        return;
    }
    WriteDirectly(own, text);
    close(own);
}

void WriteWithoutWaiting(int descriptor, std::string_view text) {
    const int flags = fcntl(descriptor, F_GETFL);
    struct stat status = {};
    if (flags < 0 || fstat(descriptor, &status) != 0) {
        return;
    }
    if ((flags & O_NONBLOCK) != 0 || S_ISREG(status.st_mode)) {
        WriteDirectly(descriptor, text);
    } else if (S_ISSOCK(status.st_mode)) {
        Send(descriptor, text);
    } else {
        WriteToShared(descriptor, text);
    }
}

} // namespace

void CTraceSink::Write(std::string_view text) {
    if (text.empty()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    const bool isWholeLine = m_isAtLineStart && text.ends_with('\n');
    m_isAtLineStart = text.ends_with('\n');
    if (m_isFolding && isWholeLine) {
        WriteWithoutWaiting(m_descriptor, m_lines.Fold(text, Core::MonotonicTime::Now()));
    } else {
        WriteWithoutWaiting(m_descriptor, text);
    }
}

void CTraceSink::StopFolding() {
    const std::lock_guard lock(m_mutex);
    m_isFolding = false;
    const std::string untold = m_lines.TakeUntold();
    if (!untold.empty()) {
        WriteWithoutWaiting(m_descriptor, m_isAtLineStart ? untold : '\n' + untold);
    }
}
