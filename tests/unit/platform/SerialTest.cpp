#include "platform/Serial.h"

#include "LineSpeed.h"
#include "Support/CrowdedDescriptors.h"
#include "Support/PseudoTerminal.h"
#include "Support/TemporaryFolder.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

using Core::Time;
using Core::IO::Serial;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr std::int32_t kBaud = 115200;
constexpr std::int32_t kOddBaud = 54321;

class SerialLine : public testing::Test {
protected:
    bool OpenAt(std::int32_t baud) {
        m_serial.Close();
        m_serial.SetBaudRate(baud);
        return m_serial.Open();
    }

    speed_t OutputSpeed() const {
        const termios settings = m_terminal.Settings();
        return ::cfgetospeed(&settings);
    }

    /// As left by a program that talked something else over the line.
    void SpoilSettings() {
        termios settings = m_terminal.Settings();
        settings.c_iflag |= ICRNL | IXON | IXOFF | ISTRIP | INLCR | IGNCR | IXANY | PARMRK;
        settings.c_oflag |= OPOST | ONLCR;
        settings.c_lflag |= ICANON | ECHO | ISIG | IEXTEN;
        settings.c_cflag |= CSTOPB | PARODD | CRTSCTS;
        settings.c_cflag &= ~tcflag_t{CREAD | CLOCAL};
        settings.c_cc[VMIN] = 7;
        settings.c_cc[VTIME] = 9;
        m_terminal.SetSettings(settings);
    }

    /// Whether the terminals here know it: an emulator's may not know the fast ones.
    bool IsKnown(speed_t code) {
        const termios before = m_terminal.Settings();
        termios settings = before;
        ::cfsetspeed(&settings, code);
        m_terminal.SetSettings(settings);
        const bool isKnown = OutputSpeed() == code;
        m_terminal.SetSettings(before);
        return isKnown;
    }

    CPseudoTerminal m_terminal;
    Serial m_serial{m_terminal.Device(), kBaud, Time()};
};

/// Runs `what` in a process of its own; true when it returns true there.
template <typename T>
bool HoldsInChild(T what) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(what() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

struct SSpeedCase {
    std::int32_t baud;
    speed_t code;
};

class SerialSpeed : public SerialLine, public testing::WithParamInterface<SSpeedCase> {};

} // namespace

TEST_F(SerialLine, is_not_opened_by_its_construction) {
    EXPECT_FALSE(m_serial.IsOpen());
    EXPECT_EQ(m_serial.Descriptor(), -1);
    EXPECT_EQ(m_serial.LastError(), "");
}

TEST_F(SerialLine, is_open_once_opened_and_closed_once_closed) {
    ASSERT_TRUE(m_serial.Open()) << m_serial.LastError();
    EXPECT_TRUE(m_serial.IsOpen());
    EXPECT_GE(m_serial.Descriptor(), 0);
    m_serial.Close();
    EXPECT_FALSE(m_serial.IsOpen());
    EXPECT_EQ(m_serial.Descriptor(), -1);
    EXPECT_EQ(m_serial.LastError(), "");
}

TEST_F(SerialLine, opened_twice_stays_open_on_the_same_descriptor) {
    ASSERT_TRUE(m_serial.Open());
    const int descriptor = m_serial.Descriptor();
    EXPECT_TRUE(m_serial.Open());
    EXPECT_EQ(m_serial.Descriptor(), descriptor);
}

TEST_F(SerialLine, has_eight_data_bits_no_parity_one_stop_bit_and_no_flow_control) {
    SpoilSettings();
    ASSERT_TRUE(m_serial.Open()) << m_serial.LastError();
    const tcflag_t flags = m_terminal.Settings().c_cflag;
    EXPECT_EQ(flags & CSIZE, tcflag_t{CS8});
    EXPECT_EQ(flags & (PARENB | PARODD | CSTOPB | CRTSCTS), 0u);
    EXPECT_EQ(flags & (CREAD | CLOCAL), tcflag_t{CREAD | CLOCAL});
}

TEST_F(SerialLine, is_raw_and_gives_each_byte_as_it_comes) {
    SpoilSettings();
    ASSERT_TRUE(m_serial.Open()) << m_serial.LastError();
    const termios settings = m_terminal.Settings();
    EXPECT_EQ(settings.c_iflag, 0u);
    EXPECT_EQ(settings.c_oflag & OPOST, 0u);
    EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0u);
    EXPECT_EQ(settings.c_cc[VMIN], 1);
    EXPECT_EQ(settings.c_cc[VTIME], 0);
}

TEST_F(SerialLine, never_blocks_and_is_not_inherited) {
    ASSERT_TRUE(m_serial.Open());
    EXPECT_NE(::fcntl(m_serial.Descriptor(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(m_serial.Descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(SerialLine, does_not_become_the_controlling_terminal) {
    EXPECT_TRUE(HoldsInChild([this] {
        return ::setsid() != -1 && m_serial.Open() && ::open("/dev/tty", O_RDWR) == -1 &&
               errno == ENXIO;
    }));
}

TEST_F(SerialLine, throws_away_what_came_before_it_was_opened) {
    ASSERT_TRUE(m_serial.Open());
    ASSERT_TRUE(m_terminal.Send("stale"));
    m_serial.Close();
    m_serial.SetTimeout(Time::FromMilliseconds(10'000));
    ASSERT_TRUE(m_serial.Open());
    ASSERT_TRUE(m_terminal.Send("fresh"));
    EXPECT_EQ(m_serial.Read(100), "fresh");
}

TEST_F(SerialLine, refuses_a_second_opener) {
    ASSERT_TRUE(m_serial.Open());
    Serial second(m_terminal.Device(), kBaud, Time());
    EXPECT_FALSE(second.Open());
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(second.LastError(), m_terminal.Device() + ": in use by another program");
}

TEST_F(SerialLine, is_free_again_once_closed) {
    ASSERT_TRUE(m_serial.Open());
    m_serial.Close();
    Serial second(m_terminal.Device(), kBaud, Time());
    EXPECT_TRUE(second.Open()) << second.LastError();
}

TEST_F(SerialLine, is_free_again_once_its_owner_has_died) {
    ASSERT_TRUE(HoldsInChild([this] { return m_serial.Open(); }));
    EXPECT_TRUE(m_serial.Open()) << m_serial.LastError();
}

TEST_F(SerialLine, that_is_in_exclusive_use_by_a_stranger_is_refused) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may open what is in exclusive use";
    }
    const int stranger = ::open(m_terminal.Device().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(stranger, 0);
    ASSERT_EQ(::ioctl(stranger, TIOCEXCL), 0);
    EXPECT_FALSE(m_serial.Open());
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + ": in use by another program");
    ::close(stranger);
}

TEST_P(SerialSpeed, of_the_usual_ones_is_set) {
    if (!IsKnown(GetParam().code)) {
        GTEST_SKIP() << "the terminals here do not know this speed";
    }
    ASSERT_TRUE(OpenAt(GetParam().baud)) << m_serial.LastError();
    EXPECT_EQ(OutputSpeed(), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    All, SerialSpeed,
    testing::Values(
        SSpeedCase{50, B50}, SSpeedCase{75, B75}, SSpeedCase{110, B110}, SSpeedCase{134, B134},
        SSpeedCase{150, B150}, SSpeedCase{200, B200}, SSpeedCase{300, B300}, SSpeedCase{600, B600},
        SSpeedCase{1200, B1200}, SSpeedCase{1800, B1800}, SSpeedCase{2400, B2400},
        SSpeedCase{4800, B4800}, SSpeedCase{9600, B9600}, SSpeedCase{19200, B19200},
        SSpeedCase{38400, B38400}, SSpeedCase{57600, B57600}, SSpeedCase{115200, B115200},
        SSpeedCase{230400, B230400}, SSpeedCase{460800, B460800}, SSpeedCase{500000, B500000},
        SSpeedCase{576000, B576000}, SSpeedCase{921600, B921600}, SSpeedCase{1000000, B1000000},
        SSpeedCase{1152000, B1152000}, SSpeedCase{1500000, B1500000}, SSpeedCase{2000000, B2000000},
        SSpeedCase{2500000, B2500000}, SSpeedCase{3000000, B3000000}, SSpeedCase{3500000, B3500000},
        SSpeedCase{4000000, B4000000}),
    [](const auto& testCase) { return std::to_string(testCase.param.baud); });

TEST_F(SerialLine, takes_a_speed_that_has_no_name) {
    if (!TakesSpeedsInFigures(m_terminal.Descriptor())) {
        GTEST_SKIP() << "the terminals here know the standard speeds only";
    }
    ASSERT_TRUE(OpenAt(kOddBaud)) << m_serial.LastError();
    EXPECT_EQ(SpeedInFigures(m_terminal.Descriptor()), kOddBaud);
}

TEST_F(SerialLine, refuses_a_speed_that_the_line_does_not_take_and_keeps_its_own) {
    if (TakesSpeedsInFigures(m_terminal.Descriptor())) {
        GTEST_SKIP() << "the terminals here take any speed";
    }
    ASSERT_TRUE(OpenAt(9600));
    EXPECT_FALSE(m_serial.SetBaudRate(kOddBaud));
    EXPECT_THAT(m_serial.LastError(), EndsWith("the line does not take 54321 baud"));
    EXPECT_EQ(OutputSpeed(), speed_t{B9600});
    EXPECT_FALSE(Serial(m_terminal.Device(), kOddBaud, Time()).Open());
}

TEST_F(SerialLine, changes_its_speed_at_once_while_open) {
    ASSERT_TRUE(OpenAt(9600));
    const termios before = m_terminal.Settings();
    EXPECT_TRUE(m_serial.SetBaudRate(460800));
    EXPECT_EQ(OutputSpeed(), speed_t{B460800});
    EXPECT_EQ(m_terminal.Settings().c_lflag, before.c_lflag);
}

TEST_F(SerialLine, keeps_bytes_that_came_before_a_change_of_speed) {
    m_serial.SetTimeout(Time::FromMilliseconds(10'000));
    ASSERT_TRUE(OpenAt(9600));
    ASSERT_TRUE(m_terminal.Send("kept"));
    EXPECT_TRUE(m_serial.SetBaudRate(kBaud));
    EXPECT_EQ(m_serial.Read(4), "kept");
}

TEST_F(SerialLine, changes_its_speed_with_the_next_opening_while_closed) {
    EXPECT_TRUE(m_serial.SetBaudRate(19200));
    ASSERT_TRUE(m_serial.Open());
    EXPECT_EQ(OutputSpeed(), speed_t{B19200});
}

TEST_F(SerialLine, keeps_its_speed_when_a_new_one_is_not_above_zero) {
    ASSERT_TRUE(OpenAt(38400));
    EXPECT_FALSE(m_serial.SetBaudRate(0));
    EXPECT_EQ(m_serial.LastError(), m_terminal.Device() + ": no line has a speed of 0 baud");
    EXPECT_FALSE(m_serial.SetBaudRate(-9600));
    EXPECT_EQ(OutputSpeed(), speed_t{B38400});
    m_serial.Close();
    ASSERT_TRUE(m_serial.Open());
    EXPECT_EQ(OutputSpeed(), speed_t{B38400});
}

TEST_F(SerialLine, does_not_open_at_a_speed_that_is_not_above_zero) {
    for (const std::int32_t baud : {0, -1}) {
        Serial serial(m_terminal.Device(), baud, Time());
        EXPECT_FALSE(serial.Open());
        EXPECT_FALSE(serial.IsOpen());
        EXPECT_THAT(serial.LastError(), HasSubstr("no line has a speed of"));
    }
}

TEST(Serial, that_does_not_exist_is_told_with_its_name) {
    const CTemporaryFolder folder;
    Serial serial(folder.Path("ttyNone"), kBaud, Time());
    EXPECT_FALSE(serial.Open());
    EXPECT_EQ(serial.LastError(), folder.Path("ttyNone") + ": No such file or directory");
}

TEST(Serial, that_is_an_ordinary_file_is_refused) {
    const CTemporaryFolder folder;
    Serial serial(folder.Write("file", "bytes"), kBaud, Time());
    EXPECT_FALSE(serial.Open());
    EXPECT_FALSE(serial.IsOpen());
    EXPECT_EQ(serial.LastError(), folder.Path("file") + ": not a serial line");
}

TEST(Serial, whose_descriptor_select_could_not_watch_is_refused) {
    const CPseudoTerminal terminal;
    const CCrowdedDescriptors crowd;
    if (!crowd.IsComplete()) {
        GTEST_SKIP() << "the limit of descriptors lies below FD_SETSIZE";
    }
    Serial serial(terminal.Device(), kBaud, Time());
    EXPECT_FALSE(serial.Open());
    EXPECT_FALSE(serial.IsOpen());
    EXPECT_EQ(serial.LastError(), terminal.Device() + ": Too many open files");
}
