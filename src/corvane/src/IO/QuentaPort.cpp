#include "IO/QuentaPort.h"

#include "platform/DebugPrint.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

using Core::IO::WriteTail;

namespace {

constexpr Core::Time kDrainPoll = Core::Time::FromMilliseconds(2);

/// A path that is too long for an address is cut, and its last byte stays zero.
sockaddr_un ToAddress(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::size_t length = std::min(path.size(), sizeof address.sun_path - 1);
    std::memcpy(address.sun_path, path.data(), length);
    return address;
}

} // namespace

QuentaPort::QuentaPort(std::int32_t portNumber, std::string socketPrefix)
    : m_portNumber(portNumber), m_socketPrefix(std::move(socketPrefix)) {
}

bool QuentaPort::Connect() {
    if (IsConnected()) {
        return true;
    }
    // Non-blocking from the start: connecting to a socket whose queue is full would wait as well.
    m_descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_descriptor < 0) {
        return FailToConnect("socket");
    }
    if (m_descriptor >= FD_SETSIZE) {
        errno = EMFILE; // the main loop's sets end below it
        return FailToConnect("socket");
    }
    const sockaddr_un address = ToAddress(m_socketPrefix + std::to_string(m_portNumber));
    if (connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return FailToConnect("connect");
    }
    return true;
}

bool QuentaPort::FailToConnect(const char* what) {
    deperror(what);
    Close();
    return false;
}

void QuentaPort::Close() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    m_descriptor = -1;
    m_tail.Clear();
}

bool QuentaPort::Write(const std::uint8_t* bytes, std::size_t count) {
    if (m_portNumber == 0) {
        return true;
    }
    return IsConnected() && Took(m_tail.Write(m_descriptor, bytes, count));
}

void QuentaPort::ContinueWriting() {
    if (HasWaitingBytes()) {
        Took(m_tail.Continue(m_descriptor));
    }
}

bool QuentaPort::Drain() {
    const Core::MonotonicTime deadline = Core::MonotonicTime::Now() + kDrainLimit;
    while (IsConnected()) {
        ContinueWriting();
        NoticeEnd();
        if (!HasUntakenBytes()) {
            return IsConnected();
        }
        if (Core::MonotonicTime::Now() >= deadline) {
            return false;
        }
        Core::Sleep(kDrainPoll);
    }
    return false;
}

/// Bytes that nobody will take any more do not count as taken.
void QuentaPort::NoticeEnd() {
    pollfd watched = {m_descriptor, 0, 0};
    if (IsConnected() && m_portNumber != 0 && poll(&watched, 1, 0) > 0) {
        Lose("closed by the multiplexer");
    }
}

bool QuentaPort::HasUntakenBytes() const {
    int inSocket = 0;
    return HasWaitingBytes() || (ioctl(m_descriptor, SIOCOUTQ, &inSocket) == 0 && inSocket > 0);
}

bool QuentaPort::Took(WriteTail::EResult result) {
    if (result == WriteTail::EResult::lost) {
        const int failure = errno;
        deperror("write");
        Lose(std::strerror(failure));
    }
    return result == WriteTail::EResult::ok;
}

bool QuentaPort::Read(std::uint8_t* buffer, std::size_t length, std::size_t& count) {
    count = 0;
    if (m_descriptor < 0) {
        return false;
    }
    const ssize_t taken = read(m_descriptor, buffer, length);
    if (taken > 0) {
        count = static_cast<std::size_t>(taken);
        return true;
    }
    if (taken == 0) {
        Lose("closed by the multiplexer");
        return true;
    }
    const int failure = errno;
    if (failure == EAGAIN || failure == EWOULDBLOCK || failure == EINTR) {
        return true;
    }
    deperror("QuentaPort::ReadData:");
    Lose(std::strerror(failure));
    return false;
}

bool QuentaPort::Read(std::uint8_t* buffer, std::size_t length, int timeoutMilliseconds,
                      std::size_t& count) {
    if (m_descriptor >= 0) {
        pollfd watched = {m_descriptor, POLLIN, 0};
        poll(&watched, 1,
             timeoutMilliseconds); // whatever became of it, the read says what is there
    }
    return Read(buffer, length, count);
}

void QuentaPort::Lose(const std::string& reason) {
    Close();
    m_lossReason = reason;
}
