#include "ctl/Period.h"

#include <gtest/gtest.h>

using namespace Ctl;

TEST(Period, reads_a_rate) {
    EXPECT_EQ(ParsePeriod("5Hz"), 200);
    EXPECT_EQ(ParsePeriod("1hz"), 1000);
    EXPECT_EQ(ParsePeriod("0.1HZ"), 10'000);
}

TEST(Period, reads_a_time) {
    EXPECT_EQ(ParsePeriod("0.2s"), 200);
    EXPECT_EQ(ParsePeriod("10s"), 10'000);
    EXPECT_EQ(ParsePeriod("200ms"), 200);
}

TEST(Period, rounds_to_the_nearest_millisecond) {
    EXPECT_EQ(ParsePeriod("3Hz"), 333);
    EXPECT_EQ(ParsePeriod("1.5ms"), 2);
    EXPECT_EQ(ParsePeriod("0.0114s"), 11);
}

TEST(Period, knows_the_words_that_are_no_period) {
    EXPECT_EQ(ParsePeriod("off"), 0);
    EXPECT_EQ(ParsePeriod("once"), -1);
}

TEST(Period, is_a_millisecond_at_least_lest_it_be_taken_for_off) {
    EXPECT_EQ(ParsePeriod("1000Hz"), 1);
    EXPECT_EQ(ParsePeriod("1ms"), 1);
    EXPECT_EQ(ParsePeriod("1001Hz"), std::nullopt);
    EXPECT_EQ(ParsePeriod("0.9ms"), std::nullopt);
    EXPECT_EQ(ParsePeriod("0s"), std::nullopt);
}

TEST(Period, is_a_day_at_most) {
    EXPECT_EQ(ParsePeriod("86400s"), 86'400'000);
    EXPECT_EQ(ParsePeriod("86400001ms"), std::nullopt);
    EXPECT_EQ(ParsePeriod("0.00000001Hz"), std::nullopt);
}

TEST(Period, refuses_everything_else) {
    for (const char* const text : {"", "5", "Hz", "s", "ms", "-1s", "-5Hz", "0Hz", "1 s", " 1s",
                                   "1s ", "1m", "1min", "OFF", "nans", "infs", "1e400s", "0x1s"}) {
        EXPECT_EQ(ParsePeriod(text), std::nullopt) << text;
    }
}

TEST(Period, is_shown_in_seconds) {
    EXPECT_EQ(PeriodText(200), "every 0.2 s");
    EXPECT_EQ(PeriodText(333), "every 0.333 s");
    EXPECT_EQ(PeriodText(10'000), "every 10 s");
    EXPECT_EQ(PeriodText(kOff), "off");
    EXPECT_EQ(PeriodText(kOnce), "once");
}
