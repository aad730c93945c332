#include "hub/http/Frames.h"

#include <utility>

namespace Hub {

void CFrames::Set(EFrame frame, std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    {
        const std::lock_guard lock(m_mutex);
        m_texts[frame] = shared;
        m_numbers.live += frame == live ? 1 : 0;
        m_numbers.panel += frame == panel ? 1 : 0;
        m_lastSet = std::chrono::steady_clock::now();
    }
    if (frame == live || frame == panel) {
        m_hasNew.notify_all();
    }
}

CFrames::TText CFrames::Get(EFrame frame) const {
    const std::lock_guard lock(m_mutex);
    return m_texts[frame];
}

double CFrames::Age() const {
    const std::lock_guard lock(m_mutex);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_lastSet).count();
}

CFrames::SNumbers CFrames::Numbers() const {
    const std::lock_guard lock(m_mutex);
    return m_numbers;
}

CFrames::SNumbers CFrames::WaitForNew(const SNumbers& seen,
                                      std::chrono::milliseconds timeout) const {
    std::unique_lock lock(m_mutex);
    m_hasNew.wait_for(lock, timeout, [&] { return m_hasEnded || !(m_numbers == seen); });
    return m_numbers;
}

void CFrames::End() {
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_hasNew.notify_all();
}

bool CFrames::HasEnded() const {
    const std::lock_guard lock(m_mutex);
    return m_hasEnded;
}

} // namespace Hub
