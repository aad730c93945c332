#include "Control/LineFile.h"

#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

class LineFile : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    bool OpenWith(const std::string& bytes) { return m_file.Open(m_folder.Write("file", bytes)); }
    void Append(const std::string& bytes) const {
        std::ofstream(m_folder.Path("file"), std::ios::app) << bytes;
    }
    /// Every line up to the read that meets the end.
    Lines ReadAll() {
        Lines lines;
        do {
            lines.push_back(m_file.ReadLine());
        } while (!m_file.IsAtEnd());
        return lines;
    }
    Lines LinesOf(const std::string& bytes) { return OpenWith(bytes) ? ReadAll() : Lines{}; }

    /// The descriptor that the next file would get: higher when one was left open.
    static int NextDescriptor() {
        const int descriptor = dup(STDERR_FILENO);
        close(descriptor);
        return descriptor;
    }

    CTemporaryFolder m_folder;
    CLineFile m_file;
};

} // namespace

TEST_F(LineFile, gives_lines_without_their_line_feeds) {
    EXPECT_EQ(LinesOf("first\nsecond"), (Lines{"first", "second"}));
}

TEST_F(LineFile, gives_an_empty_last_line_behind_the_last_line_feed) {
    EXPECT_EQ(LinesOf("first\n"), (Lines{"first", ""}));
    EXPECT_EQ(LinesOf("\n\n"), (Lines{"", "", ""}));
    EXPECT_EQ(LinesOf(""), Lines{""});
}

TEST_F(LineFile, keeps_every_other_character) {
    const std::string odd("\t \r a\0b\x80\xff \r", 12);
    EXPECT_EQ(LinesOf(odd + "\nx\r\n"), (Lines{odd, "x\r", ""}));
}

TEST_F(LineFile, gives_a_line_of_full_length_once) {
    ASSERT_EQ(CLineFile::kMaxLine, 1023U);
    const std::string full(1023, 'a');
    EXPECT_EQ(LinesOf(full), Lines{full});
    EXPECT_EQ(LinesOf(full + "\nnext"), (Lines{full, "next"}));
    EXPECT_EQ(LinesOf(full + "\n"), (Lines{full, ""}));
}

TEST_F(LineFile, gives_the_rest_of_a_longer_line_as_the_next_lines) {
    const std::string full(1023, 'a');
    EXPECT_EQ(LinesOf(full + "b\nnext"), (Lines{full, "b", "next"}));
    EXPECT_EQ(LinesOf(full + "\r\nnext"), (Lines{full, "\r", "next"}));
    EXPECT_EQ(LinesOf(full + full + "c"), (Lines{full, full, "c"}));
    EXPECT_EQ(LinesOf(full + full + "\n"), (Lines{full, full, ""}));
}

TEST_F(LineFile, counts_the_bytes_of_a_read_with_its_line_end) {
    ASSERT_TRUE(OpenWith("ab\r\n\n" + std::string(1024, 'c') + "\nd"));
    EXPECT_EQ(m_file.Size(), 1031);
    EXPECT_EQ(m_file.BytesRead(), 0);
    for (const std::int64_t count : {4, 5, 1028, 1030, 1031, 1031}) {
        m_file.ReadLine();
        EXPECT_EQ(m_file.BytesRead(), count);
    }
    EXPECT_FALSE(m_file.HasFailed());
}

TEST_F(LineFile, is_at_its_end_once_a_read_has_met_it) {
    ASSERT_TRUE(OpenWith("a\nb"));
    EXPECT_FALSE(m_file.IsAtEnd());
    m_file.ReadLine();
    EXPECT_FALSE(m_file.IsAtEnd());
    m_file.ReadLine();
    EXPECT_TRUE(m_file.IsAtEnd());
}

TEST_F(LineFile, is_not_at_its_end_when_the_last_line_feed_was_read) {
    ASSERT_TRUE(OpenWith("a\n"));
    m_file.ReadLine();
    EXPECT_FALSE(m_file.IsAtEnd());
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_TRUE(m_file.IsAtEnd());
}

TEST_F(LineFile, gives_empty_lines_past_the_end) {
    EXPECT_EQ(LinesOf("a"), Lines{"a"});
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_EQ(m_file.BytesRead(), 1);
    EXPECT_TRUE(m_file.IsAtEnd());
    EXPECT_FALSE(m_file.HasFailed());
}

TEST_F(LineFile, gives_empty_lines_and_no_end_while_nothing_is_open) {
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_FALSE(m_file.IsAtEnd());
    EXPECT_FALSE(m_file.HasFailed());
    EXPECT_EQ(m_file.Size(), 0);
    EXPECT_EQ(m_file.BytesRead(), 0);
}

TEST_F(LineFile, keeps_its_counts_when_it_is_closed) {
    ASSERT_TRUE(OpenWith("ab\ncd"));
    EXPECT_TRUE(m_file.IsOpen());
    m_file.ReadLine();
    m_file.Close();
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_FALSE(m_file.IsAtEnd());
    EXPECT_EQ(m_file.Size(), 5);
    EXPECT_EQ(m_file.BytesRead(), 3);
}

TEST_F(LineFile, begins_anew_with_every_file) {
    EXPECT_EQ(LinesOf("ab\ncd"), (Lines{"ab", "cd"}));
    ASSERT_TRUE(m_file.Open(m_folder.Write("other", "x\n")));
    EXPECT_FALSE(m_file.IsAtEnd());
    EXPECT_EQ(m_file.Size(), 2);
    EXPECT_EQ(m_file.BytesRead(), 0);
    EXPECT_EQ(m_file.ReadLine(), "x");
}

TEST_F(LineFile, closes_its_file_when_the_next_one_cannot_be_opened) {
    const int descriptor = NextDescriptor();
    ASSERT_TRUE(OpenWith("a\n"));
    EXPECT_FALSE(m_file.Open(m_folder.Path("missing")));
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_EQ(NextDescriptor(), descriptor);
}

TEST_F(LineFile, names_a_missing_file_and_the_reason) {
    const std::string path = m_folder.Path("missing");
    EXPECT_FALSE(m_file.Open(path));
    EXPECT_FALSE(m_file.IsOpen());
    EXPECT_EQ(m_file.LastError(), path + ": No such file or directory");
}

TEST_F(LineFile, opens_nothing_but_regular_files) {
    const std::string pipe = m_folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int descriptor = NextDescriptor();
    for (const std::string& path :
         {m_folder.Path(), pipe, std::string("/dev/null"), std::string("/dev/zero")}) {
        EXPECT_FALSE(m_file.Open(path)) << path;
        EXPECT_FALSE(m_file.IsOpen()) << path;
        EXPECT_EQ(m_file.LastError(), path + ": not a regular file");
    }
    EXPECT_EQ(NextDescriptor(), descriptor);
}

TEST_F(LineFile, follows_a_link_to_a_regular_file) {
    const std::string link = m_folder.Path("link");
    ASSERT_EQ(symlink(m_folder.Write("file", "a").c_str(), link.c_str()), 0);
    ASSERT_TRUE(m_file.Open(link));
    EXPECT_EQ(ReadAll(), Lines{"a"});
}

TEST_F(LineFile, forgets_an_earlier_error_with_a_new_file) {
    EXPECT_FALSE(m_file.Open(m_folder.Path("missing")));
    EXPECT_EQ(LinesOf("a"), Lines{"a"});
    EXPECT_EQ(m_file.LastError(), "");
}

TEST_F(LineFile, closes_its_file_with_its_own_end) {
    const int descriptor = NextDescriptor();
    {
        CLineFile file;
        ASSERT_TRUE(file.Open(m_folder.Write("file", "a")));
        EXPECT_NE(NextDescriptor(), descriptor);
    }
    EXPECT_EQ(NextDescriptor(), descriptor);
}

// Longer than what the C library reads ahead, so that a change is met by a later read.
TEST_F(LineFile, fails_at_the_end_of_a_file_that_has_shrunk) {
    ASSERT_TRUE(OpenWith(std::string(200'000, '\n')));
    m_file.ReadLine();
    EXPECT_FALSE(m_file.HasFailed());
    ASSERT_EQ(truncate(m_folder.Path("file").c_str(), 100'000), 0);
    while (!m_file.IsAtEnd()) {
        EXPECT_FALSE(m_file.HasFailed());
        m_file.ReadLine();
    }
    EXPECT_TRUE(m_file.HasFailed());
    EXPECT_THAT(m_file.LastError(), HasSubstr("changed"));
}

TEST_F(LineFile, fails_at_the_end_of_a_file_that_has_grown) {
    ASSERT_TRUE(OpenWith("a\nb\n"));
    Append("c");
    EXPECT_EQ(ReadAll(), (Lines{"a", "b", "c"}));
    EXPECT_TRUE(m_file.HasFailed());
    EXPECT_THAT(m_file.LastError(), HasSubstr("changed"));
}

TEST_F(LineFile, fails_at_a_file_that_cannot_be_read) {
    // A regular file whose first page cannot be read, for nothing is mapped there.
    ASSERT_TRUE(m_file.Open("/proc/self/mem"));
    EXPECT_EQ(m_file.ReadLine(), "");
    EXPECT_TRUE(m_file.IsAtEnd());
    EXPECT_TRUE(m_file.HasFailed());
    EXPECT_EQ(m_file.LastError(), "Input/output error");
}

TEST_F(LineFile, is_well_again_with_a_new_file) {
    ASSERT_TRUE(m_file.Open("/proc/self/mem"));
    m_file.ReadLine();
    ASSERT_TRUE(m_file.HasFailed());
    EXPECT_EQ(LinesOf("a\n"), (Lines{"a", ""}));
    EXPECT_FALSE(m_file.HasFailed());
}
