#include "hub/state/LogRates.h"

#include "Support/FakeClock.h"

#include <gtest/gtest.h>

namespace {

using Hub::CLogRates;

/// A port that brings logs, and a clock that the test moves.
class LogRates : public testing::Test {
protected:
    bool Add(const std::string& key, const std::string& name = "P") {
        Hub::SDataLine line;
        line.name = name;
        line.key = key;
        return m_rates.Add(line, Core::MonotonicTime::Now());
    }
    void Pass(double seconds) { m_clock.Advance(Core::Time::FromSeconds(seconds)); }
    /// A log at once and then every so many seconds.
    void Repeat(const std::string& key, int count, double interval) {
        for (int i = 0; i < count; ++i) {
            Add(key);
            Pass(interval);
        }
    }
    double Rate(std::int32_t identifier) const {
        return m_rates.Logs().at({"P", identifier}).Rate(Core::MonotonicTime::Now());
    }

    CFakeClock m_clock;
    CLogRates m_rates;
};

} // namespace

TEST_F(LogRates, count_each_log_of_each_port) {
    Add("QRS_42");
    Add("QRS_42");
    Add("QRS_42", "P2");
    Add("QRS_65535");
    ASSERT_EQ(m_rates.Logs().size(), 3U);
    EXPECT_EQ(m_rates.Logs().at({"P", 42}).count, 2U);
    EXPECT_EQ(m_rates.Logs().at({"P2", 42}).count, 1U);
    EXPECT_EQ(m_rates.Logs().at({"P", 65535}).count, 1U);
}

TEST_F(LogRates, leave_out_lines_that_tell_of_no_log) {
    for (const char* const key : {"QRS_", "QRS_x", "QRS_4x", "QRS_ 4", "QRS_99999999999", "qrs_42",
                                  "QRS42", "X_QRS_42", ""}) {
        EXPECT_TRUE(Add(key)) << key;
    }
    EXPECT_TRUE(m_rates.Logs().empty());
}

TEST_F(LogRates, are_logs_a_second_over_the_last_five) {
    Repeat("QRS_42", 200, 0.125);
    Add("QRS_42");
    EXPECT_DOUBLE_EQ(Rate(42), 8.0);
    Pass(0.0625);
    EXPECT_DOUBLE_EQ(Rate(42), 8.0);
}

TEST_F(LogRates, are_right_for_slow_logs_also_at_the_very_moment_of_one) {
    Repeat("QRS_42", 10, 1.0);
    EXPECT_DOUBLE_EQ(Rate(42), 0.8); // one is due now
    Add("QRS_42");
    EXPECT_DOUBLE_EQ(Rate(42), 1.0);
    Pass(0.5);
    EXPECT_DOUBLE_EQ(Rate(42), 1.0);
}

TEST_F(LogRates, are_not_told_in_the_first_second) {
    Repeat("QRS_42", 9, 0.1);
    EXPECT_EQ(Rate(42), 0.0);
}

TEST_F(LogRates, of_a_log_younger_than_five_seconds_are_over_its_own_time) {
    Repeat("QRS_42", 20, 0.1);
    Add("QRS_42"); // two seconds after the first one, twenty after it
    EXPECT_DOUBLE_EQ(Rate(42), 10.0);
}

TEST_F(LogRates, of_a_log_that_came_once_are_zero) {
    Add("QRS_37");
    Pass(1.0);
    EXPECT_EQ(Rate(37), 0.0);
    Pass(3.0);
    EXPECT_EQ(Rate(37), 0.0);
    Pass(3.0);
    EXPECT_EQ(Rate(37), 0.0);
}

TEST_F(LogRates, fall_to_zero_when_a_log_comes_no_more) {
    Repeat("QRS_42", 100, 0.1);
    EXPECT_NEAR(Rate(42), 10.0, 0.21);
    Pass(2.5);
    EXPECT_NEAR(Rate(42), 5.0, 0.21);
    Pass(2.5);
    EXPECT_EQ(Rate(42), 0.0);
    EXPECT_EQ(m_rates.Logs().at({"P", 42}).count, 100U);
}

TEST_F(LogRates, keep_no_more_arrivals_than_the_window_needs) {
    Repeat("QRS_42", 1000, 0.05);
    EXPECT_LE(m_rates.Logs().at({"P", 42}).recent.size(), 101U);
    for (int i = 0; i < 6000; ++i) {
        Add("QRS_43");
    }
    EXPECT_EQ(m_rates.Logs().at({"P", 43}).recent.size(), 5000U);
    EXPECT_EQ(m_rates.Logs().at({"P", 43}).count, 6000U);
}

TEST_F(LogRates, are_kept_of_a_thousand_logs) {
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(Add("QRS_" + std::to_string(i)));
    }
    EXPECT_FALSE(Add("QRS_1000"));
    EXPECT_TRUE(Add("QRS_999"));
    EXPECT_EQ(m_rates.Logs().size(), 1000U);
}

TEST(LogName, is_the_receivers_own) {
    EXPECT_EQ(Hub::LogName(42), "BESTPOS");
    EXPECT_EQ(Hub::LogName(244), "RTKXYZ");
    EXPECT_EQ(Hub::LogName(1235), "SOFTLOADSTATUS");
    EXPECT_EQ(Hub::LogName(65535), "NMEA");
    EXPECT_EQ(Hub::LogName(1), "");
}
