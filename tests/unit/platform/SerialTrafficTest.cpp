#include "platform/Serial.h"

#include "Support/FakeClock.h"
#include "Support/PseudoTerminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <thread>

using Core::MonotonicTime;
using Core::Time;
using Core::IO::Serial;
using Core::IO::WriteTail;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

constexpr Time kLong = Time::FromMilliseconds(60'000);

/// An open line whose reads wait long, so that only what never comes would take its time.
class SerialTraffic : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_serial.Open()) << m_serial.LastError(); }

    /// Writes until bytes wait that the line would not take; returns all that was written.
    std::string WriteUntilBytesWait() {
        std::string written;
        for (char mark = 'a'; !m_serial.HasWaitingBytes() && m_serial.IsOpen(); ++mark) {
            const std::string piece(4096, mark);
            EXPECT_TRUE(m_serial.Write(piece)) << m_serial.LastError();
            written += piece;
        }
        return written;
    }

    /// So much waits that some of it still will after the kernel has moved its buffers on.
    void JamLine() {
        WriteUntilBytesWait();
        ASSERT_TRUE(m_serial.Write(std::string(WriteTail::kCapacity / 2, 'z')));
    }

    bool IsLost() const { return !m_serial.IsOpen() && m_serial.Descriptor() == -1; }

    CPseudoTerminal m_terminal;
    Serial m_serial{m_terminal.Device(), 115200, kLong};
};

std::string AllBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace

TEST_F(SerialTraffic, reads_every_byte_value_as_it_came) {
    ASSERT_TRUE(m_terminal.Send(AllBytes()));
    std::string received = m_serial.Read(256);
    while (received.size() < 256 && m_serial.IsOpen()) {
        received += m_serial.Read(256);
    }
    EXPECT_EQ(received, AllBytes());
}

TEST_F(SerialTraffic, writes_every_byte_value_as_it_is) {
    EXPECT_TRUE(m_serial.Write(AllBytes()));
    EXPECT_EQ(m_terminal.Receive(256), AllBytes());
}

TEST_F(SerialTraffic, writes_texts_and_vectors_in_order) {
    EXPECT_TRUE(m_serial.Write(std::string("log ")));
    EXPECT_TRUE(m_serial.Write(std::vector<std::uint8_t>{'v', 'e', 'r'}));
    EXPECT_TRUE(m_serial.Write(std::string("sion")));
    EXPECT_EQ(m_terminal.Receive(11), "log version");
}

TEST_F(SerialTraffic, a_read_gives_no_more_than_it_was_asked_for) {
    ASSERT_TRUE(m_terminal.Send("abcdef"));
    EXPECT_EQ(m_serial.Read(4), "abcd");
    EXPECT_EQ(m_serial.Read(4), "ef");
}

TEST_F(SerialTraffic, a_read_for_nothing_gives_nothing_and_takes_nothing) {
    ASSERT_TRUE(m_terminal.Send("kept"));
    EXPECT_EQ(m_serial.Read(0), "");
    EXPECT_EQ(m_serial.Read(-5), "");
    EXPECT_EQ(m_serial.Read(4), "kept");
}

TEST_F(SerialTraffic, a_read_does_not_wait_for_more_than_is_there) {
    ASSERT_TRUE(m_terminal.Send("few"));
    const MonotonicTime start = MonotonicTime::Now();
    EXPECT_EQ(m_serial.Read(1000), "few");
    EXPECT_LT(MonotonicTime::Now() - start, kLong);
}

TEST_F(SerialTraffic, a_read_waits_for_bytes_that_are_still_to_come) {
    std::thread sender([this] { m_terminal.Send("late"); });
    EXPECT_EQ(m_serial.Read(4).substr(0, 1), "l");
    sender.join();
}

TEST_F(SerialTraffic, a_silent_line_costs_the_time_out_and_stays_open) {
    const Time timeout = Time::FromMilliseconds(20);
    m_serial.SetTimeout(timeout);
    const MonotonicTime start = MonotonicTime::Now();
    EXPECT_EQ(m_serial.Read(100), "");
    EXPECT_GE(MonotonicTime::Now() - start, timeout);
    EXPECT_TRUE(m_serial.IsOpen());
    EXPECT_EQ(m_serial.LastError(), "");
}

TEST_F(SerialTraffic, with_a_time_out_of_zero_or_less_a_read_waits_for_nothing) {
    for (const Time timeout : {Time(), Time::FromMilliseconds(-1)}) {
        m_serial.SetTimeout(timeout);
        EXPECT_EQ(m_serial.Read(100), "");
        EXPECT_TRUE(m_serial.IsOpen());
    }
}

TEST_F(SerialTraffic, a_line_that_hangs_up_is_lost_with_the_next_read) {
    m_terminal.HangUp();
    EXPECT_EQ(m_serial.Read(100), "");
    EXPECT_TRUE(IsLost());
    EXPECT_THAT(m_serial.LastError(), testing::StartsWith(m_terminal.Device() + ": "));
}

TEST_F(SerialTraffic, a_line_that_hangs_up_is_lost_with_the_next_write) {
    m_terminal.HangUp();
    EXPECT_FALSE(m_serial.Write(std::string("anyone?")));
    EXPECT_TRUE(IsLost());
    EXPECT_THAT(m_serial.LastError(), EndsWith(": Input/output error"));
}

TEST_F(SerialTraffic, a_closed_line_is_neither_read_nor_written) {
    m_serial.Close();
    EXPECT_EQ(m_serial.Read(100), "");
    EXPECT_FALSE(m_serial.Write(std::string("text")));
    EXPECT_FALSE(m_serial.Write(std::vector<std::uint8_t>{1}));
    EXPECT_FALSE(m_serial.ContinueWriting());
    EXPECT_FALSE(m_serial.SendBreak(0.3f));
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + ": not open");
}

TEST_F(SerialTraffic, what_the_line_does_not_take_at_once_goes_on_later_in_order) {
    const std::string written = WriteUntilBytesWait();
    ASSERT_TRUE(m_serial.HasWaitingBytes());
    std::string received;
    while (m_serial.HasWaitingBytes() && m_terminal.HasBytes(10'000)) {
        received += m_terminal.Receive(1024);
        ASSERT_TRUE(m_serial.ContinueWriting()) << m_serial.LastError();
    }
    received += m_terminal.Receive(written.size() - received.size());
    EXPECT_EQ(received, written);
}

TEST_F(SerialTraffic, a_write_without_room_is_refused_and_the_line_stays_open) {
    JamLine();
    EXPECT_FALSE(m_serial.Write(std::string(WriteTail::kCapacity, 'x')));
    EXPECT_TRUE(m_serial.IsOpen());
    EXPECT_THAT(m_serial.LastError(), EndsWith(": too many bytes wait to be written"));
}

TEST_F(SerialTraffic, ten_seconds_in_which_no_byte_leaves_lose_the_line) {
    CFakeClock clock;
    JamLine();
    do {
        ASSERT_TRUE(m_serial.HasWaitingBytes());
        clock.Advance(WriteTail::kStallLimit);
    } while (m_serial.ContinueWriting());
    EXPECT_TRUE(IsLost());
    EXPECT_THAT(m_serial.LastError(), EndsWith(": takes no bytes any more"));
}

TEST_F(SerialTraffic, what_waited_when_the_line_was_closed_is_forgotten) {
    WriteUntilBytesWait();
    m_serial.Close();
    EXPECT_FALSE(m_serial.HasWaitingBytes());
}

TEST_F(SerialTraffic, what_waited_when_the_line_was_lost_is_forgotten) {
    WriteUntilBytesWait();
    m_terminal.HangUp();
    EXPECT_FALSE(m_serial.ContinueWriting());
    EXPECT_TRUE(IsLost());
    EXPECT_FALSE(m_serial.HasWaitingBytes());
}

TEST_F(SerialTraffic, a_break_lasts_as_long_as_it_was_ordered_to) {
    const CFakeClock clock;
    if (::ioctl(m_serial.Descriptor(), TIOCCBRK) != 0) {
        EXPECT_FALSE(m_serial.SendBreak(0.25f));
        EXPECT_THAT(m_serial.LastError(), HasSubstr(": no break: "));
        EXPECT_TRUE(clock.Pauses().empty());
        GTEST_SKIP() << "the terminals here have no breaks";
    }
    EXPECT_TRUE(m_serial.SendBreak(0.25f)) << m_serial.LastError();
    EXPECT_THAT(clock.Pauses(), ElementsAre(Time::FromMilliseconds(250)));
}

TEST_F(SerialTraffic, a_break_drops_what_has_not_left_yet) {
    const CFakeClock clock;
    WriteUntilBytesWait();
    m_serial.SendBreak(0.25f);
    EXPECT_FALSE(m_serial.HasWaitingBytes());
    EXPECT_TRUE(m_serial.IsOpen());
}
