#include "hub/http/ConnectionThreads.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace Hub {

namespace {

/// Before a thread is tried again that the system would not give.
constexpr std::chrono::milliseconds kRest{100};

} // namespace

void CConnectionThreads::enqueue(std::function<void()> serve) {
    {
        std::unique_lock lock(m_mutex);
        m_isCrowded = m_connections >= kMostConnections;
        m_hasEnded.wait(lock, [&] { return m_connections < kMostConnections; });
        m_isCrowded = false;
        ++m_connections;
    }
    for (;;) {
        try {
            std::thread([this, serve] {
                serve();
                Done();
            }).detach();
            return;
        } catch (const std::system_error&) {
            std::this_thread::sleep_for(kRest);
        }
    }
}

void CConnectionThreads::Done() {
    const std::lock_guard lock(m_mutex);
    --m_connections;
    m_hasEnded.notify_all();
}

void CConnectionThreads::shutdown() {
    std::unique_lock lock(m_mutex);
    m_hasEnded.wait(lock, [&] { return m_connections == 0; });
}

} // namespace Hub
