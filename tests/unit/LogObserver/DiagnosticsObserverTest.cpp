#include "LogObserver/DiagnosticsObserver.h"

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"
#include "platform/Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

using Sentences::Rxstatus;

namespace {

using Lines = std::vector<std::string>;

struct SRow {
    const char* descriptor;
    std::set<unsigned> errorBits;
    std::set<unsigned> statusBits;
};

// clang-format off
const SRow kTable[] = {
    {R"("code":79151,"sub":0)",  {9}, {1}},
    {R"("code":79161,"sub":4)",  {7}, {2}},
    {R"("code":70950,"sub":4)",  {}, {3}},
    {R"("code":70922,"sub":5)",  {}, {5}},
    {R"("code":70922,"sub":6)",  {}, {6}},
    {R"("code":79195,"sub":0)",  {}, {7}},
    {R"("code":79203,"sub":12)", {}, {8, 9, 10, 11}},
    {R"("code":73505,"sub":17)", {}, {18}},
    {R"("code":79200,"sub":12)", {0, 2, 4, 6, 10, 11, 12, 13, 14, 15, 31}, {15, 17}},
    {R"("code":79202,"sub":12)", {1}, {}},
    {R"("code":79207,"sub":12)", {16}, {24}},
    {R"("code":79201,"sub":12)", {17}, {}},
    {R"("code":79177,"sub":12)", {5}, {}},
};
// clang-format on

std::string Line(const char* descriptor, bool isRaised) {
    const std::string members = R"("name":"CDiagnosticsObserver",)" + std::string(descriptor);
    return isRaised ? "diagnostics.raise " + members + ",\"value\":1 "
                    : "diagnostics.clear " + members + " ";
}

/// All thirteen, of which those are raised that `isRaised` says.
template <class TIsRaised>
Lines Expected(TIsRaised isRaised) {
    Lines lines;
    for (const SRow& row : kTable) {
        lines.push_back(Line(row.descriptor, isRaised(row)));
    }
    return lines;
}

Lines NoneRaised() {
    return Expected([](const SRow&) { return false; });
}

class DiagnosticsObserver : public testing::TestWithParam<unsigned> {
protected:
    Lines PublishedAt(const Bytes::Sentence& sentence) {
        m_published.Forget();
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        m_observer.NewRecord(record.get());
        return m_published.All();
    }
    static Rxstatus Words(std::uint32_t error, std::uint32_t status) {
        return Rxstatus().errorWord(error).status({.status = status});
    }

    CPublished m_published;
    CDiagnosticsObserver m_observer;
};

using DiagnosticsObserverBit = DiagnosticsObserver;

} // namespace

TEST_P(DiagnosticsObserverBit, of_the_error_word_raises_its_diagnostics_and_clears_all_others) {
    EXPECT_EQ(PublishedAt(Words(1U << GetParam(), 0)),
              Expected([](const SRow& row) { return row.errorBits.contains(GetParam()); }));
    EXPECT_EQ(PublishedAt(Words(0, 0)), NoneRaised());
}

TEST_P(DiagnosticsObserverBit, of_the_status_word_raises_its_diagnostics_and_clears_all_others) {
    EXPECT_EQ(PublishedAt(Words(0, 1U << GetParam())),
              Expected([](const SRow& row) { return row.statusBits.contains(GetParam()); }));
    EXPECT_EQ(PublishedAt(Words(0, 0)), NoneRaised());
}

TEST_P(DiagnosticsObserverBit, that_alone_is_clear_leaves_what_other_bits_raise) {
    const std::uint32_t all = 0xFFFFFFFF;
    EXPECT_EQ(PublishedAt(Words(all ^ 1U << GetParam(), 0)), Expected([](const SRow& row) {
                  std::set<unsigned> others = row.errorBits;
                  others.erase(GetParam());
                  return !others.empty();
              }));
}

INSTANTIATE_TEST_SUITE_P(Each, DiagnosticsObserverBit, testing::Range(0U, 32U));

TEST_F(DiagnosticsObserver, clears_everything_when_the_first_words_are_zero) {
    EXPECT_EQ(PublishedAt(Words(0, 0)), NoneRaised());
    EXPECT_EQ(m_published.Messages().size(), 13U);
}

TEST_F(DiagnosticsObserver, does_nothing_while_both_words_stay_the_same) {
    PublishedAt(Words(1, 2));
    EXPECT_EQ(PublishedAt(Words(1, 2)), Lines{});
    EXPECT_EQ(PublishedAt(Words(1, 2).status({.status = 77})), Lines{});
    EXPECT_EQ(PublishedAt(Words(1, 2).receiverStatus(0xFF)), Lines{});
}

TEST_F(DiagnosticsObserver, tells_everything_again_when_one_word_changes) {
    PublishedAt(Words(0, 0));
    // Bits that raise nothing.
    EXPECT_EQ(PublishedAt(Words(1U << 3, 0)), NoneRaised());
    EXPECT_EQ(PublishedAt(Words(1U << 3, 1U << 31)), NoneRaised());
    EXPECT_EQ(PublishedAt(Words(0, 1U << 31)), NoneRaised());
}

TEST_F(DiagnosticsObserver, takes_words_of_all_ones_for_unchanged_at_first) {
    EXPECT_EQ(PublishedAt(Words(0xFFFFFFFF, 0xFFFFFFFF)), Lines{});
    PublishedAt(Words(0, 0));
    EXPECT_EQ(PublishedAt(Words(0xFFFFFFFF, 0xFFFFFFFF)),
              Expected([](const SRow&) { return true; }));
}

TEST_F(DiagnosticsObserver, raises_a_diagnostic_of_both_words_for_either) {
    const auto isFirst = [](const SRow& row) { return &row == kTable; };
    EXPECT_EQ(PublishedAt(Words(1U << 9, 0)), Expected(isFirst));
    EXPECT_EQ(PublishedAt(Words(1U << 9, 1U << 1)), Expected(isFirst));
    EXPECT_EQ(PublishedAt(Words(0, 1U << 1)), Expected(isFirst));
    EXPECT_EQ(PublishedAt(Words(0, 0)), NoneRaised());
}

TEST_F(DiagnosticsObserver, takes_the_status_word_from_the_first_block) {
    EXPECT_EQ(PublishedAt(Rxstatus()
                              .receiverStatus(1U << 5)
                              .status({.status = 1U << 18,
                                       .priorityMask = 1U << 1,
                                       .eventSetMask = 1U << 2,
                                       .eventClearMask = 1U << 3})
                              .status({.status = 1U << 6})),
              Expected([](const SRow& row) { return row.statusBits.contains(18); }));
}

TEST_F(DiagnosticsObserver, takes_the_status_word_from_the_header_when_there_is_no_block) {
    EXPECT_EQ(PublishedAt(Rxstatus().receiverStatus(1U << 5)),
              Expected([](const SRow& row) { return row.statusBits.contains(5); }));
    EXPECT_EQ(PublishedAt(Words(0, 1U << 5)), Lines{});
}

TEST_F(DiagnosticsObserver, passes_over_all_other_records) {
    EXPECT_EQ(PublishedAt(Sentences::Bestpos().receiverStatus(0xFF)), Lines{});
    EXPECT_EQ(PublishedAt(Sentences::Response(93).responseID(1).responseText("OK")), Lines{});
    EXPECT_EQ(PublishedAt(Sentences::Nmea("GPGSV,1")), Lines{});
    EXPECT_EQ(PublishedAt(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")), Lines{});
    m_observer.NewRecord(nullptr);
    EXPECT_EQ(m_published.All(), Lines{});
}
