#include "hub/http/FrameMaker.h"

#include "hub/http/Metrics.h"
#include "hub/state/Health.h"
#include "hub/state/Presentation.h"

namespace Hub {

CFrameMaker::CFrameMaker(const CState& state, CFrames& frames)
    : m_state(state), m_frames(frames), m_start(Core::MonotonicTime::Now()) {
}

void CFrameMaker::EndPass() {
    const SNow now = SNow::Get();
    if (now.monotonic >= m_nextLive) {
        m_nextLive = now.monotonic + kLivePeriod;
        m_frames.Set(CFrames::live, LiveText(m_state, now));
        const SHealth health = Judge(m_state, now);
        m_frames.Set(CFrames::health, health.state == SHealth::EState::live ? "" : health.words);
    }
    if (now.monotonic >= m_nextPanel) {
        m_nextPanel = now.monotonic + kPanelPeriod;
        const double uptime = (now.monotonic - m_start).AsSeconds();
        m_frames.Set(CFrames::panel, PanelText(m_state, now, uptime));
        m_frames.Set(CFrames::metrics, MetricsText(m_state, now, uptime));
    }
}

} // namespace Hub
