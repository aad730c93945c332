#include "platform/TCPListener.h"

#include "platform/Descriptor.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace Core::IO {

namespace {

/// A listening socket; -1, and why in `reason`, when there is none.
int Listen(const std::string& address, std::uint16_t port, int backlog, std::string& reason) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1) {
        reason = "not an IPv4 address in numbers";
        return -1;
    }
    const int descriptor =
        KeepSelectable(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (descriptor >= 0 &&
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        ::bind(descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 &&
        ::listen(descriptor, backlog) == 0) {
        return descriptor;
    }
    reason = std::strerror(errno);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return -1;
}

/// What is written leaves at once; a client that vanished without a word is found out after some
/// 90 s, or enough of them would leave no place for others.
void SetUpConnection(int descriptor) {
    const auto set = [&](int level, int name, int value) {
        ::setsockopt(descriptor, level, name, &value, sizeof value);
    };
    set(IPPROTO_TCP, TCP_NODELAY, 1);
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 60);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set(IPPROTO_TCP, TCP_KEEPCNT, 3);
}

} // namespace

TCPListener::~TCPListener() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

bool TCPListener::Start(const std::string& address, std::uint16_t port, int backlog,
                        std::function<void(const std::string&)> report) {
    m_address = address;
    m_port = port;
    m_backlog = backlog;
    m_report = std::move(report);
    m_hasStarted = true;
    return TryToListen();
}

void TCPListener::TryAgain() {
    if (m_hasStarted && m_descriptor < 0 && m_nextAttempt.HasExpired()) {
        TryToListen();
    }
}

bool TCPListener::TryToListen() {
    m_nextAttempt = MonotonicTime::Now() + kRetry;
    std::string reason;
    m_descriptor = Listen(m_address, m_port, m_backlog, reason);
    if (m_descriptor < 0 && reason != m_toldReason) {
        m_report("cannot listen on " + m_address + ":" + std::to_string(m_port) + ": " + reason +
                 "; trying again every 10 s");
    }
    m_toldReason = reason;
    return m_descriptor >= 0;
}

std::uint16_t TCPListener::Port() const {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    if (::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&name), &length) != 0) {
        return 0;
    }
    return ntohs(name.sin_port);
}

/// None while it rests, or the loop would spin on connections that cannot be accepted.
int TCPListener::Descriptor() const {
    return m_acceptAgain.HasExpired() ? m_descriptor : -1;
}

int TCPListener::Accept() {
    int descriptor = -1;
    do {
        descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    } while (descriptor < 0 && (errno == ECONNABORTED || errno == EINTR));
    if (descriptor < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            m_acceptAgain = MonotonicTime::Now() + kRest;
        }
        return -1;
    }
    descriptor = KeepSelectable(descriptor);
    if (descriptor >= 0) {
        SetUpConnection(descriptor);
    }
    return descriptor;
}

} // namespace Core::IO
