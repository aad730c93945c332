#include "ctl/CaptureSummary.h"

#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using Ctl::CCaptureSummary;
using Ctl::CLogStatistics;

CLogStatistics At(std::initializer_list<std::int64_t> moments) {
    CLogStatistics log;
    for (const std::int64_t moment : moments) {
        log.Take(moment);
    }
    return log;
}

std::string TextOf(const Bytes::Sentence& sentence) {
    return std::string(sentence.begin(), sentence.end());
}

} // namespace

TEST(LogStatistics, a_steady_log_has_a_rate_and_no_gap) {
    const CLogStatistics log = At({1000, 1050, 1100, 1150, 1200});
    EXPECT_EQ(log.Count(), 5U);
    EXPECT_DOUBLE_EQ(*log.Rate(), 20.0);
    EXPECT_EQ(log.Gaps(), 0U);
    EXPECT_EQ(log.LongestGap(), 0.0);
}

TEST(LogStatistics, more_than_one_and_a_half_of_the_usual_interval_is_a_gap) {
    EXPECT_EQ(At({1000, 1100, 1200, 1300, 1450}).Gaps(), 0U);
    const CLogStatistics log = At({1000, 1100, 1200, 1300, 1451, 4000, 4100});
    EXPECT_EQ(log.Gaps(), 2U);
    EXPECT_DOUBLE_EQ(log.LongestGap(), 2.549);
}

TEST(LogStatistics, one_log_and_logs_without_a_time_have_no_rate) {
    EXPECT_FALSE(At({1000}).Rate());
    EXPECT_FALSE(At({0, 0, 0}).Rate());
    EXPECT_EQ(At({0, 0, 0}).Count(), 3U);
    EXPECT_FALSE(At({2000, 1000}).Rate());
}

TEST(CaptureSummary, counts_every_kind_by_its_name_and_what_was_rejected) {
    CCaptureSummary summary;
    const std::string stream = TextOf(Sentences::Bestpos().bytes()) +
                               TextOf(Sentences::Bestpos().bytes()) +
                               TextOf(Sentences::Bestpos().wrongCRC().bytes()) +
                               TextOf(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")) + "\r\n" +
                               TextOf(Sentences::Nmea("GPZDA,1")) + "\r\n$GPZDA,2*00\r\n";
    for (std::size_t at = 0; at < stream.size(); at += 11) {
        summary.Add(stream.substr(at, 11));
    }
    EXPECT_EQ(summary.Bytes(), stream.size());
    EXPECT_EQ(summary.Logs().at("BESTPOS").Count(), 2U);
    EXPECT_EQ(summary.Logs().at("SOFTLOADSTATUSA").Count(), 1U);
    EXPECT_EQ(summary.Logs().at("GPZDA").Count(), 1U);
    EXPECT_EQ(summary.Binary().good, 2U);
    EXPECT_EQ(summary.Binary().rejected, 1U);
    EXPECT_EQ(summary.NMEA().good, 1U);
    EXPECT_GE(summary.NMEA().rejected, 1U);
}
