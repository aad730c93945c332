#include "IO/FileHandler.h"

#include "platform/DebugPrint.h"
#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Opened for reading without ever waiting; -1, with errno, for a directory too, which would open
/// but could not be read.
int OpenToRead(const std::string& path) {
    const int descriptor = Core::IO::KeepSelectable(
        ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (descriptor >= 0 && ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        errno = EISDIR;
        return -1;
    }
    return descriptor;
}

} // namespace

CFileHandler::CFileHandler() : m_buffer(kInitialCapacity) {
}

CFileHandler::~CFileHandler() {
    if (m_isOpen) {
        ::close(m_descriptor);
    }
}

bool CFileHandler::Open() {
    if (m_isOpen) {
        return true;
    }
    m_descriptor = OpenToRead(m_path);
    if (m_descriptor < 0) {
        deperror("CFileHandler:Open");
        return false;
    }
    m_isOpen = true;
    m_isAtEnd = false;
    ReportSuccess();
    return true;
}

bool CFileHandler::Close() {
    if (!m_isOpen) {
        return false;
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    m_isOpen = false;
    return true;
}

std::string CFileHandler::Read(std::int32_t count) {
    if (!m_isOpen) {
        return {};
    }
    if (count <= 0) {
        m_isAtEnd = true;
        return {};
    }
    if (!m_readTimeout.IsNegative() && !Core::IO::WaitReadable(m_descriptor, m_readTimeout)) {
        return {};
    }
    return ReadBytes(static_cast<std::size_t>(std::min(count, kMaxReadSize)));
}

std::string CFileHandler::ReadBytes(std::size_t count) {
    if (count > m_buffer.size()) {
        m_buffer = std::vector<char>(count);
    }
    const ssize_t result = ::read(m_descriptor, m_buffer.data(), count);
    if (result > 0) {
        return std::string(m_buffer.data(), static_cast<std::size_t>(result));
    }
    if (result == 0) {
        m_isAtEnd = true;
    } else if (errno != EAGAIN && errno != EINTR) {
        ReportFailure(m_path + ": " + std::strerror(errno));
    }
    return {};
}

bool CFileHandler::SetDevice(const std::string& path) {
    if (m_isOpen) {
        return false;
    }
    m_path = path;
    return true;
}

bool CFileHandler::SetReadTimeout(Core::Time timeout) {
    m_readTimeout = timeout;
    return true;
}
