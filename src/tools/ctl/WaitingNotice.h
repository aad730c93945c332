// Tells that something takes long, while whoever does it is busy with it.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace Ctl {

/// Calls `tell`, on a thread of its own, unless it is gone within a second.
class CWaitingNotice {
public:
    explicit CWaitingNotice(std::function<void()> tell);

private:
    std::mutex m_mutex;
    std::condition_variable_any m_ended;
    std::jthread m_thread; ///< last, so that it ends first
};

} // namespace Ctl
