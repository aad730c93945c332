#include "mux/Client.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Mux {

namespace {

std::string NameOfPeer(int descriptor) {
    ucred peer{};
    socklen_t length = sizeof peer;
    if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) {
        return "unknown";
    }
    const std::string number = std::to_string(peer.pid);
    std::ifstream file("/proc/" + number + "/comm");
    std::string program;
    std::getline(file, program);
    return program.empty() ? number : number + " (" + program + ")";
}

} // namespace

CClient::CClient(int descriptor, const CLine& line)
    : m_descriptor(descriptor), m_line(line), m_name(NameOfPeer(descriptor)) {
}

CClient::~CClient() {
    close(m_descriptor);
}

void CClient::Service(bool readable, bool writable) {
    m_isReadable = readable && !m_hasInputEnded;
    if (writable) {
        Flush();
    }
    if (m_hasInputEnded && !m_hasOutputEnded) {
        NoticeHangUp();
    }
}

/// One that writes no more may read on; the end of its reading shows nowhere else while its device
/// is silent.
void CClient::NoticeHangUp() {
    pollfd watched = {m_descriptor, 0, 0};
    if (poll(&watched, 1, 0) > 0) {
        EndOutput();
    }
}

std::size_t CClient::BytesThere() const {
    int count = 0;
    return ioctl(m_descriptor, FIONREAD, &count) == 0 && count > 0 ? static_cast<std::size_t>(count)
                                                                   : 0;
}

std::string CClient::Read(std::size_t count) {
    std::string bytes(std::min(count, kReadSize), '\0');
    const ssize_t taken =
        m_hasInputEnded ? 0 : recv(m_descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(taken > 0 ? static_cast<std::size_t>(taken) : 0);
    if (taken == 0) {
        m_hasInputEnded = true;
        NoticeHangUp();
    } else if (taken < 0 && errno != EAGAIN && errno != EINTR) {
        m_hasInputEnded = true;
        EndOutput();
    }
    return bytes;
}

void CClient::Send(std::string_view bytes) {
    if (m_hasOutputEnded) {
        return;
    }
    m_waiting.append(bytes);
    Flush();
    if (m_waiting.size() - m_sent > kMaxWaiting) {
        m_lostBytes = m_waiting.size() - m_sent;
        m_hasInputEnded = true;
        EndOutput();
    }
}

void CClient::Flush() {
    while (!m_hasOutputEnded && m_sent < m_waiting.size()) {
        const ssize_t count = send(m_descriptor, m_waiting.data() + m_sent,
                                   m_waiting.size() - m_sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count > 0) {
            m_sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            EndOutput(); // what it has written before is still to be read
        }
    }
    if (m_sent == m_waiting.size()) {
        m_waiting.clear();
        m_sent = 0;
    } else if (m_sent > kMaxWaiting / 2) {
        m_waiting.erase(0, m_sent);
        m_sent = 0;
    }
}

void CClient::EndOutput() {
    m_hasOutputEnded = true;
    m_waiting = std::string();
    m_sent = 0;
}

} // namespace Mux
