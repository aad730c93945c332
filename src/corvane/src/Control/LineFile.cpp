#include "Control/LineFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool CLineFile::Open(const std::string& path) {
    Close();
    m_size = 0;
    m_bytesRead = 0;
    m_hasFailed = false;
    m_lastError.clear();
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return Fail(path + ": " + std::strerror(errno));
    }
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return Fail(path + ": not a regular file");
    }
    m_file.reset(::fdopen(descriptor, "r"));
    if (m_file == nullptr) {
        ::close(descriptor);
        return Fail(path + ": " + std::strerror(errno));
    }
    m_size = status.st_size;
    return true;
}

void CLineFile::Close() {
    m_file.reset();
    m_isAtEnd = false;
}

std::string CLineFile::ReadLine() {
    std::string line;
    // Looked at before it is taken: a line feed behind a line of full length still ends that line.
    for (int next = Peek(); next != EOF; next = Peek()) {
        if (next != '\n' && line.size() == kMaxLine) {
            break;
        }
        std::getc(m_file.get());
        ++m_bytesRead;
        if (next == '\n') {
            break;
        }
        line += static_cast<char>(next);
    }
    return line;
}

int CLineFile::Peek() {
    if (!IsOpen() || m_isAtEnd) {
        return EOF;
    }
    const int next = std::getc(m_file.get());
    if (next != EOF) {
        return std::ungetc(next, m_file.get());
    }
    m_isAtEnd = true;
    if (std::ferror(m_file.get()) != 0) {
        m_hasFailed = true;
        Fail(std::strerror(errno));
    } else if (m_bytesRead != m_size) {
        m_hasFailed = true;
        Fail("it has changed while it was read");
    }
    return EOF;
}

bool CLineFile::Fail(const std::string& reason) {
    m_lastError = reason;
    return false;
}
