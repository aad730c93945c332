#include "mux/UnixListener.h"

#include "platform/Descriptor.h"
#include "platform/Time.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Mux {

namespace {

constexpr int kBacklog = 128;
constexpr int kLockAttempts = 50;
constexpr Core::Time kLockPause = Core::Time::FromMilliseconds(10);

/// Of several multiplexers that start at once, one at a time looks whether a socket is served and
/// replaces it. The lock is the folder's, so that nothing is left behind; it is given up after half
/// a second, lest another user's lock should keep the ports closed.
class CFolderLock {
public:
    explicit CFolderLock(const std::string& path)
        : m_descriptor(open(path.substr(0, path.rfind('/') + 1).c_str(),
                            O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        for (int i = 0; m_descriptor >= 0 && i < kLockAttempts; ++i) {
            if (flock(m_descriptor, LOCK_EX | LOCK_NB) == 0) {
                return;
            }
            Core::Sleep(kLockPause);
        }
    }
    ~CFolderLock() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

private:
    int m_descriptor;
};

sockaddr_un ToAddress(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
    return address;
}

/// What connecting fails with; 0 when somebody answers.
int ConnectError(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return errno;
    }
    const sockaddr_un address = ToAddress(path);
    const int result =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = result == 0 ? 0 : errno;
    close(descriptor);
    return error;
}

/// Why nothing may be put under this path; a socket that nobody serves is removed.
std::string ClearPath(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? "" : std::strerror(errno);
    }
    if (!S_ISSOCK(status.st_mode)) {
        return "something else than a socket stands there";
    }
    const int error = ConnectError(path);
    if (error == 0 || error == EAGAIN) { // or its queue is full
        return "another program serves it";
    }
    if (error != ECONNREFUSED && error != ENOENT) {
        return std::strerror(error);
    }
    if (error == ECONNREFUSED && unlink(path.c_str()) != 0) {
        return std::string("cannot be removed: ") + std::strerror(errno);
    }
    return {};
}

} // namespace

std::string CUnixListener::Open(const std::string& path, mode_t mode, std::optional<gid_t> group) {
    Close();
    const CFolderLock lock(path);
    if (std::string why = ClearPath(path); !why.empty()) {
        return why;
    }
    m_descriptor =
        Core::IO::KeepSelectable(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    std::string why = m_descriptor < 0 ? std::strerror(errno) : Bind(path, mode, group);
    if (!why.empty()) {
        Close();
    }
    return why;
}

/// Nobody gets in before it listens, and by then the name has its mode and its group.
std::string CUnixListener::Bind(const std::string& path, mode_t mode, std::optional<gid_t> group) {
    const sockaddr_un address = ToAddress(path);
    const mode_t before = umask(0177);
    const int result =
        bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    umask(before);
    if (result != 0) {
        return std::strerror(error);
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) {
        m_path = path;
        m_device = status.st_dev;
        m_inode = status.st_ino;
    }
    if (group && lchown(path.c_str(), static_cast<uid_t>(-1), *group) != 0) {
        return "group " + std::to_string(*group) + ": " + std::strerror(errno);
    }
    if (chmod(path.c_str(), mode) != 0 || listen(m_descriptor, kBacklog) != 0) {
        return std::strerror(errno);
    }
    return {};
}

void CUnixListener::Close() {
    struct stat status {};
    if (!m_path.empty() && lstat(m_path.c_str(), &status) == 0 && status.st_dev == m_device &&
        status.st_ino == m_inode) {
        unlink(m_path.c_str());
    }
    m_path.clear();
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    m_descriptor = -1;
}

} // namespace Mux
