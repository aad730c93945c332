#include "PortLink.h"

#include "platform/SerialSettings.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace Sim {

namespace {

std::string ErrorText() {
    return std::strerror(errno);
}

} // namespace

CPortLink::~CPortLink() {
    // Another simulator may have put its own in its place.
    std::error_code error;
    if (!m_link.empty() && std::filesystem::read_symlink(m_link, error) == m_device) {
        std::filesystem::remove(m_link, error);
    }
    if (m_master >= 0) {
        ::close(m_master);
    }
}

std::string CPortLink::Open(const std::string& link, std::uint32_t baud) {
    std::string reason = MakeDevice(baud);
    return reason.empty() ? MakeLink(link) : reason;
}

std::string CPortLink::MakeDevice(std::uint32_t baud) {
    char name[64];
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
        ::ptsname_r(m_master, name, sizeof name) != 0) {
        return ErrorText();
    }
    m_device = name;
    // Closed again at once: from then on the master tells whether somebody has it open.
    const int terminal = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0) {
        return ErrorText();
    }
    std::string reason = Core::IO::MakeLineRaw(terminal, static_cast<std::int32_t>(baud));
    ::close(terminal);
    return reason;
}

std::string CPortLink::MakeLink(const std::string& link) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::symlink_status(link, error);
    if (fs::exists(status) && !fs::is_symlink(status)) {
        return "there is something else of that name";
    }
    // In one step: nobody sees a moment without it.
    const std::string fresh = link + ".new";
    fs::remove(fresh, error);
    fs::create_symlink(m_device, fresh, error);
    if (!error) {
        fs::rename(fresh, link, error);
    }
    if (error) {
        return error.message();
    }
    m_link = link;
    return {};
}

bool CPortLink::LookForPeer() {
    pollfd watched{m_master, 0, 0};
    const bool hadPeer = m_hasPeer;
    m_hasPeer = ::poll(&watched, 1, 0) == 0 || (watched.revents & POLLHUP) == 0;
    if (hadPeer && !m_hasPeer) {
        DropUnread();
    }
    return m_hasPeer;
}

/// The kernel would keep it for the next one; only from the device's own side it lets it go.
void CPortLink::DropUnread() {
    m_unsent.clear();
    const int terminal = ::open(m_device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (terminal >= 0) {
        ::tcflush(terminal, TCIFLUSH);
        ::close(terminal);
    }
}

std::uint32_t CPortLink::Speed() const {
    return Core::IO::LineSpeed(m_master);
}

std::string CPortLink::Read() {
    char bytes[4096];
    const ssize_t count = ::read(m_master, bytes, sizeof bytes);
    return count > 0 ? std::string(bytes, static_cast<std::size_t>(count)) : std::string();
}

bool CPortLink::Write(const Bytes& bytes) {
    if (!LookForPeer()) {
        return true;
    }
    ContinueWriting();
    if (HasUnsent()) {
        return false;
    }
    const ssize_t count = ::write(m_master, bytes.data(), bytes.size());
    if (count <= 0) {
        return false;
    }
    m_unsent.assign(bytes.begin() + count, bytes.end());
    return true;
}

void CPortLink::ContinueWriting() {
    if (m_unsent.empty()) {
        return;
    }
    const ssize_t count = ::write(m_master, m_unsent.data(), m_unsent.size());
    if (count > 0) {
        m_unsent.erase(m_unsent.begin(), m_unsent.begin() + count);
    }
}

} // namespace Sim
