// A thread for each connection of the web server, up to a bound.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <httplib.h>
#include <mutex>

namespace Hub {

/// Above the bound the server accepts no further connection until one has ended, so that browsers
/// can take neither the memory nor the descriptors that everything else needs.
class CConnectionThreads : public httplib::TaskQueue {
public:
    static constexpr std::size_t kMostConnections = 256;

    /// Tells by `isCrowded`, which outlives it, whether a connection waits for another one's end.
    explicit CConnectionThreads(std::atomic<bool>& isCrowded) : m_isCrowded(isCrowded) {}

    void enqueue(std::function<void()> serve) override;
    /// Waits until every connection has ended; the server tells them to.
    void shutdown() override;

private:
    void Done();

    std::atomic<bool>& m_isCrowded;
    std::mutex m_mutex;
    std::condition_variable m_hasEnded;
    std::size_t m_connections = 0;
};

} // namespace Hub
