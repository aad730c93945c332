#include "hub/state/Health.h"

#include "StateTesting.h"

namespace {

using EState = Hub::SHealth::EState;

class Health : public HubTesting::CStateTesting {
protected:
    void ExpectHealth(EState state, const std::string& words) const {
        const Hub::SHealth health = Hub::Judge(m_state, Now());
        EXPECT_EQ(health.state, state) << health.words;
        EXPECT_EQ(health.words, words);
    }
};

} // namespace

TEST_F(Health, is_gone_when_nothing_was_ever_there) {
    ExpectHealth(EState::gone, "The daemon is not connected, and has never been");
}

TEST_F(Health, is_gone_when_a_program_is_there_that_tells_no_positions) {
    Register("logger", 1, "other");
    ExpectHealth(EState::gone, "No connected program tells positions");
}

TEST_F(Health, is_gone_when_the_daemon_has_left) {
    Register("P");
    m_state.NewMessage(Fixed());
    m_state.ProcessGone(1);
    Advance(12.9);
    ExpectHealth(EState::gone, "The daemon is gone; the last solution is 12 s old");
}

TEST_F(Health, is_gone_when_only_another_program_is_left) {
    Register("P");
    Register("logger", 2, "other");
    m_state.NewMessage(Fixed());
    m_state.ProcessGone(1);
    Advance(3.0);
    ExpectHealth(EState::gone,
                 "No connected program tells positions; the last solution is 3 s old");
}

TEST_F(Health, is_live_while_positions_come) {
    Register("P");
    m_state.NewMessage(Fixed());
    ExpectHealth(EState::live, "Live");
    Advance(2.0);
    ExpectHealth(EState::live, "Live");
}

TEST_F(Health, is_old_when_the_last_position_is_older_than_two_seconds) {
    Register("P");
    m_state.NewMessage(Fixed());
    Advance(2.001);
    ExpectHealth(EState::old, "The last solution is 2 s old");
    Activity(1, 1);
    ExpectHealth(EState::old, "The last solution is 2 s old");
}

TEST_F(Health, is_old_when_the_position_was_published_long_ago_and_is_told_again) {
    Register("P");
    auto solution = Fixed();
    solution.time = m_wall - 3600.0;
    m_state.NewMessage(solution);
    ExpectHealth(EState::old, "The last solution is 3600 s old");
}

TEST_F(Health, is_without_a_position_when_the_receiver_has_none) {
    Register("P");
    m_state.NewMessage(NoPosition());
    ExpectHealth(EState::noPosition, "The receiver has no position");
}

TEST_F(Health, is_silent_when_no_port_has_brought_a_byte_yet) {
    Register("P");
    m_state.NewMessage(NoPosition());
    Advance(2.5);
    Activity(0, 0, "P");
    Activity(0, 0, "P2");
    ExpectHealth(EState::silent, "The receiver is silent: no port has brought a byte yet");
}

TEST_F(Health, is_silent_when_no_port_has_brought_a_byte_for_three_seconds) {
    Register("P");
    m_state.NewMessage(Fixed());
    Activity(5, 5, "P");
    Advance(1.0);
    Activity(5, 5, "P2");
    Advance(3.0);
    Activity(0, 0, "P2");
    ExpectHealth(EState::old, "The last solution is 4 s old");
    Advance(0.5);
    ExpectHealth(EState::silent, "The receiver is silent: no byte for 3 s");
}

TEST_F(Health, does_not_take_a_wall_clock_that_is_set_for_a_change) {
    Register("P");
    m_state.NewMessage(Fixed());
    m_wall -= 1e6;
    ExpectHealth(EState::live, "Live");
    Advance(5.0);
    ExpectHealth(EState::old, "The last solution is 5 s old");
}

TEST_F(Health, has_words_for_a_time_that_makes_no_sense) {
    Register("P");
    auto solution = Fixed();
    solution.time = -1e308;
    m_state.NewMessage(solution);
    ExpectHealth(EState::old, "The last solution is 1000000000000000 s old");
}

TEST_F(Health, has_the_names_of_the_JSON_interface) {
    EXPECT_STREQ((Hub::SHealth{EState::live, ""}.Name()), "live");
    EXPECT_STREQ((Hub::SHealth{EState::noPosition, ""}.Name()), "no position");
    EXPECT_STREQ((Hub::SHealth{EState::old, ""}.Name()), "old");
    EXPECT_STREQ((Hub::SHealth{EState::silent, ""}.Name()), "silent");
    EXPECT_STREQ((Hub::SHealth{EState::gone, ""}.Name()), "gone");
}
