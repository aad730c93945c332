#include "hub/Worker.h"

#include <chrono>
#include <utility>

namespace Hub {

CWorker::CWorker(std::size_t bound, Core::Time patience)
    : m_bound(bound), m_patience(patience), m_thread([this] { Run(); }) {
}

CWorker::~CWorker() {
    {
        std::unique_lock lock(m_mutex);
        m_isEnding = true;
        m_changed.notify_all();
        m_changed.wait_for(lock, std::chrono::nanoseconds(m_patience.AsNanoseconds()),
                           [this] { return m_jobs.empty(); });
        if (m_jobs.size() > 1) {
            m_jobs.erase(m_jobs.begin() + 1, m_jobs.end());
        }
    }
    m_thread.join();
}

bool CWorker::Post(TJob job, std::size_t size) {
    const std::lock_guard lock(m_mutex);
    if (size > m_bound - m_size) {
        ++m_refused;
        return false;
    }
    m_size += size;
    m_jobs.push_back({std::move(job), size});
    m_changed.notify_all();
    return true;
}

std::uint64_t CWorker::Refused() const {
    const std::lock_guard lock(m_mutex);
    return m_refused;
}

void CWorker::Run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
        if (m_jobs.empty()) {
            return;
        }
        const TJob job = std::move(m_jobs.front().job);
        lock.unlock();
        job();
        lock.lock();
        m_size -= m_jobs.front().size;
        m_jobs.pop_front();
        m_changed.notify_all();
    }
}

} // namespace Hub
