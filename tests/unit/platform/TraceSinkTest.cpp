#include "TraceSink.h"

#include "ChildProcess.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <termios.h>

namespace {

const std::string kLine(99, 'x');
constexpr int kLines = 30'000; // 3 MB: more than any pipe, socket or terminal takes unread

/// A measurement, as those are never folded.
std::string Line(int number) {
    return std::to_string(number) + kLine + '\n';
}

/// Writes more than the descriptor takes; what it takes is read by nobody meanwhile.
void Overfill(int descriptor) {
    CTraceSink sink(descriptor);
    for (int i = 0; i < kLines; ++i) {
        sink.Write(Line(i));
    }
}

/// What is there to read now.
std::string Drain(int descriptor) {
    std::string bytes;
    std::array<char, 65536> buffer;
    pollfd state = {descriptor, POLLIN, 0};
    while (poll(&state, 1, 0) > 0 && (state.revents & POLLIN) != 0) {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count <= 0) {
            break;
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

/// How many whole lines there are, the first ones written, in order and with nothing between; -1
/// when they are anything else.
int WholeLines(const std::string& bytes) {
    std::size_t position = 0;
    int count = 0;
    for (; position < bytes.size(); ++count) {
        const std::string line = Line(count);
        if (bytes.compare(position, line.size(), line) != 0) {
            return -1;
        }
        position += line.size();
    }
    return count;
}

class TraceSink : public testing::Test {
protected:
    void TearDown() override {
        for (const int end : m_ends) {
            close(end);
        }
    }
    void OpenPipe() { ASSERT_EQ(pipe2(m_ends.data(), O_CLOEXEC), 0); }
    int Reader() const { return m_ends[0]; }
    int Writer() const { return m_ends[1]; }

    std::array<int, 2> m_ends = {-1, -1};
};

} // namespace

TEST_F(TraceSink, drops_what_a_full_pipe_does_not_take) {
    OpenPipe();
    const SChildEnd end = RunInChild([&] { Overfill(Writer()); });
    EXPECT_TRUE(end.HasExitedWith(0)) << "it waited";
    const int lines = WholeLines(Drain(Reader()));
    EXPECT_GT(lines, 10);
    EXPECT_LT(lines, kLines);
}

TEST_F(TraceSink, writes_again_when_the_pipe_is_read_again) {
    OpenPipe();
    const SChildEnd end = RunInChild([&] {
        Overfill(Writer());
        Drain(Reader());
        CTraceSink(Writer()).Write("after\n");
    });
    EXPECT_TRUE(end.HasExitedWith(0));
    EXPECT_EQ(Drain(Reader()), "after\n");
}

TEST_F(TraceSink, leaves_the_flags_of_a_shared_pipe_alone) {
    OpenPipe();
    CTraceSink(Writer()).Write("a\n");
    EXPECT_EQ(fcntl(Writer(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(TraceSink, does_not_wait_where_the_pipe_cannot_be_opened_once_more) {
    OpenPipe();
    const SChildEnd end = RunInChild([&] {
        const rlimit noneFree = {1, 1};
        setrlimit(RLIMIT_NOFILE, &noneFree);
        Overfill(Writer());
        std::_Exit(0); // a sanitizer's work at exit takes descriptors
    });
    EXPECT_TRUE(end.HasExitedWith(0)) << "it waited";
    EXPECT_GT(WholeLines(Drain(Reader())), 10);
}

TEST_F(TraceSink, drops_what_a_socket_does_not_take) {
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends.data()), 0);
    const SChildEnd end = RunInChild([&] { Overfill(Writer()); });
    EXPECT_TRUE(end.HasExitedWith(0)) << "it waited";
    EXPECT_GT(Drain(Reader()).size(), 1000U);
}

TEST_F(TraceSink, drops_what_a_stopped_terminal_does_not_take) {
    m_ends[0] = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(Reader()), 0);
    ASSERT_EQ(unlockpt(Reader()), 0);
    m_ends[1] = open(ptsname(Reader()), O_RDWR | O_NOCTTY);
    ASSERT_GE(Writer(), 0);
    const SChildEnd end = RunInChild([&] { Overfill(Writer()); });
    EXPECT_TRUE(end.HasExitedWith(0)) << "it waited";
    EXPECT_GT(Drain(Reader()).size(), 1000U);
}

TEST_F(TraceSink, survives_a_reader_that_has_gone) {
    OpenPipe();
    const SChildEnd end = RunInChild([&] {
        std::signal(SIGPIPE, SIG_IGN);
        close(Reader());
        CTraceSink(Writer()).Write("a\n");
    });
    EXPECT_TRUE(end.HasExitedWith(0));
}

TEST_F(TraceSink, follows_a_redirection) {
    OpenPipe();
    const SChildEnd end = RunInChild([&] {
        CTraceSink sink(STDERR_FILENO);
        sink.Write("first\n");
        dup2(Writer(), STDERR_FILENO);
        sink.Write("second\n");
    });
    EXPECT_EQ(end.standardError, "first\n");
    EXPECT_EQ(Drain(Reader()), "second\n");
}

TEST_F(TraceSink, writes_a_text_that_is_longer_than_a_pipe_takes_at_once) {
    OpenPipe();
    const std::string text = std::string(20'000, 'x') + '\n';
    CTraceSink(Writer()).Write(text);
    EXPECT_EQ(Drain(Reader()), text);
}

TEST_F(TraceSink, folds_no_more_once_it_is_told_to_stop) {
    OpenPipe();
    CTraceSink sink(Writer());
    sink.Write("a\n");
    sink.Write("a\n");
    sink.StopFolding();
    sink.Write("a\n");
    EXPECT_EQ(Drain(Reader()), "a\na (repeated 1 time)\na\n");
}
