#include "ConfigFixture.h"

#include "ChildProcess.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

using Values = std::map<std::string, std::string>;

/// A file that cannot be written: its folder's place is taken by a file.
class UnwritableConfig : public CConfigFixture {
protected:
    void SetUp() override { Folder().Write("place", "taken"); }

    void MakeWritable() { std::filesystem::remove(Folder().Path("place")); }
    std::string File() const { return Folder().Path("place/corvane.conf"); }

    CConfig m_config{File()};
};

/// Another program's lock on the configuration file.
class CForeignLock {
public:
    explicit CForeignLock(const std::string& path)
        : m_descriptor(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
        EXPECT_EQ(flock(m_descriptor, LOCK_EX), 0);
    }
    ~CForeignLock() { close(m_descriptor); }

private:
    const int m_descriptor;
};

class LockedConfig : public CConfigFixture {
protected:
    CConfig m_config{Path()};
};

/// Returns once the process has the file open, or after five seconds.
void WaitUntilOpened(const std::string& path, pid_t process) {
    const std::filesystem::path descriptors = "/proc/" + std::to_string(process) + "/fd";
    for (int i = 0; i < 1000; ++i) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(descriptors, error)) {
            if (std::filesystem::read_symlink(entry, error) == path) {
                return;
            }
        }
        usleep(5000);
    }
}

double SecondsOf(const std::function<void()>& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

TEST_F(UnwritableConfig, still_holds_the_value_for_the_process_and_says_why_in_one_line) {
    CaptureStderr();
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    const std::string told = GetCapturedStderr();
    EXPECT_EQ(told, File() + ": [a] k holds for this process only: cannot open " + File() +
                        ".lock: Not a directory\n");
    EXPECT_EQ(m_config.GetInteger("a", "k", 0), 1);
    EXPECT_EQ(CConfig(File()).GetInteger("a", "k", 0), 0);
}

TEST_F(UnwritableConfig, is_written_by_a_later_save) {
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    CaptureStderr();
    EXPECT_FALSE(m_config.Save());
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("what was set holds for this process only: "));
    MakeWritable();
    EXPECT_TRUE(m_config.Save());
    EXPECT_EQ(Contents(File()), "[a]\nk = 1\n");
}

TEST_F(UnwritableConfig, is_written_with_the_next_value_that_can_be) {
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    EXPECT_FALSE(m_config.SetInteger("a", "k", 2));
    MakeWritable();
    EXPECT_TRUE(m_config.SetInteger("a", "l", 3));
    EXPECT_EQ(Contents(File()), "[a]\nk = 2\nl = 3\n");
}

TEST_F(UnwritableConfig, follows_the_file_again_once_it_is_written) {
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    MakeWritable();
    EXPECT_TRUE(m_config.Save());
    Folder().Write("place/corvane.conf", "[a]\nk = 2\n");
    EXPECT_EQ(m_config.GetInteger("a", "k", 0), 2);
}

TEST_F(UnwritableConfig, has_the_sections_of_the_values_that_hold_for_the_process) {
    EXPECT_FALSE(m_config.SetInteger("a", "k", 1));
    EXPECT_FALSE(m_config.SetInteger("a", "l", 2));
    EXPECT_FALSE(m_config.Remove("b", "k"));
    EXPECT_EQ(m_config.GetSection("a"), (Values{{"k", "1"}, {"l", "2"}}));
    EXPECT_EQ(m_config.GetSection("b"), std::nullopt);
}

TEST_F(LockedConfig, has_sections_of_the_file_with_what_holds_for_the_process) {
    Write("[a]\nk = 1\nl = 2\n[b]\nk = 3\n");
    std::filesystem::create_directory(Path() + ".lock"); // so that nothing can be written
    EXPECT_FALSE(m_config.SetInteger("a", "k", 4));
    EXPECT_FALSE(m_config.SetInteger("a", "m", 5));
    EXPECT_FALSE(m_config.Remove("a", "l"));
    EXPECT_EQ(m_config.GetSection("a"), (Values{{"k", "4"}, {"m", "5"}}));
    EXPECT_EQ(m_config.GetSection("b"), (Values{{"k", "3"}}));
    EXPECT_FALSE(m_config.Remove("b", "k"));
    EXPECT_EQ(m_config.GetSection("b"), Values{});
    EXPECT_EQ(Contents(), "[a]\nk = 1\nl = 2\n[b]\nk = 3\n");
}

TEST_F(CConfigFixture, that_may_not_be_written_lets_a_value_be_removed_for_the_process) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may write everywhere";
    }
    Write("[a]\nk = 1\n");
    ASSERT_EQ(chmod(Folder().Path().c_str(), 0500), 0);
    CConfig config(Path());
    EXPECT_FALSE(config.Remove("a", "k"));
    EXPECT_EQ(config.GetInteger("a", "k", 7), 7);
    ASSERT_EQ(chmod(Folder().Path().c_str(), 0700), 0);
}

TEST_F(LockedConfig, is_waited_for_a_second_at_most) {
    Write("[a]\nk = 1\n");
    const CForeignLock lock(Path());
    CaptureStderr();
    const double seconds = SecondsOf([&] { EXPECT_FALSE(m_config.SetInteger("a", "k", 2)); });
    EXPECT_THAT(GetCapturedStderr(),
                EndsWith("another program has held " + Path() + ".lock for a second\n"));
    EXPECT_GE(seconds, 0.9);
    EXPECT_LT(seconds, 3.0) << "a second, and some for a busy machine";
    EXPECT_EQ(Contents(), "[a]\nk = 1\n");
    EXPECT_EQ(m_config.GetInteger("a", "k", 0), 2);
}

TEST_F(LockedConfig, is_written_as_soon_as_the_lock_is_free) {
    auto lock = std::make_unique<CForeignLock>(Path());
    const pid_t child = fork();
    if (child == 0) {
        lock.reset(); // the child's share of the test's lock
        std::_Exit(CConfig(Path()).SetInteger("a", "k", 1) ? 0 : 1);
    }
    WaitUntilOpened(Path() + ".lock", child);
    lock.reset();
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Contents(), "[a]\nk = 1\n");
}

TEST_F(LockedConfig, is_read_all_the_same) {
    Write("[a]\nk = 1\n");
    const CForeignLock lock(Path());
    EXPECT_EQ(m_config.GetInteger("a", "k", 0), 1);
}

TEST_F(LockedConfig, is_free_again_after_every_write) {
    EXPECT_TRUE(m_config.SetInteger("a", "k", 1));
    const int descriptor = open((Path() + ".lock").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0);
    close(descriptor);
}

TEST_F(LockedConfig, stays_whole_when_the_disk_is_full) {
    const std::string text = "[a]\nk = 1\nfiller = " + std::string(100, 'x') + '\n';
    Write(text);
    // The kernel refuses to let a file grow past this, as it does on a full disk.
    const SChildEnd end = RunInChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small = {50, 50};
        setrlimit(RLIMIT_FSIZE, &small);
        std::_Exit(CConfig(Path()).SetInteger("a", "k", 2) ? 1 : 0);
    });
    EXPECT_TRUE(end.HasExitedWith(0)) << end.status;
    EXPECT_THAT(end.standardError, HasSubstr("cannot write " + Path() + ".new: File too large"));
    EXPECT_EQ(Contents(), text);
    EXPECT_FALSE(std::filesystem::exists(Path() + ".new"));
}

TEST_F(LockedConfig, is_not_taken_from_another_owner_who_cannot_get_it_back) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make a file another's";
    }
    Write("[a]\nk = 1\n");
    ASSERT_EQ(chmod(Path().c_str(), 0666), 0);
    ASSERT_EQ(chmod(Folder().Path().c_str(), 0777), 0);
    const SChildEnd end = RunInChild([&] {
        if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) {
            std::_Exit(2);
        }
        std::_Exit(CConfig(Path()).SetInteger("a", "k", 2) ? 1 : 0);
    });
    EXPECT_TRUE(end.HasExitedWith(0)) << end.status;
    EXPECT_THAT(end.standardError, HasSubstr("cannot set the mode and owner of"));
    EXPECT_EQ(Contents(), "[a]\nk = 1\n");
}

TEST_F(LockedConfig, that_cannot_be_read_is_not_overwritten) {
    Write("[a]\nk = 1\nsecret = 2\n");
    ASSERT_EQ(chmod(Path().c_str(), 0), 0);
    const SChildEnd end = RunInChild([&] {
        if (geteuid() == 0) {
            static_cast<void>(!chown(Folder().Path().c_str(), 65534, 65534));
            if (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0) {
                std::_Exit(2);
            }
        }
        std::_Exit(CConfig(Path()).SetInteger("a", "k", 2) ? 1 : 0);
    });
    EXPECT_TRUE(end.HasExitedWith(0)) << end.status;
    EXPECT_THAT(end.standardError, HasSubstr("cannot be read: Permission denied"));
    chmod(Path().c_str(), 0600);
    EXPECT_EQ(Contents(), "[a]\nk = 1\nsecret = 2\n");
}
