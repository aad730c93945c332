#include "IO/FileHandler.h"

#include "Support/CrowdedDescriptors.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Core::Time;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class RawFile : public testing::Test {
protected:
    void OpenWith(const std::string& bytes) { OpenPath(m_folder.Write("capture", bytes)); }
    void OpenPath(const std::string& path) {
        ASSERT_TRUE(m_source.SetDevice(path));
        ASSERT_TRUE(m_source.Open());
    }

    /// What a failing Open() says on standard error.
    std::string ToldByFailedOpen() {
        const CFakeClock clock;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(m_source.Open());
        EXPECT_FALSE(m_source.IsOpen());
        EXPECT_EQ(m_source.FileDescriptor(), -1);
        return testing::internal::GetCapturedStderr();
    }

    const CTemporaryFolder m_folder;
    CFileHandler m_source;
};

/// A pipe by name, opened before it has a writer (which must not wait for one), with a writer that
/// is silent until it is told to send.
class NamedPipe : public RawFile {
protected:
    void SetUp() override {
        const std::string path = m_folder.Path("pipe");
        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
        OpenPath(path);
        m_writer = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_GE(m_writer, 0);
    }
    void TearDown() override { ::close(m_writer); }

    bool Send(char byte) const { return ::write(m_writer, &byte, 1) == 1; }

private:
    int m_writer = -1;
};

std::string CountingBytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    }
    return bytes;
}

} // namespace

TEST_F(RawFile, is_closed_at_first) {
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_EQ(m_source.FileDescriptor(), -1);
    EXPECT_FALSE(m_source.Close());
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_FALSE(m_source.IsAtEnd());
}

TEST_F(RawFile, is_read_in_read_size_pieces_and_then_empty) {
    const std::string bytes = CountingBytes(3000);
    OpenWith(bytes);
    m_source.SetReadSize(1024);
    EXPECT_EQ(m_source.Read(), bytes.substr(0, 1024));
    EXPECT_EQ(m_source.Read(), bytes.substr(1024, 1024));
    EXPECT_EQ(m_source.Read(), bytes.substr(2048, 952));
    EXPECT_FALSE(m_source.IsAtEnd());
    EXPECT_EQ(m_source.Read(), "");
    EXPECT_TRUE(m_source.IsAtEnd());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(RawFile, is_read_in_pieces_above_the_first_capacity_of_its_buffer) {
    const std::string bytes = CountingBytes(5000);
    OpenWith(bytes);
    EXPECT_EQ(m_source.Read(1025), bytes.substr(0, 1025));
    EXPECT_EQ(m_source.Read(10), bytes.substr(1025, 10));
    EXPECT_EQ(m_source.Read(100000), bytes.substr(1035));
}

TEST_F(RawFile, is_read_at_most_one_MiB_at_a_time) {
    const std::string bytes = CountingBytes(1048576 + 3);
    OpenWith(bytes);
    EXPECT_EQ(m_source.Read(INT32_MAX), bytes.substr(0, 1048576));
    EXPECT_EQ(m_source.Read(INT32_MAX), bytes.substr(1048576));
}

TEST_F(RawFile, without_a_byte_ends_with_the_first_read) {
    OpenWith("");
    EXPECT_EQ(m_source.Read(10), "");
    EXPECT_TRUE(m_source.IsAtEnd());
}

TEST_F(RawFile, is_at_its_end_when_reads_ask_for_nothing) {
    for (const std::int32_t count : {0, -1}) {
        CFileHandler source;
        source.SetDevice(m_folder.Write("capture", "bytes"));
        ASSERT_TRUE(source.Open());
        EXPECT_EQ(source.Read(count), "");
        EXPECT_TRUE(source.IsAtEnd());
    }
}

TEST_F(RawFile, opened_anew_is_read_from_its_beginning) {
    OpenWith("bytes");
    m_source.Read(100);
    m_source.Read(100);
    ASSERT_TRUE(m_source.IsAtEnd());
    EXPECT_TRUE(m_source.Close());
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_EQ(m_source.FileDescriptor(), -1);
    ASSERT_TRUE(m_source.Open());
    EXPECT_FALSE(m_source.IsAtEnd());
    EXPECT_EQ(m_source.Read(100), "bytes");
}

TEST_F(RawFile, opened_twice_goes_on_where_it_is) {
    OpenWith("bytes");
    EXPECT_EQ(m_source.Read(2), "by");
    EXPECT_TRUE(m_source.Open());
    EXPECT_EQ(m_source.Read(100), "tes");
}

TEST_F(RawFile, keeps_its_path_while_open) {
    OpenWith("bytes");
    EXPECT_FALSE(m_source.SetDevice(m_folder.Write("other", "other")));
    m_source.Close();
    ASSERT_TRUE(m_source.Open());
    EXPECT_EQ(m_source.Read(100), "bytes");
    m_source.Close();
    EXPECT_TRUE(m_source.SetDevice(m_folder.Path("other")));
    ASSERT_TRUE(m_source.Open());
    EXPECT_EQ(m_source.Read(100), "other");
}

TEST_F(RawFile, takes_writes_as_done_and_stays_as_it_is) {
    OpenWith("bytes");
    EXPECT_TRUE(m_source.Write(std::string("text")));
    EXPECT_EQ(m_source.Write(std::vector<std::uint8_t>{1, 2}), 1);
    EXPECT_EQ(m_source.Read(100), "bytes");
}

TEST_F(RawFile, is_closed_with_its_source) {
    int descriptor = -1;
    {
        CFileHandler source;
        source.SetDevice(m_folder.Write("capture", "bytes"));
        ASSERT_TRUE(source.Open());
        descriptor = source.FileDescriptor();
        ASSERT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    }
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST_F(RawFile, that_is_missing_is_told_by_the_system_and_may_come_later) {
    m_source.SetDevice(m_folder.Path("late"));
    EXPECT_THAT(ToldByFailedOpen(), HasSubstr("CFileHandler:Open: No such file or directory\n"));
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_FALSE(m_source.IsAtEnd());
    m_folder.Write("late", "bytes");
    EXPECT_TRUE(m_source.Open());
    EXPECT_EQ(m_source.Read(100), "bytes");
}

TEST_F(RawFile, that_is_a_folder_cannot_be_opened) {
    m_source.SetDevice(m_folder.Path());
    EXPECT_THAT(ToldByFailedOpen(), HasSubstr("CFileHandler:Open: Is a directory\n"));
}

TEST_F(RawFile, whose_descriptor_select_could_not_watch_is_not_opened) {
    const CFakeClock clock;
    m_source.SetDevice(m_folder.Write("capture", "bytes"));
    testing::internal::CaptureStderr();
    bool isComplete = false;
    bool isOpen = false;
    {
        const CCrowdedDescriptors crowd;
        isComplete = crowd.IsComplete();
        isOpen = m_source.Open();
    }
    const std::string told = testing::internal::GetCapturedStderr();
    if (!isComplete) {
        GTEST_SKIP() << "the limit of descriptors lies below FD_SETSIZE";
    }
    EXPECT_FALSE(isOpen);
    EXPECT_THAT(told, HasSubstr("CFileHandler:Open: Too many open files\n"));
}

TEST_F(RawFile, that_cannot_be_read_is_told_once_and_is_not_at_its_end) {
    // Nothing is mapped at a process's address 0: its memory opens, but cannot be read there.
    OpenPath("/proc/self/mem");
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_EQ(m_source.TakeFailure(), "/proc/self/mem: Input/output error");
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_EQ(m_source.TakeFailure(), "");
    EXPECT_FALSE(m_source.IsAtEnd());
    EXPECT_TRUE(m_source.IsOpen());
}

TEST_F(NamedPipe, with_nothing_in_it_is_neither_at_its_end_nor_a_failure) {
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_FALSE(m_source.IsAtEnd());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(NamedPipe, is_waited_for_when_a_time_out_was_set) {
    EXPECT_TRUE(m_source.SetReadTimeout(Time::FromMilliseconds(20)));
    const Core::MonotonicTime start = Core::MonotonicTime::Now();
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_GE(Core::MonotonicTime::Now() - start, Time::FromMilliseconds(20));
    EXPECT_FALSE(m_source.IsAtEnd());
}

TEST_F(NamedPipe, gives_what_is_there_whether_a_time_out_was_set_or_not) {
    ASSERT_TRUE(Send('a'));
    EXPECT_EQ(m_source.Read(100), "a");
    ASSERT_TRUE(Send('b'));
    m_source.SetReadTimeout(Time::FromMilliseconds(60'000));
    EXPECT_EQ(m_source.Read(100), "b");
}
