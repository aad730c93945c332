#include "platform/MPISocketConnection.h"

#include "JSONText.h"
#include "JSONValue.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

bool MayTryAgain(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

MPISocketConnectionC::~MPISocketConnectionC() {
    close(m_descriptor);
}

bool MPISocketConnectionC::Receive() {
    std::array<char, 16384> chunk;
    const ssize_t count = recv(m_descriptor, chunk.data(), chunk.size(), 0);
    if (count > 0) {
        m_input.append(chunk.data(), static_cast<std::size_t>(count));
        return true;
    }
    if (count == 0) {
        errno = 0;
        return false;
    }
    return MayTryAgain(errno);
}

MPISocketConnectionC::ELine MPISocketConnectionC::TakeLine(std::string& line) {
    const std::size_t end = m_input.find('\n', m_searched);
    const bool isWhole = end != std::string::npos;
    const std::size_t length = (isWhole ? end : m_input.size()) - m_taken;
    if (length > kMaxLine) {
        return ELine::tooLong;
    }
    if (isWhole) {
        line.assign(m_input, m_taken, length);
        m_taken = m_searched = end + 1;
        return ELine::whole;
    }
    m_input.erase(0, m_taken);
    m_taken = 0;
    m_searched = m_input.size();
    return ELine::partial;
}

void MPISocketConnectionC::Queue(std::string_view line) {
    std::string& target = m_isInLine ? m_behind : m_output;
    target += line;
    target += '\n';
}

void MPISocketConnectionC::QueuePart(std::string_view part) {
    m_isInLine = true;
    m_output += part;
}

void MPISocketConnectionC::EndLine() {
    m_output += '\n';
    m_output += m_behind;
    std::string().swap(m_behind);
    m_isInLine = false;
}

void MPISocketConnectionC::PostCallback(const std::string& method, const BListC& params) {
    std::string text = R"({"jsonrpc":"2.0","method":)";
    JSONText::AppendString(text, method);
    text += R"(,"params":)";
    JSONValue::Append(text, params);
    text += '}';
    Queue(text);
}

bool MPISocketConnectionC::Send() {
    while (HasWaitingBytes()) {
        const ssize_t count =
            send(m_descriptor, m_output.data() + m_sent, m_output.size() - m_sent, MSG_NOSIGNAL);
        if (count < 0) {
            const int failure = errno;
            if (m_sent > m_output.size() / 2) {
                m_output.erase(0, m_sent);
                m_sent = 0;
            }
            return MayTryAgain(failure);
        }
        m_sent += static_cast<std::size_t>(count);
    }
    m_output.clear();
    m_sent = 0;
    return true;
}

void MPISocketConnectionC::ReleaseMemory() {
    m_input.shrink_to_fit();
    m_output.shrink_to_fit();
}

void MPISocketConnectionC::ReleaseEmptyBuffers() {
    if (m_taken == m_input.size()) {
        std::string().swap(m_input); // assigning would keep the memory
        m_taken = m_searched = 0;
    }
    if (!HasWaitingBytes()) {
        std::string().swap(m_output);
        m_sent = 0;
    }
}

bool MPISocketConnectionC::Wait(short events, Core::MonotonicTime deadline) const {
    pollfd watched = {m_descriptor, events, 0};
    while (true) {
        const Core::Time left = deadline - Core::MonotonicTime::Now();
        if (left <= Core::Time()) {
            return false;
        }
        // Rounded up, so that the last fraction of a millisecond is not spent in a busy loop.
        const int milliseconds = static_cast<int>(left.AsNanoseconds() / 1'000'000) + 1;
        if (poll(&watched, 1, milliseconds) > 0) {
            return true;
        }
    }
}
