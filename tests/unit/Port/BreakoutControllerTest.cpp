#include "Port/BreakoutController.h"

#include "Support/FakeByteSource.h"
#include "Support/FakeClock.h"
#include "TraceOutputs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

using Steps = std::vector<std::string>;

class BreakoutControllerTest : public testing::Test {
protected:
    BreakoutControllerTest() {
        s_test = this;
        m_clock.AtPause([] { s_test->NoticePause(); });
    }

    /// The result of the procedure, whose steps m_source.done then has.
    bool Perform(std::int32_t mode, std::int32_t baudRate = 460800) {
        m_source.done.clear();
        BreakoutController breakout(m_source, mode);
        breakout.SetBaudRate(baudRate);
        return breakout.PerformBreakout();
    }

    /// Beside what is done to the source stands "pause" and the pause's microseconds.
    void NoticePause() {
        const std::int64_t nanoseconds = m_clock.Pauses().back().AsNanoseconds();
        EXPECT_EQ(nanoseconds % 1000, 0);
        m_source.done.push_back("pause " + std::to_string(nanoseconds / 1000));
        if (m_tracesPauses) {
            std::fputs("(pause)\n", stderr);
        }
    }

    static Steps Without(Steps steps, const std::string& step) {
        std::erase(steps, step);
        return steps;
    }

    CFakeClock m_clock;
    CFakeByteSource m_source;
    bool m_tracesPauses = false;

    const Steps m_zq2 = {
        "close",
        "baud 115200",
        "open",
        "write " +
            std::string("\x9C\xAE\x0E\x00\x80\x03\x0A\x00\x02\x02\x0A\x00\x02\x02\x53\xFF", 16),
        "pause 250000",
    };
    const Steps m_break = {
        "break 0.300000", "pause 1500000", "break 0.300000",
        "pause 250000",   "baud 9600",     "write com thisport 460800\r\n",
        "pause 1000000",  "drain",         "close",
        "baud 460800",    "open",          "pause 100000",
    };
    const Steps m_softBreak = {
        "baud 9600",
        "pause 1500000",
        "write +++",
        "pause 1500000",
        "write +++\r\n",
        "pause 1500000",
        "write log version\r\n",
        "pause 1000000",
        "write com thisport 460800\r\n",
        "pause 100000",
        "baud 460800",
        "pause 1000000",
        "write log comconfig\r\n",
        "pause 250000",
    };

    static inline BreakoutControllerTest* s_test = nullptr;
};

Steps AfterOpening(Steps steps) {
    steps.insert(steps.begin(), "open");
    return steps;
}

} // namespace

TEST_F(BreakoutControllerTest, of_no_kind_succeeds_and_touches_nothing) {
    EXPECT_TRUE(Perform(0));
    EXPECT_EQ(m_source.done, Steps{});
    m_source.isOpen = false;
    EXPECT_TRUE(Perform(0));
    EXPECT_EQ(m_source.done, Steps{});
}

TEST_F(BreakoutControllerTest, of_an_unknown_kind_fails_and_touches_nothing) {
    for (const std::int32_t mode : {-1, 4, 1000}) {
        EXPECT_FALSE(Perform(mode)) << mode;
        EXPECT_EQ(m_source.done, Steps{});
    }
}

TEST_F(BreakoutControllerTest, to_zq2_opens_the_port_anew_at_115200_and_writes_one_frame) {
    EXPECT_TRUE(Perform(1));
    EXPECT_EQ(m_source.done, m_zq2);
    EXPECT_TRUE(m_source.isOpen);
}

TEST_F(BreakoutControllerTest, to_zq2_does_not_close_a_port_that_is_closed) {
    m_source.isOpen = false;
    EXPECT_TRUE(Perform(1));
    EXPECT_EQ(m_source.done, Without(m_zq2, "close"));
    EXPECT_TRUE(m_source.isOpen);
}

TEST_F(BreakoutControllerTest, to_zq2_succeeds_also_when_the_port_cannot_be_opened) {
    m_source.canOpen = false;
    EXPECT_TRUE(Perform(1));
    EXPECT_EQ(m_source.done, m_zq2);
}

TEST_F(BreakoutControllerTest, by_line_breaks_leaves_the_port_open_at_its_speed) {
    EXPECT_TRUE(Perform(2));
    EXPECT_EQ(m_source.done, m_break);
    EXPECT_TRUE(m_source.isOpen);
}

TEST_F(BreakoutControllerTest, by_line_breaks_opens_a_port_that_is_closed) {
    m_source.isOpen = false;
    EXPECT_TRUE(Perform(2));
    EXPECT_EQ(m_source.done, AfterOpening(m_break));
}

TEST_F(BreakoutControllerTest, by_line_breaks_fails_when_it_leaves_the_port_closed) {
    m_source.isOpen = false;
    m_source.canOpen = false;
    EXPECT_FALSE(Perform(2));
    EXPECT_EQ(m_source.done, AfterOpening(m_break));
    m_source.isOpen = true;
    EXPECT_FALSE(Perform(2));
    EXPECT_EQ(m_source.done, m_break);
}

TEST_F(BreakoutControllerTest, by_characters_asks_the_receiver_to_leave_its_mode) {
    EXPECT_TRUE(Perform(3));
    EXPECT_EQ(m_source.done, m_softBreak);
}

TEST_F(BreakoutControllerTest, by_characters_opens_a_port_that_is_closed) {
    m_source.isOpen = false;
    EXPECT_TRUE(Perform(3));
    EXPECT_EQ(m_source.done, AfterOpening(m_softBreak));
    EXPECT_TRUE(m_source.isOpen);
}

TEST_F(BreakoutControllerTest, by_characters_succeeds_also_when_the_port_cannot_be_opened) {
    m_source.isOpen = false;
    m_source.canOpen = false;
    EXPECT_TRUE(Perform(3));
    EXPECT_EQ(m_source.done, AfterOpening(m_softBreak));
}

TEST_F(BreakoutControllerTest, goes_on_when_a_write_fails) {
    m_source.canWrite = false;
    EXPECT_TRUE(Perform(1));
    EXPECT_EQ(m_source.done, m_zq2);
    EXPECT_TRUE(Perform(2));
    EXPECT_EQ(m_source.done, m_break);
    EXPECT_TRUE(Perform(3));
    EXPECT_EQ(m_source.done, m_softBreak);
}

TEST_F(BreakoutControllerTest, commands_and_sets_the_speed_that_it_was_given) {
    EXPECT_TRUE(Perform(2, 57600));
    EXPECT_EQ(m_source.texts, Steps{"com thisport 57600\r\n"});
    EXPECT_EQ(m_source.done.at(9), "baud 57600");
    m_source.texts.clear();
    EXPECT_TRUE(Perform(3, 57600));
    EXPECT_EQ(m_source.texts.at(3), "com thisport 57600\r\n");
    EXPECT_EQ(m_source.done.at(10), "baud 57600");
}

TEST_F(BreakoutControllerTest, is_performed_anew_each_time) {
    BreakoutController breakout(m_source, BreakoutController::lineBreak);
    breakout.SetBaudRate(460800);
    EXPECT_TRUE(breakout.PerformBreakout());
    m_source.done.clear();
    EXPECT_TRUE(breakout.PerformBreakout());
    EXPECT_EQ(m_source.done, m_break);
}

TEST_F(BreakoutControllerTest, by_characters_traces_what_it_does_as_it_does_it) {
    ::unsetenv("CORVANE_TRACE");
    CTraceOutputs::Restart();
    // The trace counts a line that comes again within ten seconds instead of printing it.
    m_clock.LetPausesOvershoot(Core::Time::FromMilliseconds(10'000));
    m_tracesPauses = true;
    testing::internal::CaptureStderr();
    Perform(3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Performing character-based breakout\n"
                                                      "(pause)\n"
                                                      "Sending +++\n"
                                                      "(pause)\n"
                                                      "Sending +++\n"
                                                      "(pause)\n"
                                                      "(pause)\n"
                                                      "(pause)\n"
                                                      "(pause)\n"
                                                      "(pause)\n"
                                                      "Done\n");
}

TEST_F(BreakoutControllerTest, of_another_kind_traces_nothing) {
    testing::internal::CaptureStderr();
    for (const std::int32_t mode : {-1, 0, 1, 2, 4}) {
        Perform(mode);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
