// A thread for what may wait, such as the disk, behind a queue with a bound.
#pragma once

#include "platform/Time.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace Hub {

/// Does one job after another, in their order.
class CWorker {
public:
    using TJob = std::function<void()>;

    static constexpr Core::Time kPatience = Core::Time::FromMilliseconds(5000);

    /// The sizes of the jobs that wait and of the one that is done now come to no more than
    /// `bound`.
    explicit CWorker(std::size_t bound, Core::Time patience = kPatience);
    /// Does what waits for as long as the patience lasts; the job that is done then is finished,
    /// those behind it are dropped.
    ~CWorker();
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    /// Never waits. False, and counted, when the queue is full.
    bool Post(TJob job, std::size_t size = 1);

    /// How many jobs found the queue full.
    std::uint64_t Refused() const;

private:
    struct SJob {
        TJob job;
        std::size_t size;
    };

    void Run();

    const std::size_t m_bound;
    const Core::Time m_patience;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<SJob> m_jobs; ///< the first one is the one that is done now
    std::size_t m_size = 0;  ///< of all of them
    std::uint64_t m_refused = 0;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace Hub
