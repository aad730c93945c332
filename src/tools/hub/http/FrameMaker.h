// Makes the frames from the state, as often as they are worth it.
#pragma once

#include "hub/Observer.h"
#include "hub/http/Frames.h"
#include "hub/state/State.h"
#include "platform/Time.h"

namespace Hub {

/// The live view five times a second, all else once a second.
class CFrameMaker : public CHubObserver {
public:
    static constexpr Core::Time kLivePeriod = Core::Time::FromMilliseconds(200);
    static constexpr Core::Time kPanelPeriod = Core::Time::FromMilliseconds(1000);

    /// Both outlive it.
    CFrameMaker(const CState& state, CFrames& frames);

    void EndPass() override;

private:
    const CState& m_state;
    CFrames& m_frames;
    Core::MonotonicTime m_start;
    Core::MonotonicTime m_nextLive;
    Core::MonotonicTime m_nextPanel;
};

} // namespace Hub
