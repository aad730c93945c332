#include "ConfigFixture.h"

#include "ChildProcess.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

class ConfigFile : public CConfigFixture {
protected:
    std::string Value(const std::string& key = "k") {
        return m_config.GetString("a", key, "default");
    }

    /// Puts a new file in the place of the old one, as a careful program does.
    void Replace(const std::string& text) const {
        std::filesystem::rename(Folder().Write("temporary", text), Path());
    }

    struct stat Status(const std::string& path) const {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status;
    }

    CConfig m_config{Path()};
};

/// Makes the file look as if it had been written long ago, so that its time stamp is trusted.
void MakeOld(const std::string& path) {
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

} // namespace

TEST_F(ConfigFile, is_read_again_when_it_was_replaced) {
    Write("[a]\nk = 1\n");
    EXPECT_EQ(Value(), "1");
    Replace("[a]\nk = 2\n");
    EXPECT_EQ(Value(), "2");
}

TEST_F(ConfigFile, is_read_again_when_it_was_written_in_place_even_twice_in_one_tick) {
    for (int i = 0; i < 200; ++i) {
        Write("[a]\nk = " + std::to_string(100 + i) + '\n');
        ASSERT_EQ(Value(), std::to_string(100 + i));
    }
}

TEST_F(ConfigFile, is_read_again_when_it_was_written_long_after) {
    Write("[a]\nk = 1\n");
    MakeOld(Path());
    EXPECT_EQ(Value(), "1");
    EXPECT_EQ(Value(), "1");
    Write("[a]\nk = 2\n");
    EXPECT_EQ(Value(), "2");
}

TEST_F(ConfigFile, that_comes_or_goes_is_noticed) {
    EXPECT_EQ(Value(), "default");
    Write("[a]\nk = 1\n");
    EXPECT_EQ(Value(), "1");
    std::filesystem::remove(Path());
    EXPECT_EQ(Value(), "default");
}

TEST_F(ConfigFile, tells_its_broken_lines_once_with_name_and_number) {
    Write("[a]\nnonsense\nk = 1\n[open\n");
    CaptureStderr();
    EXPECT_EQ(Value(), "1");
    EXPECT_EQ(Value(), "1");
    const std::string tail = ": neither \"[section]\" nor \"key = value\", ignored\n";
    EXPECT_EQ(GetCapturedStderr(), Path() + ":2" + tail + Path() + ":4" + tail);
}

TEST_F(ConfigFile, tells_no_broken_line_again_that_another_change_left_as_it_was) {
    Write("[a]\nnonsense\n");
    Value();
    CaptureStderr();
    EXPECT_TRUE(m_config.SetInteger("a", "k", 1));
    Write("[a]\nk = 2\nnonsense\nmore\n");
    EXPECT_EQ(Value(), "2");
    EXPECT_EQ(GetCapturedStderr(),
              Path() + ":4: neither \"[section]\" nor \"key = value\", ignored\n");
}

TEST_F(ConfigFile, that_is_something_else_is_told_in_a_few_lines) {
    std::string text;
    for (int i = 0; i < 500; ++i) {
        text += "nonsense " + std::to_string(i) + '\n';
    }
    Write(text);
    CaptureStderr();
    EXPECT_EQ(Value(), "default");
    const std::string told = GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 11);
    EXPECT_THAT(told, EndsWith(Path() + ": 490 more lines are ignored\n"));
}

TEST_F(ConfigFile, that_is_a_folder_is_told_once_and_never_replaced) {
    std::filesystem::create_directory(Path());
    CaptureStderr();
    EXPECT_EQ(Value(), "default");
    EXPECT_EQ(Value(), "default");
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    EXPECT_EQ(GetCapturedStderr(), Path() + " cannot be read: not a regular file\n" + Path() +
                                       ": [a] k holds for this process only: it cannot be read: "
                                       "not a regular file\n");
    EXPECT_TRUE(std::filesystem::is_directory(Path()));
    EXPECT_EQ(Value(), "1");
}

TEST_F(ConfigFile, that_is_a_pipe_or_too_large_is_not_read) {
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    CaptureStderr();
    EXPECT_EQ(Value(), "default");
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("not a regular file"));
    std::filesystem::remove(Path());
    Write("[a]\nk = 1\n");
    std::filesystem::resize_file(Path(), 4 * 1024 * 1024 + 1);
    CaptureStderr();
    EXPECT_EQ(Value(), "default");
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("larger than 4 MiB"));
}

TEST(ConfigDevice, that_is_empty_reads_as_nothing_and_is_not_replaced) {
    CConfig config("/dev/null");
    CaptureStderr();
    EXPECT_EQ(config.GetString("a", "k", "default"), "default");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_FALSE(RunInChild([] {
                     std::_Exit(CConfig("/dev/null").SetInteger("a", "k", 1) ? 1 : 0);
                 }).HasExitedWith(1));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(ConfigFile, that_is_new_is_for_all_to_read_in_a_folder_made_for_it) {
    const std::string path = Folder().Path("one/two/corvane.conf");
    const mode_t former = umask(077);
    EXPECT_TRUE(CConfig(path).SetInteger("a", "k", 1));
    umask(former);
    EXPECT_EQ(Contents(path), "[a]\nk = 1\n");
    EXPECT_EQ(Status(path).st_mode & 07777U, 0644U);
}

TEST_F(ConfigFile, keeps_its_mode) {
    for (const mode_t mode : {0600U, 0664U, 0640U, 0444U}) {
        Write("[a]\nk = 1\n");
        ASSERT_EQ(chmod(Path().c_str(), mode), 0);
        EXPECT_TRUE(m_config.SetInteger("a", "k", 2));
        EXPECT_EQ(Status(Path()).st_mode & 07777U, mode);
        ASSERT_EQ(chmod(Path().c_str(), 0600), 0);
    }
}

TEST_F(ConfigFile, keeps_its_owner) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can have a file that is another's";
    }
    Write("[a]\nk = 1\n");
    ASSERT_EQ(chown(Path().c_str(), 1234, 2345), 0);
    EXPECT_TRUE(m_config.SetInteger("a", "k", 2));
    EXPECT_EQ(Status(Path()).st_uid, 1234U);
    EXPECT_EQ(Status(Path()).st_gid, 2345U);
}

TEST_F(ConfigFile, is_replaced_and_never_seen_in_part) {
    Write("[a]\nk = 1\n");
    const int former = open(Path().c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_TRUE(m_config.SetString("a", "k", std::string(10'000, 'x')));
    char bytes[100];
    EXPECT_EQ(read(former, bytes, sizeof bytes), 10) << "who reads the old file keeps it";
    close(former);
}

TEST_F(ConfigFile, is_not_written_when_nothing_changes) {
    Write("[a]\nk = 1\n");
    const ino_t former = Status(Path()).st_ino;
    EXPECT_TRUE(m_config.SetInteger("a", "k", 1));
    EXPECT_TRUE(m_config.Remove("a", "other"));
    EXPECT_EQ(Status(Path()).st_ino, former);
    EXPECT_FALSE(std::filesystem::exists(Path() + ".lock"));
}

TEST_F(ConfigFile, leaves_only_itself_and_its_lock_in_the_folder) {
    Folder().Write("corvane.conf.new", "left by a program that was killed");
    EXPECT_TRUE(m_config.SetInteger("a", "k", 1));
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Folder().Path())) {
        names.push_back(entry.path().filename());
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("corvane.conf", "corvane.conf.lock"));
}

TEST_F(ConfigFile, keeps_what_another_program_wrote_meanwhile) {
    Write("[a]\nk = 1\n");
    EXPECT_EQ(Value(), "1");
    Replace("# theirs\n[a]\nk = 1\nl = 2\n");
    EXPECT_TRUE(m_config.SetInteger("a", "k", 3));
    EXPECT_EQ(Contents(), "# theirs\n[a]\nk = 3\nl = 2\n");
    EXPECT_EQ(Value("l"), "2");
}

TEST_F(ConfigFile, loses_nothing_of_what_two_programs_write_at_once) {
    constexpr int kWrites = 40;
    const pid_t child = fork();
    if (child == 0) {
        bool isWritten = true;
        for (int i = 0; i < kWrites; ++i) {
            isWritten =
                CConfig(Path()).SetInteger("theirs", "k" + std::to_string(i), i) && isWritten;
        }
        std::_Exit(isWritten ? 0 : 1);
    }
    for (int i = 0; i < kWrites; ++i) {
        EXPECT_TRUE(m_config.SetInteger("ours", "k" + std::to_string(i), i));
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    for (int i = 0; i < kWrites; ++i) {
        EXPECT_EQ(m_config.GetInteger("ours", "k" + std::to_string(i), -1), i);
        EXPECT_EQ(m_config.GetInteger("theirs", "k" + std::to_string(i), -1), i);
    }
}

TEST_F(ConfigFile, is_written_through_a_symbolic_link_that_stays) {
    std::filesystem::create_directory(Folder().Path("real"));
    Folder().Write("real/target.conf", "[a]\nk = 1\n");
    std::filesystem::create_symlink("real/target.conf", Path());
    EXPECT_TRUE(m_config.SetInteger("a", "k", 2));
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    EXPECT_EQ(Contents(Folder().Path("real/target.conf")), "[a]\nk = 2\n");
}

TEST_F(ConfigFile, is_made_where_a_symbolic_link_leads) {
    const std::string target = Folder().Path("later/target.conf");
    std::filesystem::create_symlink(target, Folder().Path("middle"));
    std::filesystem::create_symlink("middle", Path());
    EXPECT_TRUE(m_config.SetInteger("a", "k", 2));
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    EXPECT_EQ(Contents(target), "[a]\nk = 2\n");
}
