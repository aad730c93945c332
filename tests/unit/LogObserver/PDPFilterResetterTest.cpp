#include "LogObserver/PDPFilterResetter.h"

#include "Control/CommandManager.h"
#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"
#include "Support/TemporaryFolder.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using Texts = std::vector<std::string>;

constexpr std::uint32_t kNarrowFloat = 34;
constexpr std::uint32_t kNarrowInteger = 50;

/// An RTKXYZ, computed and of a narrow-lane float solution unless said otherwise.
Sentences::Cartesian Rtkxyz(std::uint32_t milliseconds, std::uint16_t week = 1800) {
    return Sentences::Cartesian(244)
        .u32(0, 0)
        .positionType(kNarrowFloat)
        .week(week)
        .milliseconds(milliseconds);
}

class PDPFilterResetterTest : public testing::TestWithParam<std::uint32_t> {
protected:
    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_resetter.NewRecord(record.get());
    }
    /// The commands queued since the last look.
    Texts Queued() {
        Texts texts;
        while (m_commands.PendingCount() > 0) {
            texts.push_back(m_commands.NextCommand());
        }
        return texts;
    }
    Texts QueuedAt(const Bytes::Sentence& sentence) {
        Offer(sentence);
        return Queued();
    }

    const Texts m_none{};
    const Texts m_reset{"pdpfilter reset\r\n"};
    CTemporaryFolder m_folder;
    CConfig m_config{m_folder.Path("corvane.conf")};
    CCommandManager m_commands{m_config};
    PDPFilterResetter m_resetter{m_commands};
};

using PDPFilterResetterStatus = PDPFilterResetterTest;
using PDPFilterResetterType = PDPFilterResetterTest;
using PDPFilterResetterOtherLog = PDPFilterResetterTest;

} // namespace

TEST_F(PDPFilterResetterTest, resets_with_the_first_solution_that_is_60_seconds_after_the_first) {
    EXPECT_EQ(QueuedAt(Rtkxyz(100'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(130'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(159'999)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(160'000)), m_reset);
}

TEST_F(PDPFilterResetterTest, resets_also_when_the_next_solution_comes_much_later) {
    Offer(Rtkxyz(0));
    EXPECT_EQ(QueuedAt(Rtkxyz(0, 1801)), m_reset);
}

TEST_F(PDPFilterResetterTest, resets_once_and_never_again) {
    Offer(Rtkxyz(0));
    EXPECT_EQ(QueuedAt(Rtkxyz(60'000)), m_reset);
    for (const std::uint32_t later : {60'000U, 61'000U, 120'000U, 240'000U, 604'000'000U}) {
        EXPECT_EQ(QueuedAt(Rtkxyz(later)), m_none) << later;
    }
    EXPECT_EQ(QueuedAt(Rtkxyz(240'000).positionType(kNarrowInteger)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(400'000)), m_none);
}

TEST_F(PDPFilterResetterTest, never_resets_once_a_narrow_lane_fix_has_been_seen) {
    Offer(Rtkxyz(0));
    Offer(Rtkxyz(59'999).positionType(kNarrowInteger));
    EXPECT_EQ(QueuedAt(Rtkxyz(60'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(604'000'000)), m_none);
}

TEST_F(PDPFilterResetterTest, never_resets_when_a_narrow_lane_fix_comes_first) {
    Offer(Rtkxyz(0).positionType(kNarrowInteger));
    Offer(Rtkxyz(1'000));
    EXPECT_EQ(QueuedAt(Rtkxyz(100'000)), m_none);
}

TEST_F(PDPFilterResetterTest, does_not_reset_for_a_narrow_lane_fix_that_comes_too_late) {
    Offer(Rtkxyz(0));
    EXPECT_EQ(QueuedAt(Rtkxyz(70'000).positionType(kNarrowInteger)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(71'000)), m_none);
}

TEST_P(PDPFilterResetterStatus, that_is_not_computed_neither_starts_nor_ends_the_time) {
    Offer(Rtkxyz(0).u32(0, GetParam()));
    Offer(Rtkxyz(30'000));
    EXPECT_EQ(QueuedAt(Rtkxyz(60'000)), m_none) << "started by a solution without a position";
    EXPECT_EQ(QueuedAt(Rtkxyz(95'000).u32(0, GetParam())), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(90'000)), m_reset);
}

TEST_P(PDPFilterResetterStatus, that_is_not_computed_makes_no_narrow_lane_fix) {
    Offer(Rtkxyz(0).u32(0, GetParam()).positionType(kNarrowInteger));
    Offer(Rtkxyz(30'000));
    Offer(Rtkxyz(31'000).u32(0, GetParam()).positionType(kNarrowInteger));
    EXPECT_EQ(QueuedAt(Rtkxyz(90'000)), m_reset);
}

INSTANTIATE_TEST_SUITE_P(Each, PDPFilterResetterStatus,
                         testing::Values(1U, 2U, 6U, 18U, 256U, 0x80000000U));

TEST_P(PDPFilterResetterType, other_than_a_narrow_lane_fix_starts_and_ends_the_time) {
    Offer(Rtkxyz(0).positionType(GetParam()));
    EXPECT_EQ(QueuedAt(Rtkxyz(59'999).positionType(GetParam())), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(60'000).positionType(GetParam())), m_reset);
}

INSTANTIATE_TEST_SUITE_P(Each, PDPFilterResetterType,
                         testing::Values(0U, 16U, 32U, 34U, 48U, 49U, 51U, 306U));

TEST_F(PDPFilterResetterTest, counts_across_the_end_of_a_week) {
    Offer(Rtkxyz(604'799'000, 1800));
    EXPECT_EQ(QueuedAt(Rtkxyz(0, 1801)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(58'999, 1801)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(59'000, 1801)), m_reset);
}

TEST_F(PDPFilterResetterTest, keeps_the_first_time_when_the_receivers_clock_is_put_back) {
    Offer(Rtkxyz(500'000));
    EXPECT_EQ(QueuedAt(Rtkxyz(100'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(100'000, 1799)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(170'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(559'999)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(560'000)), m_reset);
}

TEST_P(PDPFilterResetterOtherLog, neither_starts_nor_ends_the_time_nor_is_a_fix) {
    const auto Other = [](std::uint32_t milliseconds) {
        return Rtkxyz(milliseconds).messageID(static_cast<std::uint16_t>(GetParam()));
    };
    Offer(Other(0));
    Offer(Rtkxyz(30'000));
    Offer(Other(31'000).positionType(kNarrowInteger));
    EXPECT_EQ(QueuedAt(Other(95'000)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(89'999)), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(90'000)), m_reset);
}

INSTANTIATE_TEST_SUITE_P(Each, PDPFilterResetterOtherLog, testing::Values(241U, 243U, 471U));

TEST_F(PDPFilterResetterTest, passes_over_what_is_no_log_of_a_position) {
    Offer(Rtkxyz(0));
    m_resetter.NewRecord(nullptr);
    Offer(Sentences::Bestpos().milliseconds(100'000));
    Offer(Sentences::Response(244).milliseconds(100'000).responseID(1).responseText("OK"));
    Offer(Sentences::Nmea("GPZDA,1"));
    Offer(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE"));
    EXPECT_EQ(Queued(), m_none);
    EXPECT_EQ(QueuedAt(Rtkxyz(60'000)), m_reset);
}
