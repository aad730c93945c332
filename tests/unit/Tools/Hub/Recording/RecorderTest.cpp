#include "hub/recording/Recorder.h"

#include "RecordingTesting.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace RecordingTesting;
using Hub::SCategory;
using TFolder = std::map<std::string, TBlocks>;

class Recorder : public testing::Test {
protected:
    /// What is in the folder when all that was told has been written.
    TFolder End() {
        m_recorder.reset();
        return ReadFolder(m_folder.Path());
    }

    const CTemporaryFolder m_folder;
    std::optional<Hub::CRecorder> m_recorder{
        std::in_place, m_folder.Path(),
        Hub::SRecordingLimits{1'000'000'000, 3600.0, 2'000'000'000}};
};

} // namespace

TEST_F(Recorder, records_nothing_unless_told_to) {
    m_recorder->NewMessage(Block("a", kStart, "x"));
    m_recorder->NewMessage(SCategory{"b", true});
    m_recorder->NewMessage(SCategory{"a", false});
    m_recorder->NewMessage(Block("a", kStart, "x"));
    EXPECT_EQ(End(), TFolder{});
}

TEST_F(Recorder, records_a_name_while_its_category_is_on) {
    m_recorder->NewMessage(SCategory{"a", true});
    m_recorder->NewMessage(Block("a", kStart, "1"));
    m_recorder->NewMessage(Block("b", kStart, "other"));
    m_recorder->NewMessage(SCategory{"a", true});
    m_recorder->NewMessage(Block("a", kStart + 1.0, "2"));
    m_recorder->NewMessage(SCategory{"a", false});
    m_recorder->NewMessage(Block("a", kStart + 2.0, "3"));
    m_recorder->NewMessage(SCategory{"a", true});
    m_recorder->NewMessage(Block("a", kStart + 3.0, "4"));
    EXPECT_EQ(End(), (TFolder{{"a-20231114T221320Z.pcap", {{0.0, "1"}, {1.0, "2"}}},
                              {"a-20231114T221323Z.pcap", {{3.0, "4"}}}}));
}

TEST_F(Recorder, passes_over_a_block_without_bytes) {
    m_recorder->NewMessage(SCategory{"a", true});
    m_recorder->NewMessage(Block("a", kStart, ""));
    EXPECT_EQ(End(), TFolder{});
}

TEST_F(Recorder, writes_all_that_waits_before_it_ends) {
    m_recorder->NewMessage(SCategory{"a", true});
    for (int i = 0; i < 1000; ++i) {
        m_recorder->NewMessage(Block("a", kStart, std::string(1000, 'x')));
    }
    EXPECT_EQ(m_recorder->Dropped(), 0U);
    EXPECT_EQ(End()["a-20231114T221320Z.pcap"].size(), 1000U);
}

TEST_F(Recorder, counts_the_blocks_that_are_more_than_may_wait) {
    m_recorder->NewMessage(SCategory{"a", true});
    const std::string large(std::size_t{17} * 1024 * 1024, 'x');
    testing::internal::CaptureStderr();
    m_recorder->NewMessage(Block("a", kStart, large));
    m_recorder->NewMessage(Block("a", kStart, large));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The recordings: the disk is too slow; blocks are left out\n");
    EXPECT_EQ(m_recorder->Dropped(), 2U);
    EXPECT_EQ(End(), TFolder{});
}
