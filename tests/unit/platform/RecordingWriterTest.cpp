#include "platform/RecordingWriter.h"

#include "Support/FileSizeLimit.h"
#include "Support/RecordingBytes.h"
#include "Support/TemporaryFolder.h"
#include "platform/LogFileReader.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using enum CRecordingWriter::EPlace;

Core::UnixTime At(std::int64_t nanoseconds) {
    return Core::UnixTime(Core::Time::FromNanoseconds(nanoseconds));
}

/// The blocks that a reader finds, each with its seconds.
std::vector<std::pair<double, std::string>> Read(const std::string& path) {
    std::vector<std::pair<double, std::string>> blocks;
    CLogFileReader reader(path);
    double seconds = 0.0;
    std::string data;
    while (reader.IsOpen() && reader.GetNextBinary(seconds, data)) {
        blocks.emplace_back(seconds, data);
    }
    return blocks;
}

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Exists(const std::string& path) {
    return std::ifstream(path).is_open();
}

class RecordingWriter : public testing::TestWithParam<CRecordingWriter::EPlace> {
protected:
    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("recording.pcap");
};

} // namespace

TEST_P(RecordingWriter, makes_what_the_reader_reads) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, GetParam()), "");
    EXPECT_EQ(writer.Write(At(1'700'000'000'123'000'000), "first"), "");
    EXPECT_EQ(writer.Write(At(1'700'000'001'000'000'000), std::string(2, '\0')), "");
    ASSERT_EQ(writer.Finish(), "");
    EXPECT_FALSE(writer.IsOpen());
    const auto blocks = Read(m_path);
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_DOUBLE_EQ(blocks[0].first, 1700000000.123);
    EXPECT_EQ(blocks[0].second, "first");
    EXPECT_DOUBLE_EQ(blocks[1].first, 1700000001.0);
    EXPECT_EQ(blocks[1].second, std::string(2, '\0'));
}

TEST_P(RecordingWriter, writes_the_savefile_format_with_nanoseconds) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, GetParam()), "");
    ASSERT_EQ(writer.Write(At(1'700'000'000'123'456'789), "block"), "");
    const std::uint64_t size = writer.Size();
    ASSERT_EQ(writer.Finish(), "");
    const std::string wanted = CRecordingBytes()
                                   .Nanoseconds()
                                   .SnapLength(65536)
                                   .Block(1'700'000'000, 123'456'789, "block")
                                   .Take();
    EXPECT_EQ(Content(m_path), wanted);
    EXPECT_EQ(size, wanted.size());
}

TEST_P(RecordingWriter, cuts_a_long_block_into_several_of_the_same_time) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, GetParam()), "");
    ASSERT_EQ(writer.Write(At(5'000'000'000), std::string(65536, 'a') + std::string(65536, 'b')),
              "");
    ASSERT_EQ(writer.Write(At(6'000'000'000), std::string(65537, 'c')), "");
    ASSERT_EQ(writer.Finish(), "");
    const std::vector<std::pair<double, std::string>> wanted{{5.0, std::string(65536, 'a')},
                                                             {5.0, std::string(65536, 'b')},
                                                             {6.0, std::string(65536, 'c')},
                                                             {6.0, "c"}};
    EXPECT_EQ(Read(m_path), wanted);
}

TEST_P(RecordingWriter, writes_the_nearest_time_that_the_format_can_tell) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, GetParam()), "");
    ASSERT_EQ(writer.Write(At(-1), "before"), "");
    ASSERT_EQ(writer.Write(At(5'000'000'000'000'000'000), "after"), "");
    ASSERT_EQ(writer.Finish(), "");
    const auto blocks = Read(m_path);
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].first, 0.0);
    EXPECT_NEAR(blocks[1].first, 4294967295.999999999, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Places, RecordingWriter, testing::Values(whenWhole, atOnce),
                         [](const auto& each) {
                             return each.param == whenWhole ? "when_whole" : "at_once";
                         });

TEST_F(RecordingWriter, leaves_what_was_there_until_it_is_whole) {
    m_folder.Write("recording.pcap", "old");
    {
        CRecordingWriter writer;
        ASSERT_EQ(writer.Open(m_path), "");
        ASSERT_EQ(writer.Write(Core::UnixTime(), "new"), "");
    }
    EXPECT_EQ(Content(m_path), "old");
    EXPECT_FALSE(Exists(m_path + ".part"));
}

TEST_F(RecordingWriter, says_why_it_cannot_begin) {
    CRecordingWriter writer;
    EXPECT_EQ(writer.Open("/nowhere/recording"),
              "/nowhere/recording.part: No such file or directory");
    EXPECT_EQ(writer.Open("/nowhere/recording", atOnce),
              "/nowhere/recording: No such file or directory");
    EXPECT_FALSE(writer.IsOpen());
}

TEST_F(RecordingWriter, replaces_nothing_when_it_writes_in_its_place) {
    m_folder.Write("recording.pcap", "old");
    CRecordingWriter writer;
    EXPECT_EQ(writer.Open(m_path, atOnce), m_path + ": File exists");
    EXPECT_EQ(Content(m_path), "old");
}

TEST_F(RecordingWriter, leaves_nothing_when_there_is_no_room_to_begin) {
    const CFileSizeLimit limit(10);
    CRecordingWriter writer;
    EXPECT_EQ(writer.Open(m_path, atOnce), m_path + ": File too large");
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_FALSE(Exists(m_path));
}

TEST_F(RecordingWriter, has_each_block_in_its_place_at_once) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, atOnce), "");
    EXPECT_EQ(Read(m_path).size(), 0U);
    for (std::size_t i = 1; i < 4; ++i) {
        ASSERT_EQ(writer.Write(Core::UnixTime(), "block"), "");
        EXPECT_EQ(Read(m_path).size(), i);
    }
}

TEST_F(RecordingWriter, keeps_in_its_place_what_was_not_finished) {
    {
        CRecordingWriter writer;
        ASSERT_EQ(writer.Open(m_path, atOnce), "");
        ASSERT_EQ(writer.Write(Core::UnixTime(), "block"), "");
    }
    EXPECT_EQ(Read(m_path).size(), 1U);
}

TEST_F(RecordingWriter, takes_back_a_block_that_did_not_fit_and_goes_on_when_there_is_room) {
    CRecordingWriter writer;
    ASSERT_EQ(writer.Open(m_path, atOnce), "");
    ASSERT_EQ(writer.Write(Core::UnixTime(), "first"), "");
    const std::uint64_t size = writer.Size();
    {
        const CFileSizeLimit limit(size + 20); // within the block
        EXPECT_EQ(writer.Write(Core::UnixTime(), "second"), m_path + ": File too large");
        EXPECT_EQ(writer.Write(Core::UnixTime(), "third"), m_path + ": File too large");
    }
    EXPECT_EQ(Content(m_path).size(), size);
    EXPECT_EQ(writer.Write(Core::UnixTime(), "fourth"), "");
    ASSERT_EQ(writer.Finish(), "");
    const std::vector<std::pair<double, std::string>> wanted{{0.0, "first"}, {0.0, "fourth"}};
    EXPECT_EQ(Read(m_path), wanted);
}
