#include "LineCapture.h"

#include <cerrno>
#include <cstring>

namespace Sim {

std::string CLineCapture::Open(const std::string& path) {
    m_file.reset(std::fopen(path.c_str(), "wbe"));
    if (!m_file) {
        return std::strerror(errno);
    }
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    return {};
}

bool CLineCapture::Add(const Bytes& bytes) {
    if (!m_file || std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) == bytes.size()) {
        return true;
    }
    const int error = errno;
    m_file.reset();
    errno = error;
    return false;
}

} // namespace Sim
