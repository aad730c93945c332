#include "IO/SerialHandler.h"

#include "Support/FakeClock.h"
#include "Support/PseudoTerminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/ioctl.h>
#include <unistd.h>

using Core::MonotonicTime;
using Core::Time;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

constexpr Time kLong = Time::FromMilliseconds(60'000);

/// A source set to one end of a line, not opened yet.
class SerialSource : public testing::Test {
protected:
    void SetUp() override { m_source.SetDevice(m_terminal.Device()); }

    speed_t Speed() const {
        const termios settings = m_terminal.Settings();
        return ::cfgetospeed(&settings);
    }

    void OpenAndWaitLongForBytes() {
        ASSERT_TRUE(m_source.SetReadTimeout(kLong));
        ASSERT_TRUE(m_source.Open()) << m_source.TakeFailure();
    }

    void WriteUntilBytesWait() {
        while (!m_source.HasWaitingBytes() && m_source.IsOpen()) {
            ASSERT_TRUE(m_source.Write(std::string(4096, 'x')));
        }
    }

    /// So much waits that some of it still does after the kernel has moved its buffers on.
    void JamLine() {
        WriteUntilBytesWait();
        ASSERT_TRUE(m_source.Write(std::string(128 * 1024, 'z')));
    }

    CPseudoTerminal m_terminal;
    CSerialHandler m_source;
};

/// A clock during whose pauses the far end reads.
class CDrainingClock {
public:
    explicit CDrainingClock(CPseudoTerminal& terminal) { s_terminal = &terminal; }

    void LetFarEndRead() {
        s_speeds.clear();
        m_clock.AtPause([] {
            const termios settings = s_terminal->Settings();
            s_speeds.insert(::cfgetospeed(&settings));
            s_terminal->Receive(1024);
        });
    }
    const std::set<speed_t>& SpeedsWhileDraining() const { return s_speeds; }

private:
    CFakeClock m_clock;

    static inline CPseudoTerminal* s_terminal = nullptr;
    static inline std::set<speed_t> s_speeds;
};

} // namespace

TEST(SerialSourceByDefault, is_closed_and_has_the_first_USB_adapter_as_its_device) {
    CSerialHandler source;
    EXPECT_FALSE(source.IsOpen());
    EXPECT_EQ(source.FileDescriptor(), -1);
    if (::access("/dev/ttyUSB0", F_OK) == 0) {
        GTEST_SKIP() << "this machine has a /dev/ttyUSB0, which is not the test's to open";
    }
    EXPECT_FALSE(source.Open());
    EXPECT_EQ(source.TakeFailure(), "/dev/ttyUSB0: No such file or directory");
}

TEST_F(SerialSource, has_115200_baud_unless_told_otherwise) {
    ASSERT_TRUE(m_source.Open());
    EXPECT_EQ(Speed(), speed_t{B115200});
}

TEST_F(SerialSource, waits_50_milliseconds_for_bytes_unless_told_otherwise) {
    ASSERT_TRUE(m_source.Open());
    const MonotonicTime start = MonotonicTime::Now();
    EXPECT_EQ(m_source.Read(100), "");
    const Time waited = MonotonicTime::Now() - start;
    EXPECT_GE(waited, Time::FromMilliseconds(50));
    EXPECT_LT(waited, Time::FromMilliseconds(10'000));
    EXPECT_TRUE(m_source.IsOpen());
}

TEST_F(SerialSource, opens_and_closes) {
    EXPECT_FALSE(m_source.IsOpen());
    ASSERT_TRUE(m_source.Open());
    EXPECT_TRUE(m_source.IsOpen());
    EXPECT_GE(m_source.FileDescriptor(), 0);
    EXPECT_TRUE(m_source.Close());
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_EQ(m_source.FileDescriptor(), -1);
    EXPECT_TRUE(m_source.Close());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, reads_what_is_there_by_count_and_by_read_size) {
    OpenAndWaitLongForBytes();
    ASSERT_TRUE(m_terminal.Send("abcdefgh"));
    EXPECT_EQ(m_source.Read(3), "abc");
    EXPECT_EQ(m_source.Read(), "d");
    m_source.SetReadSize(1024);
    EXPECT_EQ(m_source.Read(), "efgh");
    EXPECT_FALSE(m_source.IsAtEnd());
}

TEST_F(SerialSource, writes_texts_and_vectors_and_answers_1_for_any_vector) {
    ASSERT_TRUE(m_source.Open());
    EXPECT_TRUE(m_source.Write(std::string("log ")));
    EXPECT_EQ(m_source.Write(std::vector<std::uint8_t>{'v', 'e', 'r', 's'}), 1);
    EXPECT_EQ(m_terminal.Receive(8), "log vers");
}

TEST_F(SerialSource, that_is_closed_neither_reads_nor_writes_and_that_is_no_news) {
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_FALSE(m_source.Write(std::string("text")));
    EXPECT_EQ(m_source.Write(std::vector<std::uint8_t>{1}), 0);
    m_source.ContinueWriting();
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, closes_the_old_device_for_a_new_one_and_waits_to_be_opened) {
    const CPseudoTerminal other;
    ASSERT_TRUE(m_source.Open());
    EXPECT_TRUE(m_source.SetDevice(other.Device()));
    EXPECT_FALSE(m_source.IsOpen());
    CSerialHandler successor;
    successor.SetDevice(m_terminal.Device());
    EXPECT_TRUE(successor.Open()) << successor.TakeFailure();
}

TEST_F(SerialSource, keeps_speed_and_time_out_for_a_new_device) {
    CPseudoTerminal other;
    m_source.SetBaudRate(9600);
    m_source.SetReadTimeout(kLong);
    m_source.SetDevice(other.Device());
    ASSERT_TRUE(m_source.Open());
    const termios settings = other.Settings();
    EXPECT_EQ(::cfgetospeed(&settings), speed_t{B9600});
    ASSERT_TRUE(other.Send("x"));
    EXPECT_EQ(m_source.Read(1), "x");
}

TEST_F(SerialSource, changes_its_speed_while_open) {
    ASSERT_TRUE(m_source.Open());
    EXPECT_TRUE(m_source.SetBaudRate(460800));
    EXPECT_EQ(Speed(), speed_t{B460800});
}

TEST_F(SerialSource, changes_its_time_out_while_open) {
    OpenAndWaitLongForBytes();
    m_source.SetReadTimeout(Time());
    EXPECT_EQ(m_source.Read(1), "");
}

TEST_F(SerialSource, takes_any_baud_rate_and_tells_when_the_line_does_not) {
    ASSERT_TRUE(m_source.Open());
    EXPECT_TRUE(m_source.SetBaudRate(0));
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": no line has a speed of 0 baud"));
    EXPECT_EQ(Speed(), speed_t{B115200});
}

TEST_F(SerialSource, does_not_open_at_a_speed_of_zero) {
    m_source.SetBaudRate(0);
    m_source.SetDevice(m_terminal.Device());
    EXPECT_FALSE(m_source.Open());
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": no line has a speed of 0 baud"));
}

TEST_F(SerialSource, tells_once_why_it_cannot_be_opened) {
    CSerialHandler owner;
    owner.SetDevice(m_terminal.Device());
    ASSERT_TRUE(owner.Open());
    EXPECT_FALSE(m_source.Open());
    EXPECT_EQ(m_source.TakeFailure(), m_terminal.Device() + ": in use by another program");
    EXPECT_FALSE(m_source.Open());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, that_hangs_up_is_closed_by_a_read_and_told) {
    OpenAndWaitLongForBytes();
    m_terminal.HangUp();
    EXPECT_EQ(m_source.Read(100), "");
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_EQ(m_source.FileDescriptor(), -1);
    EXPECT_FALSE(m_source.IsAtEnd());
    EXPECT_THAT(m_source.TakeFailure(), StartsWith(m_terminal.Device() + ": "));
}

TEST_F(SerialSource, that_hangs_up_is_closed_by_either_write_and_told) {
    OpenAndWaitLongForBytes();
    m_terminal.HangUp();
    EXPECT_FALSE(m_source.Write(std::string("text")));
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": Input/output error"));

    CPseudoTerminal other;
    m_source.SetDevice(other.Device());
    ASSERT_TRUE(m_source.Open());
    other.HangUp();
    EXPECT_EQ(m_source.Write(std::vector<std::uint8_t>{1, 2}), 0);
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": Input/output error"));
}

TEST_F(SerialSource, tells_the_same_loss_again_after_it_was_open_in_between) {
    CSerialHandler owner;
    owner.SetDevice(m_terminal.Device());
    ASSERT_TRUE(owner.Open());
    EXPECT_FALSE(m_source.Open());
    EXPECT_NE(m_source.TakeFailure(), "");
    owner.Close();
    ASSERT_TRUE(m_source.Open());
    m_source.Close();
    ASSERT_TRUE(owner.Open());
    EXPECT_FALSE(m_source.Open());
    EXPECT_NE(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, goes_on_with_bytes_that_wait) {
    ASSERT_TRUE(m_source.Open());
    WriteUntilBytesWait();
    ASSERT_TRUE(m_source.HasWaitingBytes());
    while (m_source.HasWaitingBytes() && m_terminal.HasBytes(10'000)) {
        m_terminal.Receive(1024);
        m_source.ContinueWriting();
    }
    EXPECT_FALSE(m_source.HasWaitingBytes());
    EXPECT_TRUE(m_source.IsOpen());
}

TEST_F(SerialSource, that_takes_no_bytes_for_ten_seconds_is_closed_and_told) {
    CFakeClock clock;
    ASSERT_TRUE(m_source.Open());
    JamLine();
    while (m_source.HasWaitingBytes()) {
        clock.Advance(Time::FromMilliseconds(10'000));
        m_source.ContinueWriting();
    }
    EXPECT_FALSE(m_source.IsOpen());
    EXPECT_FALSE(m_source.HasWaitingBytes());
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": takes no bytes any more"));
}

TEST_F(SerialSource, is_drained_when_the_far_end_reads) {
    CDrainingClock clock(m_terminal);
    ASSERT_TRUE(m_source.Open());
    JamLine();
    clock.LetFarEndRead();
    m_source.Drain();
    EXPECT_FALSE(m_source.HasWaitingBytes());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, that_is_not_drained_within_a_second_stays_open_and_tells) {
    CFakeClock clock;
    ASSERT_TRUE(m_source.Open());
    JamLine();
    const Time start = clock.Now();
    m_source.Drain();
    EXPECT_EQ(clock.Now() - start, Time::FromMilliseconds(1000));
    EXPECT_EQ(m_source.TakeFailure(), m_terminal.Device() + ": what was written does not leave");
    EXPECT_TRUE(m_source.IsOpen());
    EXPECT_TRUE(m_source.HasWaitingBytes());
}

TEST_F(SerialSource, that_is_closed_has_nothing_to_drain_and_that_is_no_news) {
    const CFakeClock clock;
    m_source.Drain();
    EXPECT_TRUE(clock.Pauses().empty());
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, is_drained_before_it_changes_its_speed) {
    CDrainingClock clock(m_terminal);
    ASSERT_TRUE(m_source.Open());
    JamLine();
    clock.LetFarEndRead();
    EXPECT_TRUE(m_source.SetBaudRate(9600));
    EXPECT_EQ(clock.SpeedsWhileDraining(), std::set<speed_t>{B115200});
    EXPECT_EQ(Speed(), speed_t{B9600});
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, changes_its_speed_also_when_it_is_not_drained_and_tells) {
    const CFakeClock clock;
    ASSERT_TRUE(m_source.Open());
    JamLine();
    EXPECT_TRUE(m_source.SetBaudRate(9600));
    EXPECT_EQ(Speed(), speed_t{B9600});
    EXPECT_FALSE(m_source.HasWaitingBytes());
    EXPECT_EQ(m_source.TakeFailure(), m_terminal.Device() + ": what was written does not leave");
}

TEST_F(SerialSource, that_is_closed_is_opened_for_a_break) {
    const CFakeClock clock;
    m_source.SendBreak(0.25);
    ASSERT_TRUE(m_source.IsOpen());
    if (::ioctl(m_source.FileDescriptor(), TIOCCBRK) != 0) {
        EXPECT_NE(m_source.TakeFailure(), "");
        GTEST_SKIP() << "the terminals here have no breaks";
    }
    EXPECT_THAT(clock.Pauses(), ElementsAre(Time::FromMilliseconds(250)));
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(SerialSource, that_cannot_be_opened_for_a_break_tells_so_and_does_not_pause) {
    const CFakeClock clock;
    m_source.SetDevice(m_terminal.Device() + "-none");
    m_source.SendBreak(0.25);
    EXPECT_TRUE(clock.Pauses().empty());
    EXPECT_THAT(m_source.TakeFailure(), EndsWith(": No such file or directory"));
}
