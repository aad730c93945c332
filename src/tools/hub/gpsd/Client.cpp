#include "hub/gpsd/Client.h"

#include "hub/gpsd/GPSDServer.h"
#include "hub/gpsd/Reports.h"
#include "hub/gpsd/Request.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace Hub::GPSD {

namespace {

bool MayTryAgain(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

CClient::~CClient() {
    ::close(m_descriptor);
}

int CClient::Descriptor() const {
    return m_state == EState::ended ? -1 : m_descriptor;
}

bool CClient::WantsToRead() const {
    return m_state == EState::leaving || (!m_hasWork && !m_hasInputEnded);
}

bool CClient::HasWork() const {
    return m_state == EState::open && m_hasWork && WaitingBytes() < kManyAnswers;
}

/// Work that is left wakes the loop as room to write does, so that it goes on at once.
bool CClient::WantsToWrite() const {
    return WaitingBytes() > 0 || HasWork();
}

void CClient::Service(bool readable, bool writable) {
    if (m_state == EState::leaving) {
        Drain();
    } else if (m_state == EState::open && readable && WantsToRead()) {
        Receive();
    }
    if (m_state != EState::ended && writable) {
        Flush();
    }
}

void CClient::Receive() {
    std::array<char, kMaxLine> chunk;
    const ssize_t count = ::recv(m_descriptor, chunk.data(), chunk.size(), 0);
    if (count > 0) {
        m_input.append(chunk.data(), static_cast<std::size_t>(count));
        m_hasWork = true;
    } else if (count == 0) {
        m_hasInputEnded = true;
        m_hasWork = true;
    } else if (!MayTryAgain(errno)) {
        m_state = EState::ended;
    }
}

bool CClient::Step() {
    std::string_view rest = m_input;
    if (IsLineTooLong(rest)) {
        Dismiss();
        return true;
    }
    const auto request = TakeRequest(rest, m_hasInputEnded);
    if (request && request->kind == ERequest::fromBrowser) {
        m_state = EState::ended; // no web page may read any of it
        return true;
    }
    if (request) {
        Tell(m_server.Answer(*request, m_policy));
    }
    const std::size_t taken = m_input.size() - rest.size();
    const std::size_t lineEnd = std::string_view(m_input).substr(0, taken).rfind('\n');
    m_lineTaken = lineEnd == std::string::npos ? m_lineTaken + taken : taken - lineEnd - 1;
    m_input.erase(0, taken);
    m_hasWork = request.has_value();
    EndIfDone();
    return m_hasWork;
}

bool CClient::IsLineTooLong(std::string_view rest) const {
    return m_lineTaken + std::min(rest.find('\n'), rest.size()) > kMaxLine;
}

void CClient::Tell(std::string_view text) {
    if (m_state != EState::open) {
        return;
    }
    m_output += text;
    if (WaitingBytes() > kMaxWaiting) {
        Flush();
    }
}

void CClient::Flush() {
    while (WaitingBytes() > 0) {
        const ssize_t count =
            ::send(m_descriptor, m_output.data() + m_sent, WaitingBytes(), MSG_NOSIGNAL);
        if (count < 0) {
            if (!MayTryAgain(errno) || WaitingBytes() > kMaxWaiting) {
                m_state = EState::ended;
            } else if (m_sent > m_output.size() / 2) {
                m_output.erase(0, m_sent);
                m_sent = 0;
            }
            return;
        }
        m_sent += static_cast<std::size_t>(count);
    }
    if (m_output.capacity() > kManyAnswers) {
        std::string().swap(m_output); // clearing would keep the memory
    }
    m_output.clear();
    m_sent = 0;
    EndIfDone();
}

void CClient::EndIfDone() {
    if (m_state == EState::open && m_hasInputEnded && !m_hasWork && WaitingBytes() == 0) {
        m_state = EState::ended;
    }
}

/// Closing with unread input would take the answer away from the client before it has read it.
void CClient::Dismiss() {
    Tell(LineOf(ErrorReport("The line is longer than " + std::to_string(kMaxLine) + " bytes")));
    m_state = EState::leaving;
    m_hasWork = false;
    m_leaveBy = Core::MonotonicTime::Now() + kFarewell;
}

void CClient::Drain() {
    if (WaitingBytes() == 0) {
        ::shutdown(m_descriptor, SHUT_WR);
    }
    std::array<char, 65536> ignored;
    const ssize_t count = ::recv(m_descriptor, ignored.data(), ignored.size(), 0);
    if (count == 0 || (count < 0 && !MayTryAgain(errno)) || m_leaveBy.HasExpired()) {
        m_state = EState::ended;
    }
}

} // namespace Hub::GPSD
