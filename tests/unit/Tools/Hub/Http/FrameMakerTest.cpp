#include "hub/http/FrameMaker.h"

#include "../State/StateTesting.h"

#include <nlohmann/json.hpp>

namespace {

using Hub::CFrames;

class FrameMaker : public HubTesting::CStateTesting {
protected:
    FrameMaker() {
        s_wall = HubTesting::kMoment;
        Core::ClockHooks().unix = [] { return Core::Time::FromSeconds(s_wall); };
    }
    void Pass(double seconds) {
        Advance(seconds);
        s_wall += seconds;
        m_maker.EndPass();
    }

    static inline double s_wall;
    CFrames m_frames;
    Hub::CFrameMaker m_maker{m_state, m_frames};
};

} // namespace

TEST_F(FrameMaker, makes_all_frames_in_the_first_pass) {
    Pass(0.0);
    EXPECT_EQ(m_frames.Numbers(), (CFrames::SNumbers{1, 1}));
    const auto shown = [&](CFrames::EFrame frame) {
        return nlohmann::json::parse(*m_frames.Get(frame));
    };
    EXPECT_EQ(shown(CFrames::live)["health"]["state"], "gone");
    EXPECT_EQ(shown(CFrames::panel)["uptime"], 0.0);
    EXPECT_NE(m_frames.Get(CFrames::metrics)->find("corvane_health"), std::string::npos);
    EXPECT_EQ(*m_frames.Get(CFrames::health), "The daemon is not connected, and has never been");
}

TEST_F(FrameMaker, makes_the_live_view_five_times_and_the_panel_once_a_second) {
    Pass(0.0);
    for (int i = 0; i < 1000; ++i) {
        Pass(0.01);
    }
    EXPECT_EQ(m_frames.Numbers(), (CFrames::SNumbers{51, 11}));
}

TEST_F(FrameMaker, does_not_hurry_after_a_long_pass) {
    Pass(0.0);
    Pass(60.0);
    Pass(0.01);
    EXPECT_EQ(m_frames.Numbers(), (CFrames::SNumbers{2, 2}));
}

TEST_F(FrameMaker, has_nothing_to_say_of_the_health_while_positions_are_live) {
    m_state.NewMessage(Fixed());
    Pass(0.0);
    EXPECT_EQ(*m_frames.Get(CFrames::health), "");
    Pass(3.0);
    EXPECT_EQ(*m_frames.Get(CFrames::health), "The last solution is 3 s old");
}
