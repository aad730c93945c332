#include "platform/WriteTail.h"

#include "Support/FakeClock.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using Core::IO::WriteTail;
using EResult = WriteTail::EResult;

namespace {

/// A tail in front of a socket whose reader reads only when it is told to.
class WriteTailTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(
            ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, m_ends.data()), 0);
        // The sockets hold less than the tail, whatever the machine's defaults are.
        const int size = 16 * 1024;
        ASSERT_EQ(::setsockopt(Writer(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size), 0);
        m_oldAction = ::signal(SIGPIPE, SIG_IGN);
    }
    void TearDown() override {
        ::signal(SIGPIPE, m_oldAction);
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }

    int Writer() const { return m_ends[0]; }

    EResult Write(const std::string& bytes) {
        return m_tail.Write(Writer(), reinterpret_cast<const std::uint8_t*>(bytes.data()),
                            bytes.size());
    }

    /// Takes everything that the socket itself holds.
    std::string ReadWhatCame() const {
        std::string came;
        std::array<char, 65536> bytes;
        ssize_t count = 0;
        while ((count = ::read(m_ends[1], bytes.data(), bytes.size())) > 0) {
            came.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return came;
    }

    /// Writes into the socket, past the tail, until it takes no more.
    std::string FillSocket() const {
        std::string written;
        const std::string piece(4096, '-');
        ssize_t count = 0;
        while ((count = ::write(Writer(), piece.data(), piece.size())) > 0) {
            written.append(piece, 0, static_cast<std::size_t>(count));
        }
        return written;
    }

    /// Reads until nothing waits any more; what the tail reports must be well all the time.
    std::string Drain() {
        std::string came = ReadWhatCame();
        while (!m_tail.IsEmpty() && m_tail.Continue(Writer()) == EResult::ok) {
            came += ReadWhatCame();
        }
        return came + ReadWhatCame();
    }

    void HangUp() { ::shutdown(m_ends[1], SHUT_RDWR); }

    CFakeClock m_clock;
    WriteTail m_tail;

private:
    std::array<int, 2> m_ends{-1, -1};
    void (*m_oldAction)(int) = SIG_DFL;
};

std::string CountingBytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    }
    return bytes;
}

constexpr Core::Time kJustUnderTheLimit = Core::Time::FromMilliseconds(9'999);
constexpr Core::Time kOneMillisecond = Core::Time::FromMilliseconds(1);

} // namespace

TEST_F(WriteTailTest, writes_at_once_what_the_descriptor_takes) {
    EXPECT_EQ(Write("log version\r\n"), EResult::ok);
    EXPECT_TRUE(m_tail.IsEmpty());
    EXPECT_EQ(ReadWhatCame(), "log version\r\n");
}

TEST_F(WriteTailTest, writing_nothing_is_well) {
    EXPECT_EQ(Write(""), EResult::ok);
    EXPECT_TRUE(m_tail.IsEmpty());
}

TEST_F(WriteTailTest, keeps_what_does_not_go_and_delivers_it_in_order) {
    FillSocket();
    EXPECT_EQ(Write("one "), EResult::ok);
    EXPECT_EQ(Write("two "), EResult::ok);
    EXPECT_FALSE(m_tail.IsEmpty());
    const std::string filling = ReadWhatCame();
    EXPECT_EQ(filling.find('o'), std::string::npos);

    EXPECT_EQ(Write("three"), EResult::ok);
    EXPECT_TRUE(m_tail.IsEmpty());
    EXPECT_EQ(ReadWhatCame(), "one two three");
}

TEST_F(WriteTailTest, a_write_that_goes_in_part_loses_and_repeats_nothing) {
    const std::string bytes = CountingBytes(WriteTail::kCapacity);
    EXPECT_EQ(Write(bytes), EResult::ok);
    ASSERT_FALSE(m_tail.IsEmpty());
    EXPECT_EQ(Drain(), bytes);
}

TEST_F(WriteTailTest, goes_on_with_what_waits_when_told_to) {
    FillSocket();
    Write("waiting");
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    EXPECT_FALSE(m_tail.IsEmpty());
    ReadWhatCame();
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    EXPECT_TRUE(m_tail.IsEmpty());
    EXPECT_EQ(ReadWhatCame(), "waiting");
}

TEST_F(WriteTailTest, takes_as_much_as_its_capacity) {
    const std::string filling = FillSocket();
    const std::string bytes = CountingBytes(WriteTail::kCapacity);
    EXPECT_EQ(Write(bytes), EResult::ok);
    EXPECT_EQ(Drain(), filling + bytes);
}

TEST_F(WriteTailTest, refuses_whole_what_has_no_room) {
    const std::string filling = FillSocket();
    const std::string bytes = CountingBytes(WriteTail::kCapacity - 2);
    EXPECT_EQ(Write(bytes), EResult::ok);
    EXPECT_EQ(Write("abc"), EResult::refused);
    EXPECT_EQ(Write("ab"), EResult::ok);
    EXPECT_EQ(Drain(), filling + bytes + "ab");
}

TEST_F(WriteTailTest, refuses_whole_a_single_write_above_its_capacity) {
    EXPECT_EQ(Write(CountingBytes(WriteTail::kCapacity + 1)), EResult::refused);
    EXPECT_TRUE(m_tail.IsEmpty());
    EXPECT_EQ(ReadWhatCame(), "");
}

TEST_F(WriteTailTest, ten_seconds_without_progress_are_a_failed_write) {
    FillSocket();
    Write("stuck");
    m_clock.Advance(kJustUnderTheLimit);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    m_clock.Advance(kOneMillisecond);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::lost);
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST_F(WriteTailTest, a_write_behind_a_stalled_tail_fails_too) {
    FillSocket();
    Write("stuck");
    m_clock.Advance(WriteTail::kStallLimit);
    EXPECT_EQ(Write("more"), EResult::lost);
    EXPECT_EQ(errno, ETIMEDOUT);
}

TEST_F(WriteTailTest, writing_more_is_no_progress) {
    FillSocket();
    Write("stuck");
    m_clock.Advance(kJustUnderTheLimit);
    EXPECT_EQ(Write("more"), EResult::ok);
    m_clock.Advance(kOneMillisecond);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::lost);
}

TEST_F(WriteTailTest, any_byte_that_leaves_is_progress) {
    FillSocket();
    Write(CountingBytes(WriteTail::kCapacity));
    m_clock.Advance(kJustUnderTheLimit);
    ReadWhatCame();
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    ASSERT_FALSE(m_tail.IsEmpty());
    m_clock.Advance(kJustUnderTheLimit);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    m_clock.Advance(kOneMillisecond);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::lost);
}

TEST_F(WriteTailTest, a_tail_that_begins_long_after_the_last_one_has_its_own_ten_seconds) {
    FillSocket();
    Write("first");
    Drain();
    m_clock.Advance(WriteTail::kStallLimit);
    FillSocket();
    EXPECT_EQ(Write("second"), EResult::ok);
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
}

TEST_F(WriteTailTest, bytes_that_can_go_after_a_long_pause_go) {
    FillSocket();
    Write("late");
    m_clock.Advance(WriteTail::kStallLimit);
    ReadWhatCame();
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::ok);
    EXPECT_EQ(ReadWhatCame(), "late");
}

TEST_F(WriteTailTest, a_write_to_a_peer_that_has_gone_is_lost) {
    HangUp();
    EXPECT_EQ(Write("nobody reads this"), EResult::lost);
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(WriteTailTest, going_on_towards_a_peer_that_has_gone_is_lost) {
    FillSocket();
    Write("nobody reads this");
    HangUp();
    EXPECT_EQ(m_tail.Continue(Writer()), EResult::lost);
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(WriteTailTest, cleared_it_holds_nothing) {
    const std::string filling = FillSocket();
    Write("for nobody");
    m_tail.Clear();
    EXPECT_TRUE(m_tail.IsEmpty());
    EXPECT_EQ(Drain(), filling);
}
