#include "ServedClient.h"

#include "platform/MPISocketServer.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

int CServedClient::Descriptor() const {
    return m_state == EState::ended ? -1 : m_connection.Descriptor();
}

bool CServedClient::WantsToRead() const {
    return m_state == EState::leaving || (!m_hasWork && !m_hasInputEnded);
}

/// Work that is left wakes the loop as room to write does, so that it goes on at once.
bool CServedClient::WantsToWrite() const {
    return m_connection.HasWaitingBytes() || HasWork();
}

void CServedClient::Service(bool readable, bool writable) {
    if (m_state == EState::leaving) {
        Drain();
    } else if (m_state == EState::open && readable && !m_hasWork && !m_hasInputEnded) {
        if (m_connection.Receive()) {
            m_hasWork = true;
            m_server.LimitMemory();
        } else if (errno == 0) {
            m_hasInputEnded = true;
            m_hasWork = true;
        } else {
            m_state = EState::ended;
        }
    }
    if (m_state != EState::ended && writable) {
        Flush();
    }
}

bool CServedClient::Step() {
    if (m_batch) {
        return StepBatch();
    }
    if (!m_request && !TakeRequest()) {
        return false;
    }
    if (m_batch) {
        return true;
    }
    std::string answer;
    if (!m_server.Answer(m_connection, *m_request, answer)) {
        return false;
    }
    m_request.reset();
    if (!answer.empty()) {
        m_connection.Queue(answer);
    }
    return true;
}

/// Looks at the next line; false when it is no request to be answered.
bool CServedClient::TakeRequest() {
    std::string line;
    switch (m_connection.TakeLine(line)) {
    case MPISocketConnectionC::ELine::partial:
        m_hasWork = false;
        EndIfDone();
        return false;
    case MPISocketConnectionC::ELine::tooLong:
        Dismiss({RPCMessage::kInvalidRequest, "the line is longer than 1 MiB"});
        return false;
    case MPISocketConnectionC::ELine::whole:
        break;
    }
    if (RPCMessage::IsHTTPRequestLine(line)) {
        m_state = EState::ended; // a web page must not call anything
        return false;
    }
    if (RPCMessage::IsBatch(line)) {
        BeginBatch(std::move(line));
    } else {
        m_request = std::move(line);
    }
    return m_batch || m_request;
}

void CServedClient::BeginBatch(std::string line) {
    if (const auto error = RPCMessage::CheckBatch(line)) {
        m_server.RequestRefused();
        m_connection.Queue(RPCMessage::Answer(BAtomC(), *error));
        return;
    }
    m_batch.emplace(std::move(line));
    m_isBatchAnswered = false;
}

bool CServedClient::StepBatch() {
    if (!m_element) {
        m_element = m_batch->Next();
    }
    if (!m_element) {
        if (m_isBatchAnswered) {
            m_connection.QueuePart("]");
            m_connection.EndLine();
        }
        m_batch.reset();
        return true;
    }
    std::string answer;
    if (!m_server.Answer(m_connection, *m_element, answer)) {
        return false;
    }
    m_element.reset();
    if (!answer.empty()) {
        m_connection.QueuePart((std::exchange(m_isBatchAnswered, true) ? "," : "[") + answer);
    }
    return true;
}

void CServedClient::Flush() {
    if (!m_connection.Send() || m_connection.WaitingBytes() > MPISocketServerC::kMaxWaiting) {
        m_state = EState::ended;
    } else {
        EndIfDone();
    }
}

void CServedClient::EndIfDone() {
    if (m_state == EState::open && m_hasInputEnded && !m_hasWork &&
        !m_connection.HasWaitingBytes()) {
        m_state = EState::ended;
    }
}

/// Closing with unread input would take the answer away from the client before it has read it.
void CServedClient::Dismiss(const RPCMessage::SError& error) {
    m_server.RequestRefused();
    m_connection.Queue(RPCMessage::Answer(BAtomC(), error));
    m_state = EState::leaving;
    m_hasWork = false;
    m_leaveBy = Core::MonotonicTime::Now() + MPISocketServerC::kFarewell;
}

void CServedClient::Drain() {
    if (!m_connection.HasWaitingBytes()) {
        ::shutdown(m_connection.Descriptor(), SHUT_WR);
    }
    std::array<char, 65536> ignored;
    const ssize_t count = ::recv(m_connection.Descriptor(), ignored.data(), ignored.size(), 0);
    const bool hasEnded = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (hasEnded || m_leaveBy.HasExpired()) {
        m_state = EState::ended;
    }
}

std::size_t CServedClient::HeldBytes() const {
    return m_connection.HeldBytes() + (m_request ? m_request->capacity() : 0) +
           (m_batch ? m_batch->HeldBytes() : 0);
}
