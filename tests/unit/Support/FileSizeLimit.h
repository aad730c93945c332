// A disk that is full: files do not grow beyond a size for as long as this lives.
#pragma once

#include <csignal>
#include <sys/resource.h>

/// In bytes, for every file of this process.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~CFileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, SIG_DFL);
    }
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;

private:
    rlimit m_before{};
};
