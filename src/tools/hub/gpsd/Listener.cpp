#include "hub/gpsd/Listener.h"

#include "platform/DebugPrint.h"
#include "platform/Descriptor.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Hub::GPSD {

namespace {

constexpr int kBacklog = 64;

/// A listening socket; -1, and why in `reason`, when there is none.
int Listen(const std::string& address, std::uint16_t port, std::string& reason) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1) {
        reason = "not an IPv4 address in numbers";
        return -1;
    }
    const int descriptor =
        Core::IO::KeepSelectable(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (descriptor >= 0 &&
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        ::bind(descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 &&
        ::listen(descriptor, kBacklog) == 0) {
        return descriptor;
    }
    reason = std::strerror(errno);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return -1;
}

/// Reports leave at once; a client that vanished without a word is found out after some 90 s.
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

CListener::~CListener() {
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

void CListener::Start(const std::string& address, std::uint16_t port) {
    m_address = address;
    m_port = port;
    m_hasStarted = true;
    TryToListen();
}

void CListener::TryAgain() {
    if (m_hasStarted && m_descriptor < 0 && m_nextAttempt.HasExpired()) {
        TryToListen();
    }
}

void CListener::TryToListen() {
    m_nextAttempt = Core::MonotonicTime::Now() + kRetry;
    std::string reason;
    m_descriptor = Listen(m_address, m_port, reason);
    if (m_descriptor < 0 && reason != m_toldReason) {
        deprintf("gpsd: cannot listen on %s:%d: %s; trying again every 10 s. A gpsd that runs here "
                 "itself must be stopped, or another port chosen (--gpsd-port).\n",
                 m_address.c_str(), m_port, reason.c_str());
    }
    m_toldReason = reason;
}

std::uint16_t CListener::Port() const {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    if (::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&name), &length) != 0) {
        return 0;
    }
    return ntohs(name.sin_port);
}

/// None while it rests, or the loop would spin on connections that cannot be accepted.
int CListener::Descriptor() const {
    return m_acceptAgain.HasExpired() ? m_descriptor : -1;
}

int CListener::Accept() {
    while (Descriptor() >= 0) {
        int descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0) {
            if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
                m_acceptAgain = Core::MonotonicTime::Now() + kRest;
            }
            if (errno != ECONNABORTED && errno != EINTR) {
                return -1;
            }
        } else if ((descriptor = Core::IO::KeepSelectable(descriptor)) >= 0) {
            SetUpConnection(descriptor);
            return descriptor;
        }
    }
    return -1;
}

} // namespace Hub::GPSD
