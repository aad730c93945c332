#include "platform/LogFileReader.h"

#include "Support/CrowdedDescriptors.h"
#include "Support/RecordingBytes.h"
#include "Support/TemporaryFolder.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

struct SBlock {
    double timestamp;
    std::string bytes;

    bool operator==(const SBlock&) const = default;
};

void PrintTo(const SBlock& block, std::ostream* out) {
    *out << block.timestamp << " \"" << block.bytes << '"';
}

/// A file, what a reader makes of it, and what it says on standard error.
class Recording : public testing::Test {
protected:
    std::vector<SBlock> Read(const std::string& file) {
        return ReadPath(m_folder.Write("r", file));
    }

    std::vector<SBlock> ReadPath(const std::string& path) {
        testing::internal::CaptureStderr();
        std::vector<SBlock> blocks;
        CLogFileReader reader(path);
        m_isOpen = reader.IsOpen();
        SBlock block{};
        while (m_isOpen && reader.GetNextBinary(block.timestamp, block.bytes)) {
            blocks.push_back(block);
        }
        m_told = testing::internal::GetCapturedStderr();
        return blocks;
    }

    std::string Refusal(const std::string& kind) const {
        return "CLogFileReader: " + m_folder.Path("r") + ": this is " + kind +
               "; a recording is a classic pcap file (version 2.4) with link type 147 (USER0)\n";
    }

    std::string Damage(int position, const std::string& kind) const {
        return "CLogFileReader: " + m_folder.Path("r") + ": damaged at byte " +
               std::to_string(position) + " (" + kind + "); the recording ends there\n";
    }

    const CTemporaryFolder m_folder;
    std::string m_told;
    bool m_isOpen = false;
};

CRecordingBytes TwoBlocks() {
    return CRecordingBytes().Block(100, 0, "first").Block(101, 0, "second");
}

constexpr int kAfterFirst = 24 + 16 + 5;

struct SForeignCase {
    const char* name;
    std::string start;
    const char* kind;
};

class ForeignFile : public Recording, public testing::WithParamInterface<SForeignCase> {};

/// What a pcap tool says about a file; empty when there is no such tool.
std::string SaidBy(const std::string& command) {
    std::string said;
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> bytes;
    std::size_t count = 0;
    while (pipe != nullptr && (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0) {
        said.append(bytes.data(), count);
    }
    const bool hasRun = pipe != nullptr && ::pclose(pipe) == 0;
    return hasRun ? said : std::string();
}

} // namespace

TEST_F(Recording, gives_its_blocks_in_order_with_their_times) {
    EXPECT_THAT(Read(TwoBlocks().Take()),
                ElementsAre(SBlock{100.0, "first"}, SBlock{101.0, "second"}));
    EXPECT_TRUE(m_isOpen);
    EXPECT_EQ(m_told, "");
}

TEST_F(Recording, is_read_in_little_endian_microseconds) {
    EXPECT_THAT(Read(CRecordingBytes().Block(1000000000, 250000, "x").Take()),
                ElementsAre(SBlock{1000000000.25, "x"}));
}

TEST_F(Recording, is_read_in_big_endian_microseconds) {
    EXPECT_THAT(Read(CRecordingBytes().BigEndian().Block(1000000000, 250000, "x").Take()),
                ElementsAre(SBlock{1000000000.25, "x"}));
}

TEST_F(Recording, is_read_in_little_endian_nanoseconds) {
    EXPECT_THAT(Read(CRecordingBytes().Nanoseconds().Block(1000000000, 250000000, "x").Take()),
                ElementsAre(SBlock{1000000000.25, "x"}));
}

TEST_F(Recording, is_read_in_big_endian_nanoseconds) {
    EXPECT_THAT(Read(CRecordingBytes().BigEndian().Nanoseconds().Block(7, 125000000, "x").Take()),
                ElementsAre(SBlock{7.125, "x"}));
}

TEST_F(Recording, has_times_up_to_the_last_second_of_its_format) {
    EXPECT_THAT(Read(CRecordingBytes().Block(0xFFFFFFFF, 999999, "x").Take()),
                ElementsAre(SBlock{4294967295.999999, "x"}));
}

TEST_F(Recording, keeps_every_byte_value_of_a_block) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_THAT(Read(CRecordingBytes().Block(1, 0, bytes).Take()), ElementsAre(SBlock{1.0, bytes}));
}

TEST_F(Recording, without_a_byte_is_open_and_has_no_blocks) {
    EXPECT_THAT(Read(""), IsEmpty());
    EXPECT_TRUE(m_isOpen);
    EXPECT_EQ(m_told, "");
}

TEST_F(Recording, of_a_header_alone_has_no_blocks) {
    EXPECT_THAT(Read(CRecordingBytes().Take()), IsEmpty());
    EXPECT_TRUE(m_isOpen);
    EXPECT_EQ(m_told, "");
}

TEST_F(Recording, skips_blocks_of_length_zero) {
    EXPECT_THAT(Read(CRecordingBytes().Block(1, 0, "").Block(2, 0, "x").Block(3, 0, "").Take()),
                ElementsAre(SBlock{2.0, "x"}));
    EXPECT_EQ(m_told, "");
}

TEST_F(Recording, cut_in_its_header_has_no_blocks_and_is_told) {
    for (const std::size_t size : {4u, 23u}) {
        const std::string path =
            m_folder.Write(std::to_string(size), TwoBlocks().Take().substr(0, size));
        EXPECT_THAT(ReadPath(path), IsEmpty());
        EXPECT_TRUE(m_isOpen);
        EXPECT_THAT(m_told, HasSubstr(path + ": damaged at byte 0 (the file header is cut off)"));
    }
}

TEST_F(Recording, cut_in_a_block_ends_with_the_last_whole_one_and_is_told) {
    EXPECT_THAT(Read(TwoBlocks().Take().substr(0, kAfterFirst + 16 + 5)),
                ElementsAre(SBlock{100.0, "first"}));
    EXPECT_THAT(m_told, HasSubstr(Damage(kAfterFirst, "a block is cut off")));
}

TEST_F(Recording, cut_behind_a_block_header_ends_with_the_last_whole_block) {
    EXPECT_THAT(Read(TwoBlocks().Take().substr(0, kAfterFirst + 16)),
                ElementsAre(SBlock{100.0, "first"}));
    EXPECT_THAT(m_told, HasSubstr(Damage(kAfterFirst, "a block is cut off")));
}

TEST_F(Recording, cut_in_a_block_header_ends_with_the_last_whole_block_and_is_told) {
    EXPECT_THAT(Read(TwoBlocks().Take().substr(0, kAfterFirst + 1)),
                ElementsAre(SBlock{100.0, "first"}));
    EXPECT_THAT(m_told, HasSubstr(Damage(kAfterFirst, "a block header is cut off")));
}

TEST_F(Recording, ends_where_a_length_cannot_be_one) {
    const std::string file = CRecordingBytes()
                                 .Block(100, 0, "first")
                                 .BlockHeader(101, 0, 0xFFFFFFFF)
                                 .Bytes("garbage")
                                 .Take();
    EXPECT_THAT(Read(file), ElementsAre(SBlock{100.0, "first"}));
    EXPECT_THAT(m_told, HasSubstr(Damage(kAfterFirst, "no block header")));
}

TEST_F(Recording, ends_where_a_fraction_of_a_second_cannot_be_one) {
    const std::string file =
        CRecordingBytes().Block(100, 0, "first").Block(101, 1000000, "x").Take();
    EXPECT_THAT(Read(file), ElementsAre(SBlock{100.0, "first"}));
    EXPECT_THAT(m_told, HasSubstr(Damage(kAfterFirst, "no block header")));
}

TEST_F(Recording, stays_ended_once_it_has_whatever_follows_the_damage) {
    const std::string file = CRecordingBytes()
                                 .Block(100, 0, "first")
                                 .BlockHeader(101, 0, 0xFFFFFFFF)
                                 .Block(102, 0, "behind the damage")
                                 .Take();
    CLogFileReader reader(m_folder.Write("r", file));
    double timestamp = 0.0;
    std::string data;
    ASSERT_TRUE(reader.GetNextBinary(timestamp, data));
    testing::internal::CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(reader.GetNextBinary(timestamp, data));
        EXPECT_EQ(timestamp, 100.0);
        EXPECT_EQ(data, "");
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr(Damage(kAfterFirst, "no block header")));
}

TEST_F(Recording, may_have_blocks_of_256_KiB_whatever_its_header_says) {
    const std::string largest(256 * 1024, 'b');
    EXPECT_THAT(Read(CRecordingBytes().SnapLength(0).Block(1, 0, largest).Take()),
                ElementsAre(SBlock{1.0, largest}));
    EXPECT_THAT(Read(CRecordingBytes().SnapLength(0).Block(1, 0, largest + 'x').Take()), IsEmpty());
}

TEST_F(Recording, may_have_blocks_as_long_as_its_header_says) {
    const std::string large(300 * 1024, 'b');
    EXPECT_THAT(Read(CRecordingBytes().SnapLength(300 * 1024).Block(1, 0, large).Take()),
                ElementsAre(SBlock{1.0, large}));
}

TEST_F(Recording, never_has_blocks_above_16_MiB) {
    const std::uint32_t most = 16 * 1024 * 1024;
    const std::string largest(most, 'b');
    EXPECT_EQ(Read(CRecordingBytes().SnapLength(0xFFFFFFFF).Block(1, 0, largest).Take()).size(),
              1u);
    EXPECT_EQ(
        Read(CRecordingBytes().SnapLength(0xFFFFFFFF).Block(1, 0, largest + 'x').Take()).size(),
        0u);
    EXPECT_THAT(m_told, HasSubstr(Damage(24, "no block header")));
}

TEST_F(Recording, of_another_link_type_is_refused) {
    EXPECT_THAT(Read(TwoBlocks().LinkType(1).Take()), IsEmpty());
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(Refusal("a pcap file of link type 1")));
}

TEST_F(Recording, may_tell_of_check_sequences_beside_its_link_type) {
    EXPECT_EQ(Read(TwoBlocks().LinkType(0x24000000 | 147).Take()).size(), 2u);
}

TEST_F(Recording, of_another_version_is_refused) {
    Read(TwoBlocks().Version(3, 4).Take());
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(Refusal("a pcap file of version 3.4")));
    Read(TwoBlocks().Version(2, 3).Take());
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(Refusal("a pcap file of version 2.3")));
}

TEST_P(ForeignFile, is_refused_by_its_name) {
    EXPECT_THAT(Read(GetParam().start), IsEmpty());
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(Refusal(GetParam().kind)));
}

INSTANTIATE_TEST_SUITE_P(
    All, ForeignFile,
    testing::Values(SForeignCase{"pcapng", "\x0A\x0D\x0D\x0A and so on", "a pcapng file"},
                    SForeignCase{"gzip", "\x1F\x8B\x08", "a gzip file"},
                    SForeignCase{"zstd", "\x28\xB5\x2F\xFD", "a zstd file"},
                    SForeignCase{"capture", "\xAA\x44\x12\x1C", "a raw receiver capture"},
                    SForeignCase{"text", "#BESTPOSA,COM1,0,55.0", "a file of some other kind"},
                    SForeignCase{"shorter_than_a_magic", "\xD4\xC3\xB2",
                                 "a file of some other kind"}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST_F(Recording, that_is_missing_is_told_with_its_reason) {
    ReadPath(m_folder.Path("none"));
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(m_folder.Path("none") + ": No such file or directory\n"));
}

TEST_F(Recording, that_is_a_folder_is_told_with_its_reason) {
    ReadPath(m_folder.Path());
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr("CLogFileReader: " + m_folder.Path() + ": Is a directory\n"));
}

TEST_F(Recording, that_is_a_pipe_is_refused_without_waiting) {
    ASSERT_EQ(::mkfifo(m_folder.Path("r").c_str(), 0600), 0);
    ReadPath(m_folder.Path("r"));
    EXPECT_FALSE(m_isOpen);
    EXPECT_THAT(m_told, HasSubstr(Refusal("a pipe")));
}

TEST_F(Recording, whose_descriptor_select_could_not_watch_is_refused) {
    const std::string path = m_folder.Write("many", TwoBlocks().Take());
    testing::internal::CaptureStderr();
    bool isOpen = false;
    bool isComplete = false;
    {
        const CCrowdedDescriptors crowd;
        isComplete = crowd.IsComplete();
        isOpen = CLogFileReader(path).IsOpen();
    }
    const std::string told = testing::internal::GetCapturedStderr();
    if (!isComplete) {
        GTEST_SKIP() << "the limit of descriptors lies below FD_SETSIZE";
    }
    EXPECT_FALSE(isOpen);
    EXPECT_THAT(told, HasSubstr("CLogFileReader: " + path + ": Too many open files\n"));
}

TEST_F(Recording, has_the_descriptor_of_its_file_while_open) {
    const CLogFileReader reader(m_folder.Write("r", TwoBlocks().Take()));
    struct stat ofReader {};
    struct stat ofFile {};
    ASSERT_EQ(::fstat(reader.Descriptor(), &ofReader), 0);
    ASSERT_EQ(::stat(m_folder.Path("r").c_str(), &ofFile), 0);
    EXPECT_EQ(ofReader.st_ino, ofFile.st_ino);
    EXPECT_NE(::fcntl(reader.Descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(Recording, that_is_refused_has_no_descriptor) {
    testing::internal::CaptureStderr();
    const CLogFileReader reader(m_folder.Path("none"));
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(reader.Descriptor(), -1);
}

TEST_F(Recording, is_the_same_to_a_pcap_tool) {
    if (SaidBy("capinfos --version").empty()) {
        GTEST_SKIP() << "capinfos is not installed";
    }
    const std::array files{
        CRecordingBytes(),
        CRecordingBytes().BigEndian(),
        CRecordingBytes().Nanoseconds(),
        CRecordingBytes().BigEndian().Nanoseconds(),
    };
    for (CRecordingBytes file : files) {
        const std::string bytes =
            file.Block(1000000000, 500000, "first").Block(1000000001, 500000, "second!").Take();
        const std::vector<SBlock> blocks = Read(bytes);
        ASSERT_EQ(blocks.size(), 2u);
        // In a table: the file's encapsulation, its packets, their bytes, and the first time.
        const std::string said =
            SaidBy("capinfos -T -r -M -S -E -c -d -a -e '" + m_folder.Path("r") + "'");
        EXPECT_THAT(said, AllOf(HasSubstr("user0"), HasSubstr("\t2\t"), HasSubstr("\t12\t")));
        std::array<char, 64> time;
        for (const SBlock& block : blocks) {
            std::snprintf(time.data(), time.size(), "\t%.6f", block.timestamp);
            EXPECT_THAT(said, HasSubstr(time.data()));
        }
    }
}
