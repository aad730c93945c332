#include "platform/WriteTail.h"

#include <cerrno>
#include <unistd.h>

namespace Core::IO {

namespace {

/// Writes until all is gone or the descriptor takes no more for now; errno tells how it failed.
struct SAttempt {
    std::size_t written = 0;
    bool failed = false;
};

SAttempt WriteWhatGoes(int descriptor, const void* bytes, std::size_t count) {
    const auto* next = static_cast<const char*>(bytes);
    SAttempt attempt;
    while (attempt.written < count) {
        const ssize_t result = ::write(descriptor, next + attempt.written, count - attempt.written);
        if (result > 0) {
            attempt.written += static_cast<std::size_t>(result);
        } else if (result == 0 || errno == EAGAIN || errno == EWOULDBLOCK) {
            break;
        } else if (errno != EINTR) {
            attempt.failed = true;
            break;
        }
    }
    return attempt;
}

} // namespace

WriteTail::EResult WriteTail::Write(int descriptor, const std::uint8_t* bytes, std::size_t count) {
    if (const EResult result = Continue(descriptor); result != EResult::ok) {
        return result;
    }
    if (count > kCapacity - m_waiting.size()) {
        return EResult::refused;
    }
    SAttempt attempt;
    if (m_waiting.empty()) {
        attempt = WriteWhatGoes(descriptor, bytes, count);
        if (attempt.failed) {
            return EResult::lost;
        }
        m_lastProgress = MonotonicTime::Now();
    }
    m_waiting.append(bytes + attempt.written, bytes + count);
    return EResult::ok;
}

WriteTail::EResult WriteTail::Continue(int descriptor) {
    if (m_waiting.empty()) {
        return EResult::ok;
    }
    const SAttempt attempt = WriteWhatGoes(descriptor, m_waiting.data(), m_waiting.size());
    if (attempt.failed) {
        return EResult::lost;
    }
    m_waiting.erase(0, attempt.written);
    const MonotonicTime now = MonotonicTime::Now();
    if (attempt.written > 0) {
        m_lastProgress = now;
    } else if (now - m_lastProgress >= kStallLimit) {
        errno = ETIMEDOUT;
        return EResult::lost;
    }
    return EResult::ok;
}

} // namespace Core::IO
