#include "platform/SerialSettings.h"

#include "LineSpeed.h"
#include "Support/PseudoTerminal.h"

#include <gtest/gtest.h>

using Core::IO::ChangeLineSpeed;
using Core::IO::LineSpeed;
using Core::IO::MakeLineRaw;

TEST(LineSpeed, is_the_one_that_was_set_last) {
    const CPseudoTerminal terminal;
    ASSERT_EQ(MakeLineRaw(terminal.Descriptor(), 9600), "");
    EXPECT_EQ(LineSpeed(terminal.Descriptor()), 9600U);
    ASSERT_EQ(ChangeLineSpeed(terminal.Descriptor(), 460800), "");
    EXPECT_EQ(LineSpeed(terminal.Descriptor()), 460800U);
}

TEST(LineSpeed, may_have_no_name) {
    const CPseudoTerminal terminal;
    if (!TakesSpeedsInFigures(terminal.Descriptor())) {
        GTEST_SKIP() << "the terminals here know the standard speeds only";
    }
    ASSERT_EQ(MakeLineRaw(terminal.Descriptor(), 54321), "");
    EXPECT_EQ(LineSpeed(terminal.Descriptor()), 54321U);
}

TEST(LineSpeed, of_a_line_that_was_hung_up_is_none) {
    CPseudoTerminal terminal;
    termios settings = terminal.Settings();
    ::cfsetspeed(&settings, B0);
    terminal.SetSettings(settings);
    EXPECT_EQ(LineSpeed(terminal.Descriptor()), 0U);
}

TEST(LineSpeed, of_what_is_no_line_is_none) {
    const int descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(LineSpeed(descriptor), 0U);
    ::close(descriptor);
}
