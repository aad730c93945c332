#include "hub/recording/Recordings.h"

#include "RecordingTesting.h"
#include "Support/FileSizeLimit.h"
#include "Support/TemporaryFolder.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace RecordingTesting;
using Hub::CRecordings;
using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;
using TFolder = std::map<std::string, TBlocks>;

constexpr std::uint64_t kPacketHeader = 16;
constexpr std::uint64_t kFileHeader = 24;
constexpr std::uint64_t kManyBytes = 1'000'000'000;

class Recordings : public testing::Test {
protected:
    void Begin(std::uint64_t fileBytes = kManyBytes, std::uint64_t folderBytes = kManyBytes,
               double fileSeconds = 3600.0) {
        m_recordings.emplace(m_path, Hub::SRecordingLimits{fileBytes, fileSeconds, folderBytes});
    }
    void Add(const std::string& name, double time, const std::string& bytes) {
        m_recordings->Add(Block(name, kStart + time, bytes));
    }
    TFolder Folder() const { return ReadFolder(m_path); }
    std::vector<std::string> FileNames() const {
        std::vector<std::string> names;
        for (const auto& [name, blocks] : Folder()) {
            names.push_back(name);
        }
        return names;
    }

    template <class TWork>
    std::string ToldBy(TWork work) const {
        testing::internal::CaptureStderr();
        work();
        return testing::internal::GetCapturedStderr();
    }

    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("state/recordings");
    std::optional<CRecordings> m_recordings;
};

} // namespace

TEST_F(Recordings, are_one_file_for_each_name_by_the_time_of_its_first_block) {
    Begin();
    Add("NovatelPortHandler", 0.5, "a");
    Add("NovatelPortHandler2", 1.0, "b");
    Add("NovatelPortHandler", 1.5, "c");
    m_recordings.reset();
    EXPECT_EQ(Folder(),
              (TFolder{{"NovatelPortHandler-20231114T221320Z.pcap", {{0.5, "a"}, {1.5, "c"}}},
                       {"NovatelPortHandler2-20231114T221321Z.pcap", {{1.0, "b"}}}}));
}

TEST_F(Recordings, hold_each_block_as_soon_as_it_was_added) {
    Begin();
    Add("a", 0.0, "first");
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221320Z.pcap", {{0.0, "first"}}}}));
    Add("a", 1.0, "second");
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221320Z.pcap", {{0.0, "first"}, {1.0, "second"}}}}));
}

TEST_F(Recordings, end_before_they_are_larger_than_a_file_may_be) {
    Begin(kFileHeader + 2 * (kPacketHeader + 10));
    for (int i = 0; i < 5; ++i) {
        Add("a", i, std::string(10, 'x'));
    }
    EXPECT_THAT(Folder(), ElementsAre(Pair("a-20231114T221320Z.pcap", testing::SizeIs(2)),
                                      Pair("a-20231114T221322Z.pcap", testing::SizeIs(2)),
                                      Pair("a-20231114T221324Z.pcap", testing::SizeIs(1))));
}

TEST_F(Recordings, end_when_they_are_old_also_by_a_clock_that_was_set_back) {
    Begin(kManyBytes, kManyBytes, 60.0);
    for (const double time : {0.0, 59.9, 60.0, 119.0, 30.0, 0.0}) {
        Add("a", time, "x");
    }
    EXPECT_THAT(Folder(), ElementsAre(Pair("a-20231114T221320Z-2.pcap", testing::SizeIs(1)),
                                      Pair("a-20231114T221320Z.pcap", testing::SizeIs(2)),
                                      Pair("a-20231114T221420Z.pcap", testing::SizeIs(3))));
}

TEST_F(Recordings, end_on_order_and_begin_anew) {
    Begin();
    Add("a", 0.0, "first");
    m_recordings->End("a");
    m_recordings->End("a");
    Add("a", 5.0, "second");
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221320Z.pcap", {{0.0, "first"}}},
                                 {"a-20231114T221325Z.pcap", {{5.0, "second"}}}}));
}

TEST_F(Recordings, of_an_earlier_run_are_never_written_to) {
    Begin();
    Add("a", 0.0, "first");
    Begin();
    Add("a", 0.25, "second");
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221320Z.pcap", {{0.0, "first"}}},
                                 {"a-20231114T221320Z-2.pcap", {{0.25, "second"}}}}));
}

TEST_F(Recordings, have_names_that_stay_in_the_folder) {
    Begin();
    for (const char* const name : {"../up", "/root", ".hidden", "a b\n", "", "\xC3\xA4"}) {
        Add(name, 0.0, "x");
    }
    EXPECT_THAT(FileNames(),
                testing::UnorderedElementsAre(
                    "%2E.%2Fup-20231114T221320Z.pcap", "%2Froot-20231114T221320Z.pcap",
                    "%2Ehidden-20231114T221320Z.pcap", "a%20b%0A-20231114T221320Z.pcap",
                    "-20231114T221320Z.pcap", "%C3%A4-20231114T221320Z.pcap"));
}

TEST_F(Recordings, have_names_that_a_file_system_takes) {
    Begin();
    Add(std::string(1000, '/'), 0.0, "x");
    EXPECT_EQ(FileNames().size(), 1U);
}

TEST_F(Recordings, of_long_names_are_told_apart_by_a_number) {
    Begin();
    Add(std::string(200, 'a') + "1", 0.0, "first");
    Add(std::string(200, 'a') + "2", 0.0, "second");
    const std::string stem = std::string(100, 'a') + "-20231114T221320Z";
    EXPECT_EQ(Folder(),
              (TFolder{{stem + ".pcap", {{0.0, "first"}}}, {stem + "-2.pcap", {{0.0, "second"}}}}));
}

TEST_F(Recordings, go_oldest_first_when_all_are_more_than_the_folder_may_hold) {
    constexpr std::uint64_t kFile = kFileHeader + kPacketHeader + 1000;
    Begin(kFile, 4 * kFile);
    for (int i = 0; i < 7; ++i) {
        Add(i % 2 == 0 ? "a" : "b", i, std::string(1000, 'x'));
        // Far enough apart for the clock of the file system.
        std::filesystem::last_write_time(m_path + "/" + (i % 2 == 0 ? "a" : "b") +
                                             "-20231114T22132" + std::to_string(i) + "Z.pcap",
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::seconds(100 - i));
    }
    EXPECT_THAT(FileNames(), ElementsAre("a-20231114T221324Z.pcap", "a-20231114T221326Z.pcap",
                                         "b-20231114T221323Z.pcap", "b-20231114T221325Z.pcap"));
}

TEST_F(Recordings, of_earlier_runs_count_too) {
    constexpr std::uint64_t kFile = kFileHeader + kPacketHeader + 1000;
    Begin(kFile, 2 * kFile);
    Add("a", 0.0, std::string(1000, 'x'));
    std::filesystem::last_write_time(m_path + "/a-20231114T221320Z.pcap",
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::seconds(100));
    Begin(kFile, 2 * kFile);
    Add("a", 1.0, std::string(1000, 'x'));
    Add("a", 2.0, std::string(1000, 'x'));
    EXPECT_THAT(FileNames(), ElementsAre("a-20231114T221321Z.pcap", "a-20231114T221322Z.pcap"));
}

TEST_F(Recordings, leave_other_files_of_the_folder_alone) {
    std::filesystem::create_directories(m_path);
    std::ofstream(m_path + "/notes.txt") << std::string(5000, 'x');
    Begin(500, 1000);
    Add("a", 0.0, std::string(400, 'x'));
    Add("a", 1.0, std::string(400, 'x'));
    EXPECT_THAT(FileNames(),
                ElementsAre("a-20231114T221320Z.pcap", "a-20231114T221321Z.pcap", "notes.txt"));
}

TEST_F(Recordings, end_and_go_when_they_are_the_oldest_while_they_are_written) {
    Begin(kManyBytes, 3000);
    Add("old", 0.0, std::string(1000, 'x'));
    std::filesystem::last_write_time(m_path + "/old-20231114T221320Z.pcap",
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::seconds(100));
    Add("new", 1.0, std::string(1000, 'x'));
    Add("new", 2.0, std::string(400, 'x'));
    Add("third", 3.0, std::string(1000, 'x'));
    EXPECT_THAT(FileNames(),
                ElementsAre("new-20231114T221321Z.pcap", "third-20231114T221323Z.pcap"));
    Add("old", 4.0, "again");
    EXPECT_THAT(FileNames(), testing::Contains("old-20231114T221324Z.pcap"));
}

TEST_F(Recordings, take_no_more_than_half_of_the_folder_each) {
    Begin(kManyBytes, 4000);
    for (int i = 0; i < 20; ++i) {
        Add("a", i, std::string(500, 'x'));
        std::uintmax_t bytes = 0;
        for (const auto& file : std::filesystem::directory_iterator(m_path)) {
            EXPECT_LE(file.file_size(), 2000U);
            bytes += file.file_size();
        }
        EXPECT_LE(bytes, 4000U);
    }
    EXPECT_GE(FileNames().size(), 2U);
}

TEST_F(Recordings, begin_anew_when_their_file_is_taken_away) {
    Begin();
    Add("a", 0.0, "first");
    const std::string kept = m_folder.Path("kept");
    std::filesystem::rename(m_path + "/a-20231114T221320Z.pcap", kept);
    Add("a", 1.0, "second");
    EXPECT_EQ(Read(kept), (TBlocks{{0.0, "first"}}));
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221321Z.pcap", {{1.0, "second"}}}}));
    std::filesystem::remove_all(m_path);
    Add("a", 2.0, "third");
    EXPECT_EQ(Folder(), (TFolder{{"a-20231114T221322Z.pcap", {{2.0, "third"}}}}));
}

TEST_F(Recordings, tell_once_of_a_full_disk_and_go_on_when_there_is_room) {
    Begin();
    Add("a", 0.0, "first");
    const std::string path = m_path + "/a-20231114T221320Z.pcap";
    EXPECT_EQ(ToldBy([&] {
                  const CFileSizeLimit limit(1000); // which what is told keeps as well
                  Add("a", 1.0, std::string(1000, 'x'));
                  Add("a", 2.0, std::string(1000, 'x'));
              }),
              "The recordings: cannot write to " + path + ": File too large\n");
    EXPECT_EQ(ToldBy([&] { Add("a", 3.0, "last"); }), "The recordings: they go on\n");
    EXPECT_EQ(Read(path), (TBlocks{{0.0, "first"}, {3.0, "last"}}));
}

TEST_F(Recordings, tell_once_that_none_can_be_begun) {
    m_folder.Write("state", "");
    Begin();
    EXPECT_EQ(ToldBy([&] {
                  Add("a", 0.0, "x");
                  Add("b", 1.0, "x");
              }),
              "The recordings: " + m_folder.Path("state") + " is no folder\n");
}

TEST_F(Recordings, tell_why_none_can_be_begun_once_though_each_has_another_name) {
    CRecordings recordings("/proc/self", {kManyBytes, 3600.0, kManyBytes});
    EXPECT_EQ(ToldBy([&] {
                  recordings.Add(Block("a", kStart, "x"));
                  recordings.Add(Block("a", kStart + 1.0, "x"));
              }),
              "The recordings: none can be begun in /proc/self: No such file or directory\n");
}
