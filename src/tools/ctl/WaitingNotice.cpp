#include "WaitingNotice.h"

#include <chrono>
#include <utility>

namespace Ctl {

namespace {

constexpr std::chrono::seconds kPatience{1};

} // namespace

CWaitingNotice::CWaitingNotice(std::function<void()> tell)
    : m_thread([this, tell = std::move(tell)](const std::stop_token& stop) {
          std::unique_lock lock(m_mutex);
          m_ended.wait_for(lock, stop, kPatience, [] { return false; });
          if (!stop.stop_requested()) {
              tell();
          }
      }) {
}

} // namespace Ctl
