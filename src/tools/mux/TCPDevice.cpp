#include "mux/TCPDevice.h"

#include "platform/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

using Core::IO::WriteTail;

namespace Mux {

namespace {

void SetOption(int descriptor, int level, int option, int value) {
    setsockopt(descriptor, level, option, &value, sizeof value);
}

/// Commands are short and must not wait for each other; and a peer that has lost its power never
/// says so.
void Tune(int descriptor) {
    SetOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    SetOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    SetOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    SetOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, 3);
}

} // namespace

CTCPDevice::CTCPDevice(std::string name, STCPAddress address, std::int32_t baud)
    : m_name(std::move(name)), m_address(std::move(address)), m_baud(baud) {
}

CDevice::EOpening CTCPDevice::Open() {
    if (m_isOpen) {
        return EOpening::open;
    }
    if (m_descriptor >= 0) {
        return FinishConnecting();
    }
    if (!m_isLookingUp) {
        m_lookup.Start(m_address.host, m_address.port);
        m_nextAddress = 0;
    }
    const CNameLookup::EState state = m_lookup.Look();
    m_isLookingUp = state == CNameLookup::EState::pending;
    if (m_isLookingUp) {
        return EOpening::pending;
    }
    return state == CNameLookup::EState::found ? ConnectToNext() : Fail(m_lookup.LastError());
}

CDevice::EOpening CTCPDevice::ConnectToNext() {
    const SSocketAddress& address = m_lookup.Addresses()[m_nextAddress++];
    m_descriptor = Core::IO::KeepSelectable(
        socket(address.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (m_descriptor < 0) {
        return TryNext(std::strerror(errno));
    }
    Tune(m_descriptor);
    m_deadline = Core::MonotonicTime::Now() + kConnectLimit;
    const auto* const target = reinterpret_cast<const sockaddr*>(&address.bytes);
    if (connect(m_descriptor, target, address.length) != 0 && errno != EINPROGRESS) {
        return TryNext(std::strerror(errno));
    }
    return FinishConnecting();
}

CDevice::EOpening CTCPDevice::FinishConnecting() {
    pollfd watched = {m_descriptor, POLLOUT, 0};
    if (poll(&watched, 1, 0) <= 0) {
        return m_deadline.HasExpired() ? TryNext("does not answer") : EOpening::pending;
    }
    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &length) != 0) {
        error = errno;
    }
    if (error != 0) {
        return TryNext(std::strerror(error));
    }
    m_isOpen = true;
    m_lastError.clear();
    return EOpening::open;
}

CDevice::EOpening CTCPDevice::TryNext(const std::string& reason) {
    Close();
    return m_nextAddress < m_lookup.Addresses().size() ? ConnectToNext() : Fail(reason);
}

bool CTCPDevice::WantsToWrite() const {
    return m_isOpen ? !m_tail.IsEmpty() : m_descriptor >= 0;
}

std::string CTCPDevice::Read() {
    std::array<char, 4096> bytes;
    if (!m_isOpen) {
        return {};
    }
    const ssize_t count = read(m_descriptor, bytes.data(), bytes.size());
    if (count > 0) {
        return std::string(bytes.data(), static_cast<std::size_t>(count));
    }
    if (count == 0) {
        Lose("closed by the peer");
    } else if (errno != EAGAIN && errno != EINTR) {
        Lose(std::strerror(errno));
    }
    return {};
}

bool CTCPDevice::Write(const std::string& bytes) {
    return m_isOpen &&
           HasTaken(m_tail.Write(m_descriptor, reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                 bytes.size()));
}

void CTCPDevice::ContinueWriting() {
    if (m_isOpen) {
        HasTaken(m_tail.Continue(m_descriptor));
    }
}

bool CTCPDevice::HasTaken(WriteTail::EResult result) {
    if (result == WriteTail::EResult::lost) {
        Lose(errno == ETIMEDOUT ? "takes no bytes any more" : std::strerror(errno));
    }
    return result == WriteTail::EResult::ok;
}

bool CTCPDevice::SetBaudRate(std::int32_t baud) {
    m_baud = baud;
    return true;
}

void CTCPDevice::Close() {
    m_tail.Clear();
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    m_descriptor = -1;
    m_isOpen = false;
}

void CTCPDevice::Lose(const std::string& reason) {
    Close();
    m_lastError = m_name + ": " + reason;
}

CDevice::EOpening CTCPDevice::Fail(const std::string& reason) {
    Lose(reason);
    return EOpening::failed;
}

} // namespace Mux
