#include "Clock.h"
#include "platform/LogClient.h"
#include "platform/Published.h"
#include "platform/RemoteLogger.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using Lines = std::vector<std::string>;

Core::Time g_now;

Core::Time TestNow() {
    return g_now;
}

class Logger : public testing::Test {
protected:
    CPublished m_published;
    CRemoteLogger m_logger{"Tester"};
};

} // namespace

TEST_F(Logger, registers_its_name) {
    ASSERT_EQ(m_published.Count("logger.register"), 1);
    EXPECT_EQ(m_published.All()[0].find("logger.register \"name\":\"Tester\",\"process\":"), 0U);
}

TEST_F(Logger, publishes_essential_and_info_status_by_key) {
    m_published.Forget();
    m_logger.SetEssentialStatus("checksum_stats", "%d,%d", 3, -4);
    m_logger.SetInfoStatus("rate", "%5.2lf", 1.5);
    EXPECT_EQ(
        m_published.All(),
        (Lines{R"(logger.status "name":"Tester","level":"essential","key":"checksum_stats" 3,-4)",
               R"(logger.status "name":"Tester","level":"info","key":"rate"  1.50)"}));
}

TEST_F(Logger, publishes_data_lines_with_their_own_time) {
    m_published.Forget();
    m_logger.LogData("QRS_42", 1234.5, "%lf,%d,%lf", 1.0, 2, 3.25);
    EXPECT_EQ(m_published.All(),
              (Lines{R"(logger.data "name":"Tester","key":"QRS_42" 1.000000,2,3.250000)"}));
    EXPECT_EQ(m_published.Messages()[0].time, 1234.5);
}

TEST_F(Logger, publishes_warnings_and_errors_as_events) {
    m_published.Forget();
    m_logger.Warn("at %s", "once");
    m_logger.Error("%d%%", 5);
    EXPECT_EQ(m_published.All(),
              (Lines{R"(logger.event "name":"Tester","level":"warning","text":"at once" )",
                     R"(logger.event "name":"Tester","level":"error","text":"5%" )"}));
}

TEST_F(Logger, hands_raw_blocks_over_under_the_name_given) {
    m_published.Forget();
    m_logger.LogRaw("Port", std::string("\x00\xFF", 2));
    ASSERT_EQ(m_published.Messages().size(), 1U);
    EXPECT_EQ(m_published.Messages()[0].members, "\"name\":\"Port\"");
    EXPECT_EQ(m_published.Messages()[0].text, std::string("\x00\xFF", 2));
}

TEST_F(Logger, formats_texts_of_any_length) {
    const std::string longText(10'000, 'x');
    m_published.Forget();
    m_logger.SetInfoStatus("long", "<%s>", longText.c_str());
    EXPECT_EQ(m_published.Messages()[0].text, "<" + longText + ">");
}

TEST_F(Logger, publishes_not_a_number_and_infinity_as_printf_writes_them) {
    m_published.Forget();
    m_logger.LogData("x", 1.0, "%lf,%lf,%lf", std::numeric_limits<double>::quiet_NaN(),
                     std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity());
    EXPECT_EQ(m_published.Messages()[0].text, "nan,inf,-inf");
}

TEST_F(Logger, warns_with_the_measured_seconds_when_checks_are_too_far_apart) {
    g_now = Core::Time::FromSeconds(100.0);
    Core::ClockHooks().monotonic = TestNow;
    m_logger.SetIdleParameters(0.5);
    m_published.Forget();
    g_now = Core::Time::FromSeconds(100.5);
    m_logger.ReallyCheckIdle();
    EXPECT_EQ(m_published.Count("logger.event"), 0);
    g_now = Core::Time::FromSeconds(101.25);
    m_logger.ReallyCheckIdle();
    Core::ClockHooks().monotonic = nullptr;
    ASSERT_EQ(m_published.Count("logger.event"), 1);
    EXPECT_NE(m_published.All()[0].find("0.750 s"), std::string::npos);
}

TEST_F(Logger, does_not_supervise_without_a_threshold) {
    for (const double threshold : {0.0, -1.0, std::nan("")}) {
        m_logger.SetIdleParameters(threshold);
        EXPECT_TRUE(m_logger.IdleTimeStamp().IsZero());
        m_published.Forget();
        m_logger.ReallyCheckIdle();
        EXPECT_EQ(m_published.Count("logger.event"), 0);
    }
}
