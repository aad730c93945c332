// A line is drained: what was written leaves before the speed changes, or is dropped in time.

#include "platform/Serial.h"

#include "Support/FakeClock.h"
#include "Support/PseudoTerminal.h"

#include <cstdarg>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

using Core::Time;
using Core::IO::Serial;
using Core::IO::WriteTail;
using testing::EndsWith;
using testing::StartsWith;

namespace {

constexpr const char* kDoesNotLeave = ": what was written does not leave";
/// What a terminal holds for its reader and a flush of the writer's output leaves there.
constexpr std::size_t kReadersBuffer = 4096;

/// What the line's driver says that it holds. A pseudo-terminal's own always says nothing.
int s_bytesInDriver = 0;
int s_drains = 0;

class SerialDrain : public testing::Test {
protected:
    SerialDrain() {
        s_test = this;
        s_bytesInDriver = 0;
        s_drains = 0;
        m_clock.AtPause([] {
            if (s_test->m_atPause) {
                s_test->m_atPause();
            }
        });
    }
    void SetUp() override { ASSERT_TRUE(m_serial.Open()) << m_serial.LastError(); }
    ~SerialDrain() override { s_bytesInDriver = 0; }

    speed_t Speed() const {
        const termios settings = m_terminal.Settings();
        return ::cfgetospeed(&settings);
    }

    /// Writes so much that some of it waits, however the kernel moves its buffers on; returns it.
    std::string JamLine() {
        std::string written;
        const auto write = [&](std::size_t count) {
            std::string piece;
            while (piece.size() < count) {
                piece += std::to_string(written.size() + piece.size()) + ' ';
            }
            EXPECT_TRUE(m_serial.Write(piece)) << m_serial.LastError();
            written += piece;
        };
        while (!m_serial.HasWaitingBytes() && m_serial.IsOpen()) {
            write(4096);
        }
        write(WriteTail::kCapacity / 4);
        return written;
    }

    /// From now on the far end reads while the line waits, and `received` has what it has read.
    void LetFarEndRead(std::string& received, std::size_t total) {
        m_atPause = [this, &received, total] {
            received += m_terminal.Receive(std::min<std::size_t>(1024, total - received.size()));
        };
    }

    std::string ReceiveUntil(const std::string& end) {
        std::string received;
        while (!received.ends_with(end) && m_terminal.HasBytes(10'000)) {
            received += m_terminal.Receive(1);
        }
        return received;
    }

    CFakeClock m_clock;
    CPseudoTerminal m_terminal;
    Serial m_serial{m_terminal.Device(), 9600, Time()};
    const Time m_start = m_clock.Now();
    std::function<void()> m_atPause;

    static inline SerialDrain* s_test = nullptr;
};

} // namespace

/// In place of the C library's, for the whole program: reports what a slow driver would.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const auto result = static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    if (request == TIOCOUTQ && result == 0 && s_bytesInDriver > 0) {
        *static_cast<int*>(argument) = s_bytesInDriver;
    }
    return result;
}

/// The same, and counts how often it was waited for.
extern "C" int tcdrain(int descriptor) {
    ++s_drains;
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, TCSBRK, 1));
}

TEST_F(SerialDrain, of_a_line_that_has_written_nothing_is_done_at_once) {
    EXPECT_TRUE(m_serial.Drain());
    EXPECT_TRUE(m_clock.Pauses().empty());
    EXPECT_EQ(m_serial.LastError(), "");
}

TEST_F(SerialDrain, of_a_line_that_took_everything_is_done_at_once_and_loses_nothing) {
    ASSERT_TRUE(m_serial.Write(std::string("log version\r\n")));
    EXPECT_TRUE(m_serial.Drain());
    EXPECT_TRUE(m_clock.Pauses().empty());
    EXPECT_EQ(m_terminal.Receive(13), "log version\r\n");
}

TEST_F(SerialDrain, waits_until_the_far_end_has_taken_what_waits) {
    const std::string written = JamLine();
    std::string received;
    LetFarEndRead(received, written.size());
    EXPECT_TRUE(m_serial.Drain()) << m_serial.LastError();
    EXPECT_FALSE(m_clock.Pauses().empty());
    EXPECT_FALSE(m_serial.HasWaitingBytes());
    EXPECT_EQ(m_serial.LastError(), "");
    received += m_terminal.Receive(written.size() - received.size());
    EXPECT_TRUE(received == written) << "bytes were lost or changed their order";
}

TEST_F(SerialDrain, waits_until_the_driver_has_sent_what_it_holds) {
    s_bytesInDriver = 3;
    m_atPause = [] {
        EXPECT_EQ(s_drains, 0) << "waits without limit while the driver holds bytes";
        --s_bytesInDriver;
    };
    EXPECT_TRUE(m_serial.Drain());
    EXPECT_EQ(m_clock.Pauses().size(), 3U);
    EXPECT_EQ(s_drains, 1) << "the line has bytes of its own that the driver does not count";
}

TEST_F(SerialDrain, of_a_driver_that_sends_nothing_is_given_up) {
    s_bytesInDriver = 1;
    EXPECT_FALSE(m_serial.Drain());
    EXPECT_EQ(m_clock.Now() - m_start, Serial::kDrainLimit);
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + kDoesNotLeave);
    EXPECT_EQ(s_drains, 0);
}

TEST_F(SerialDrain, of_a_far_end_that_does_not_read_is_given_up_and_drops_nothing) {
    EXPECT_EQ(Serial::kDrainLimit, Time::FromMilliseconds(1000));
    const std::string written = JamLine();
    EXPECT_FALSE(m_serial.Drain());
    EXPECT_EQ(m_clock.Now() - m_start, Serial::kDrainLimit);
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + kDoesNotLeave);
    EXPECT_TRUE(m_serial.IsOpen());
    EXPECT_TRUE(m_serial.HasWaitingBytes());
    std::string received;
    LetFarEndRead(received, written.size());
    EXPECT_TRUE(m_serial.Drain());
    received += m_terminal.Receive(written.size() - received.size());
    EXPECT_TRUE(received == written) << "bytes were lost or changed their order";
}

TEST_F(SerialDrain, of_a_line_that_hangs_up_meanwhile_ends_with_the_line) {
    JamLine();
    m_atPause = [this] { m_terminal.HangUp(); };
    EXPECT_FALSE(m_serial.Drain());
    EXPECT_EQ(m_clock.Pauses().size(), 1U);
    EXPECT_FALSE(m_serial.IsOpen());
    EXPECT_THAT(m_serial.LastError(), EndsWith(": Input/output error"));
}

TEST_F(SerialDrain, of_a_line_that_has_hung_up_fails_also_when_nothing_waits) {
    ASSERT_TRUE(m_serial.Write(std::string("log version\r\n")));
    m_terminal.HangUp();
    EXPECT_FALSE(m_serial.Drain());
}

TEST_F(SerialDrain, of_a_closed_line_fails_at_once) {
    m_serial.Close();
    EXPECT_FALSE(m_serial.Drain());
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + ": not open");
    EXPECT_TRUE(m_clock.Pauses().empty());
}

TEST_F(SerialDrain, comes_before_a_change_of_speed) {
    const std::string written = JamLine();
    std::string received;
    m_atPause = [&] {
        EXPECT_EQ(Speed(), speed_t{B9600});
        received +=
            m_terminal.Receive(std::min<std::size_t>(1024, written.size() - received.size()));
    };
    EXPECT_TRUE(m_serial.SetBaudRate(115200)) << m_serial.LastError();
    EXPECT_FALSE(m_clock.Pauses().empty());
    EXPECT_EQ(Speed(), speed_t{B115200});
    EXPECT_EQ(m_serial.LastError(), "");
    EXPECT_FALSE(m_serial.HasWaitingBytes());
    received += m_terminal.Receive(written.size() - received.size());
    EXPECT_TRUE(received == written) << "bytes were lost or changed their order";
}

TEST_F(SerialDrain, of_the_driver_comes_before_a_change_of_speed) {
    s_bytesInDriver = 3;
    m_atPause = [this] {
        EXPECT_EQ(Speed(), speed_t{B9600});
        --s_bytesInDriver;
    };
    EXPECT_TRUE(m_serial.SetBaudRate(115200));
    EXPECT_EQ(m_clock.Pauses().size(), 3U);
    EXPECT_EQ(s_drains, 1);
    EXPECT_EQ(Speed(), speed_t{B115200});
}

TEST_F(SerialDrain, that_fails_lets_the_speed_change_and_says_why_with_what_waited_dropped) {
    const std::string written = JamLine();
    EXPECT_FALSE(m_serial.SetBaudRate(115200));
    EXPECT_EQ(m_clock.Now() - m_start, Serial::kDrainLimit);
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + kDoesNotLeave);
    EXPECT_EQ(Speed(), speed_t{B115200});
    EXPECT_TRUE(m_serial.IsOpen());
    EXPECT_FALSE(m_serial.HasWaitingBytes());

    ASSERT_TRUE(m_serial.Write(std::string("END")));
    std::string received = ReceiveUntil("END");
    ASSERT_THAT(received, EndsWith("END"));
    received.resize(received.size() - 3);
    EXPECT_LE(received.size(), kReadersBuffer) << "the driver's bytes are dropped, too";
    EXPECT_THAT(written, StartsWith(received));
}

TEST_F(SerialDrain, that_has_failed_once_is_forgotten_with_the_next_change_of_speed) {
    JamLine();
    EXPECT_FALSE(m_serial.SetBaudRate(115200));
    EXPECT_TRUE(m_serial.SetBaudRate(57600));
    EXPECT_EQ(m_serial.LastError(), "");
    EXPECT_EQ(m_clock.Now() - m_start, Serial::kDrainLimit) << "nothing is left to wait for";
    EXPECT_EQ(Speed(), speed_t{B57600});
}

TEST_F(SerialDrain, that_fails_keeps_the_new_speed_for_the_next_opening) {
    JamLine();
    EXPECT_FALSE(m_serial.SetBaudRate(57600));
    m_serial.Close();
    ASSERT_TRUE(m_serial.Open());
    EXPECT_EQ(Speed(), speed_t{B57600});
}

TEST_F(SerialDrain, is_not_done_for_a_speed_that_no_line_has) {
    JamLine();
    EXPECT_FALSE(m_serial.SetBaudRate(0));
    EXPECT_TRUE(m_clock.Pauses().empty());
    EXPECT_TRUE(m_serial.HasWaitingBytes());
}

TEST_F(SerialDrain, is_not_done_while_the_line_is_closed) {
    m_serial.Close();
    EXPECT_FALSE(m_serial.Drain());
    EXPECT_TRUE(m_serial.SetBaudRate(57600));
    EXPECT_EQ(m_serial.LastError(), "") << "that of before is over";
    EXPECT_TRUE(m_clock.Pauses().empty());
}

TEST_F(SerialDrain, that_loses_the_line_says_so_and_keeps_the_new_speed) {
    JamLine();
    m_terminal.HangUp();
    EXPECT_FALSE(m_serial.SetBaudRate(57600));
    EXPECT_FALSE(m_serial.IsOpen());
    EXPECT_THAT(m_serial.LastError(), EndsWith(": Input/output error"));
}
