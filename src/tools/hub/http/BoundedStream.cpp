#include "hub/http/BoundedStream.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace Hub {

namespace {

using std::chrono::milliseconds;

using std::chrono::steady_clock;

/// How soon the end of the program is noticed.
constexpr milliseconds kLook{100};

bool Poll(int descriptor, short events, milliseconds timeout) {
    pollfd watched{descriptor, events, 0};
    int ready;
    do {
        ready = ::poll(&watched, 1, static_cast<int>(timeout.count()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

milliseconds Until(steady_clock::time_point end) {
    return std::chrono::duration_cast<milliseconds>(end - steady_clock::now());
}

void Describe(const sockaddr_storage& name, std::string& address, int& port) {
    char text[INET6_ADDRSTRLEN] = "";
    if (name.ss_family == AF_INET) {
        sockaddr_in inet{};
        std::memcpy(&inet, &name, sizeof inet);
        ::inet_ntop(AF_INET, &inet.sin_addr, text, sizeof text);
        port = ntohs(inet.sin_port);
    } else if (name.ss_family == AF_INET6) {
        sockaddr_in6 inet{};
        std::memcpy(&inet, &name, sizeof inet);
        // An IPv4 client of a server that listens on both kinds knows the last four bytes alone.
        if (IN6_IS_ADDR_V4MAPPED(&inet.sin6_addr)) {
            ::inet_ntop(AF_INET, &inet.sin6_addr.s6_addr[12], text, sizeof text);
        } else {
            ::inet_ntop(AF_INET6, &inet.sin6_addr, text, sizeof text);
        }
        port = ntohs(inet.sin6_port);
    }
    address = text;
}

} // namespace

bool CBoundedStream::WaitForRequest(const TQuestion& isCrowded) {
    const TMoment begin = steady_clock::now();
    while (m_begin == m_end && !Poll(m_descriptor, POLLIN, kLook)) {
        const auto idle = steady_clock::now() - begin;
        if (m_shallEnd() || idle >= kIdleTime || (idle >= kCrowdedIdleTime && isCrowded())) {
            return false;
        }
    }
    m_received = 0;
    m_deadline = steady_clock::now() + kRequestTime;
    return !m_shallEnd();
}

void CBoundedStream::BidFarewell() {
    ::shutdown(m_descriptor, SHUT_WR);
    const TMoment end = steady_clock::now() + kFarewell;
    while (WaitFor(POLLIN, end) &&
           ::recv(m_descriptor, m_buffer, sizeof m_buffer, MSG_DONTWAIT) > 0) {
    }
}

bool CBoundedStream::WaitFor(short events, TMoment end) const {
    milliseconds left = Until(end);
    while (left > milliseconds(0) && !m_shallEnd()) {
        if (Poll(m_descriptor, events, std::min(left, kLook))) {
            return true;
        }
        left = Until(end);
    }
    return false;
}

bool CBoundedStream::is_readable() const {
    return m_begin < m_end || WaitFor(POLLIN, m_deadline);
}

bool CBoundedStream::is_writable() const {
    return Poll(m_descriptor, POLLOUT, milliseconds(0)) ||
           WaitFor(POLLOUT, steady_clock::now() + kWriteStall);
}

ssize_t CBoundedStream::ReceiveInto(char* bytes, std::size_t size) {
    if (m_received >= kLongestRequest || !is_readable()) {
        return -1;
    }
    const ssize_t count =
        ::recv(m_descriptor, bytes, std::min(size, kLongestRequest - m_received), MSG_DONTWAIT);
    m_received += count > 0 ? static_cast<std::size_t>(count) : 0;
    return count;
}

ssize_t CBoundedStream::read(char* bytes, std::size_t size) {
    if (m_begin == m_end) {
        const ssize_t count = ReceiveInto(m_buffer, sizeof m_buffer);
        if (count <= 0) {
            return count;
        }
        m_begin = 0;
        m_end = static_cast<std::size_t>(count);
    }
    const std::size_t taken = std::min(size, m_end - m_begin);
    std::memcpy(bytes, m_buffer + m_begin, taken);
    m_begin += taken;
    return static_cast<ssize_t>(taken);
}

ssize_t CBoundedStream::write(const char* bytes, std::size_t size) {
    if (!is_writable()) {
        return -1;
    }
    return ::send(m_descriptor, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
}

void CBoundedStream::get_remote_ip_and_port(std::string& address, int& port) const {
    sockaddr_storage name{};
    socklen_t length = sizeof name;
    if (::getpeername(m_descriptor, reinterpret_cast<sockaddr*>(&name), &length) == 0) {
        Describe(name, address, port);
    }
}

void CBoundedStream::get_local_ip_and_port(std::string& address, int& port) const {
    sockaddr_storage name{};
    socklen_t length = sizeof name;
    if (::getsockname(m_descriptor, reinterpret_cast<sockaddr*>(&name), &length) == 0) {
        Describe(name, address, port);
    }
}

} // namespace Hub
