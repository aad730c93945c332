#include "mux/Line.h"
#include "Support/FakeClock.h"
#include "Support/PseudoTerminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Mux::CLine;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A line to a pseudo-terminal; the clock moves by half a second with each pass.
class MuxLine : public testing::Test {
protected:
    void Pass(bool readable = true) {
        testing::internal::CaptureStderr();
        m_line.Service(readable, true);
        m_told = testing::internal::GetCapturedStderr();
        m_clock.Advance(CLine::kRetry);
    }
    void Write(const std::string& piece) {
        testing::internal::CaptureStderr();
        m_line.Write(piece);
        m_told = testing::internal::GetCapturedStderr();
    }

    CFakeClock m_clock;
    CPseudoTerminal m_terminal;
    std::string m_delivered;
    std::string m_told; ///< on standard error, by the last step
    CLine m_line{"port 50", m_terminal.Device(), 9600,
                 [this](std::string_view bytes) { m_delivered += bytes; }};
};

} // namespace

TEST_F(MuxLine, opens_its_device_and_tells_it_once) {
    EXPECT_FALSE(m_line.IsOpen());
    Pass();
    EXPECT_TRUE(m_line.IsOpen());
    EXPECT_EQ(m_told, "port 50: device " + m_terminal.Device() + " is open\n");
    Pass();
    EXPECT_EQ(m_told, "");
}

TEST_F(MuxLine, carries_bytes_both_ways_and_counts_them) {
    Pass();
    ASSERT_TRUE(m_terminal.Send("from the device"));
    Pass();
    EXPECT_EQ(m_delivered, "from the device");
    Write("to the device");
    EXPECT_EQ(m_terminal.Receive(13), "to the device");
    EXPECT_EQ(m_line.BytesIn(), 15U);
    EXPECT_EQ(m_line.BytesOut(), 13U);
    EXPECT_EQ(m_line.DroppedBytes(), 0U);
}

TEST_F(MuxLine, tells_a_loss_with_its_reason_once) {
    Pass();
    m_terminal.HangUp();
    Pass();
    EXPECT_FALSE(m_line.IsOpen());
    EXPECT_THAT(m_told, HasSubstr("port 50: device lost: " + m_terminal.Device()));
    Pass(false);
    Pass(false);
    EXPECT_EQ(m_told, "") << "that its name is gone as well is no news";
}

TEST_F(MuxLine, tries_a_missing_device_every_half_second_and_tells_each_reason_once) {
    m_line.SetDevice("/nowhere/gps");
    Pass();
    EXPECT_EQ(m_told, "port 50: no device: /nowhere/gps: No such file or directory; trying again "
                      "every 0.5 s\n");
    Pass();
    EXPECT_EQ(m_told, "");
}

TEST_F(MuxLine, keeps_what_is_written_before_its_device_is_there) {
    Write("first ");
    Write("second");
    EXPECT_EQ(m_line.WaitingBytes(), 12U);
    Pass();
    EXPECT_EQ(m_terminal.Receive(12), "first second");
    EXPECT_EQ(m_line.BytesOut(), 12U);
    EXPECT_EQ(m_line.WaitingBytes(), 0U);
}

TEST_F(MuxLine, drops_what_was_written_at_another_speed_while_its_device_was_away) {
    Write("at 9600");
    EXPECT_TRUE(m_line.SetBaudRate(115200));
    Pass();
    EXPECT_THAT(m_told, HasSubstr("port 50: 7 bytes of clients dropped, 7 in all: the speed was "
                                  "changed while the device was away\n"));
    Write("at 115200");
    EXPECT_EQ(m_terminal.Receive(9), "at 115200");
    EXPECT_EQ(m_line.DroppedBytes(), 7U);
}

TEST_F(MuxLine, drops_what_has_waited_for_ten_seconds) {
    m_line.SetDevice("/nowhere/gps");
    Write("old");
    m_clock.Advance(Core::Time::FromMilliseconds(10'001));
    Pass();
    EXPECT_THAT(m_told, HasSubstr("port 50: 3 bytes of clients dropped, 3 in all"));
}

TEST_F(MuxLine, tells_of_drops_every_ten_seconds_at_most) {
    m_line.SetDevice("/nowhere/gps");
    const std::string tooMuch(300'000, 'x');
    Write(tooMuch);
    Pass();
    EXPECT_THAT(m_told, HasSubstr("300000 bytes of clients dropped, 300000 in all"));
    Write(tooMuch);
    Pass();
    EXPECT_EQ(m_told, "");
    Write(tooMuch);
    m_clock.Advance(CLine::kDropsTold);
    Pass();
    EXPECT_THAT(m_told, HasSubstr("600000 bytes of clients dropped, 900000 in all"));
}

TEST_F(MuxLine, is_congested_while_128_KiB_wait_for_its_device) {
    Pass();
    Write(std::string(100'000, 'x'));
    EXPECT_FALSE(m_line.IsCongested());
    Write(std::string(100'000, 'x'));
    EXPECT_TRUE(m_line.IsCongested());
    EXPECT_EQ(m_line.BytesOut() + m_line.WaitingBytes(), 200'000U);
    for (int i = 0; i < 1000 && m_line.WaitingBytes() > 0; ++i) {
        m_terminal.Receive(1024);
        Pass(false);
    }
    EXPECT_FALSE(m_line.IsCongested());
    EXPECT_EQ(m_line.BytesOut(), 200'000U);
}

TEST_F(MuxLine, counts_what_waited_for_a_device_that_is_lost_as_dropped) {
    Pass();
    Write(std::string(200'000, 'x'));
    const std::size_t waiting = m_line.WaitingBytes();
    ASSERT_GT(waiting, 0U);
    m_terminal.HangUp();
    Pass();
    EXPECT_EQ(m_line.DroppedBytes(), waiting);
    EXPECT_EQ(m_line.BytesOut(), 200'000U - waiting);
}

TEST_F(MuxLine, changes_its_speed_and_knows_it) {
    EXPECT_EQ(m_line.BaudRate(), 9600);
    EXPECT_FALSE(m_line.SetBaudRate(0));
    EXPECT_FALSE(m_line.SetBaudRate(-9600));
    EXPECT_EQ(m_line.BaudRate(), 9600);
    Pass();
    EXPECT_TRUE(m_line.SetBaudRate(115200));
    EXPECT_EQ(m_line.BaudRate(), 115200);
    const termios settings = m_terminal.Settings();
    EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
}

TEST_F(MuxLine, goes_over_to_another_device_with_its_speed) {
    Pass();
    CPseudoTerminal other;
    m_line.SetDevice(other.Device());
    EXPECT_FALSE(m_line.IsOpen());
    Pass();
    EXPECT_TRUE(m_line.IsOpen());
    EXPECT_EQ(m_line.Device(), other.Device());
    EXPECT_EQ(m_line.BaudRate(), 9600);
    Write("x");
    EXPECT_EQ(other.Receive(1), "x");
}

TEST_F(MuxLine, may_have_no_device) {
    m_line.SetDevice("");
    Pass();
    EXPECT_EQ(m_line.Device(), "");
    EXPECT_EQ(m_line.Descriptor(), -1);
    EXPECT_FALSE(m_line.IsOpen());
    EXPECT_TRUE(m_line.SetBaudRate(115200));
    EXPECT_EQ(m_line.BaudRate(), 115200);
}
