#include "HubLink.h"

#include "platform/ServiceLink.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// So much is made ready for one write.
constexpr std::size_t kWriteSize = std::size_t{128} * 1024;

timespec AsTimespec(Core::Time span) {
    const std::int64_t nanoseconds = std::max<std::int64_t>(span.AsNanoseconds(), 0);
    timespec result{};
    result.tv_sec = static_cast<time_t>(nanoseconds / 1'000'000'000);
    result.tv_nsec = static_cast<long>(nanoseconds % 1'000'000'000);
    return result;
}

/// A connection attempt under way to the machine's own port; -1 when it failed at once.
int OpenConnection(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return -1;
    }
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (descriptor < FD_SETSIZE &&
        (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
         errno == EINPROGRESS)) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

} // namespace

CHubLink& CHubLink::Get() {
    // Never destroyed: objects that end later may still publish.
    static CHubLink* const link = new CHubLink(ServiceLink::kPort);
    s_isInUse = true;
    return *link;
}

CHubLink::~CHubLink() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool CHubLink::WantsToWrite() const {
    return m_state == EConnection::connecting ||
           (m_state == EConnection::connected && !m_queue.IsEmpty());
}

void CHubLink::Service(bool readable, bool writable) {
    if (m_state == EConnection::connecting && (readable || writable)) {
        FinishConnecting();
    } else if (m_state == EConnection::connected && readable) {
        Read();
    }
    if (m_state == EConnection::connected && writable) {
        Write();
    }
    RunTimers();
}

void CHubLink::EndPass() {
    if (m_state == EConnection::connected) {
        PublishDropped();
        Write();
    }
}

void CHubLink::RunTimers() {
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    if (m_state == EConnection::none && now >= m_nextAttempt) {
        StartConnecting();
    }
    if (m_state == EConnection::connected && now >= m_nextActivity) {
        m_nextActivity = now + kActivityInterval;
        for (const auto& [owner, report] : m_activities) {
            report();
        }
    }
}

void CHubLink::StartConnecting() {
    m_nextAttempt = Core::MonotonicTime::Now() + kRetryInterval;
    m_descriptor = OpenConnection(m_port);
    m_state = m_descriptor >= 0 ? EConnection::connecting : EConnection::none;
}

void CHubLink::FinishConnecting() {
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0) {
        Disconnect();
        return;
    }
    sockaddr_in peer{};
    socklen_t peerLength = sizeof peer;
    if (getpeername(m_descriptor, reinterpret_cast<sockaddr*>(&peer), &peerLength) == 0) {
        BecomeConnected();
    }
}

void CHubLink::BecomeConnected() {
    m_state = EConnection::connected;
    m_nextActivity = Core::MonotonicTime::Now() + kActivityInterval;
    m_queue.Connected();
    for (auto& [category, wish] : m_wishes) {
        AskCategory(category, wish, false);
    }
}

void CHubLink::Disconnect() {
    close(m_descriptor);
    m_descriptor = -1;
    if (m_state == EConnection::connected) {
        m_queue.Disconnected();
    }
    m_state = EConnection::none;
    m_out.clear();
    m_outSent = 0;
    m_in.clear();
}

/// Whole messages written into a connection that the peer has closed would be lost unseen: the
/// kernel takes them all the same.
bool CHubLink::HasPeerClosed() const {
    char byte = 0;
    const ssize_t count = recv(m_descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
}

void CHubLink::Write() {
    if (m_outSent == m_out.size()) {
        m_out.clear();
        m_outSent = 0;
        m_queue.Take(m_out, kWriteSize);
    }
    if (m_out.empty()) {
        return;
    }
    if (HasPeerClosed()) {
        Disconnect();
        return;
    }
    const ssize_t sent =
        send(m_descriptor, m_out.data() + m_outSent, m_out.size() - m_outSent, MSG_NOSIGNAL);
    if (sent > 0) {
        m_outSent += static_cast<std::size_t>(sent);
        m_sentInAll += static_cast<std::uint64_t>(sent);
        m_queue.Left(static_cast<std::size_t>(sent));
    } else if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        Disconnect();
    }
}

void CHubLink::Read() {
    char buffer[4096];
    const ssize_t count = recv(m_descriptor, buffer, sizeof buffer, 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (count <= 0) {
        Disconnect();
        return;
    }
    m_in.append(buffer, static_cast<std::size_t>(count));
    std::size_t start = 0;
    for (std::size_t end = m_in.find('\n'); end != std::string::npos;
         end = m_in.find('\n', start)) {
        HandleLine(m_in.substr(start, end - start));
        start = end + 1;
    }
    m_in.erase(0, start);
    if (m_in.size() > kMaxLine) {
        Disconnect();
    }
}

bool CHubLink::Poll(Core::Time limit) {
    const timespec timeout = AsTimespec(limit);
    if (m_descriptor < 0) {
        nanosleep(&timeout, nullptr);
        return false;
    }
    pollfd watched{m_descriptor, static_cast<short>(WantsToWrite() ? POLLIN | POLLOUT : POLLIN), 0};
    if (ppoll(&watched, 1, &timeout, nullptr) <= 0) {
        return false;
    }
    Service((watched.revents & (POLLIN | POLLERR | POLLHUP)) != 0,
            (watched.revents & POLLOUT) != 0);
    return true;
}

void CHubLink::Wait(Core::Time span) {
    const Core::MonotonicTime end = Core::MonotonicTime::Now() + span;
    for (Core::MonotonicTime now = Core::MonotonicTime::Now(); now < end;
         now = Core::MonotonicTime::Now()) {
        RunTimers();
        // Awake in time for the timers, which run while nothing happens on the socket.
        Poll(std::min(end - now, kActivityInterval));
    }
}

void CHubLink::BeginOfflineRun() {
    m_offline = true;
    const Core::MonotonicTime end = Core::MonotonicTime::Now() + kFirstConnectLimit;
    if (m_state == EConnection::none) {
        StartConnecting();
    }
    while (m_state == EConnection::connecting && Core::MonotonicTime::Now() < end) {
        Poll(end - Core::MonotonicTime::Now());
    }
}

void CHubLink::Finish() {
    std::fflush(stdout);
    const Core::MonotonicTime end = Core::MonotonicTime::Now() + kFinishLimit;
    while (m_state == EConnection::connected && Core::MonotonicTime::Now() < end) {
        PublishDropped();
        if (m_queue.IsEmpty()) {
            break;
        }
        Poll(end - Core::MonotonicTime::Now());
    }
    if (m_state == EConnection::connected) {
        shutdown(m_descriptor, SHUT_WR);
    }
}
