// A process in which every descriptor that select() could watch is taken.
#pragma once

#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>
#include <vector>

class CCrowdedDescriptors {
public:
    CCrowdedDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &m_limit);
        rlimit raised = m_limit;
        raised.rlim_cur = std::min<rlim_t>(raised.rlim_max, FD_SETSIZE + 16);
        ::setrlimit(RLIMIT_NOFILE, &raised);
        int taken = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        while (taken >= 0 && taken < FD_SETSIZE) {
            m_taken.push_back(taken);
            taken = ::fcntl(taken, F_DUPFD_CLOEXEC, 0);
        }
        m_isComplete = taken >= FD_SETSIZE;
        if (m_isComplete) {
            ::close(taken);
        }
    }
    ~CCrowdedDescriptors() {
        for (const int descriptor : m_taken) {
            ::close(descriptor);
        }
        ::setrlimit(RLIMIT_NOFILE, &m_limit);
    }
    CCrowdedDescriptors(const CCrowdedDescriptors&) = delete;
    CCrowdedDescriptors& operator=(const CCrowdedDescriptors&) = delete;

    /// False where the machine's limit does not even reach FD_SETSIZE.
    bool IsComplete() const { return m_isComplete; }

private:
    rlimit m_limit{};
    std::vector<int> m_taken;
    bool m_isComplete = false;
};
