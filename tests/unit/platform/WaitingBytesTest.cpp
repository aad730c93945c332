// How much waits to be written, and at what speed it will be.

#include "Support/PseudoTerminal.h"
#include "platform/Serial.h"

#include <gtest/gtest.h>

using Core::IO::Serial;

namespace {

class WaitingBytes : public testing::Test {
protected:
    CPseudoTerminal m_terminal;
    Serial m_serial{m_terminal.Device(), 9600, Core::Time()};
};

} // namespace

TEST_F(WaitingBytes, of_a_line_are_those_that_it_has_not_taken_yet) {
    ASSERT_TRUE(m_serial.Open());
    EXPECT_EQ(m_serial.WaitingBytes(), 0U);
    ASSERT_TRUE(m_serial.Write(std::string(100'000, 'x')));
    const std::size_t waiting = m_serial.WaitingBytes();
    EXPECT_GT(waiting, 0U);
    ASSERT_TRUE(m_serial.Write(std::string("yz")));
    EXPECT_LE(m_serial.WaitingBytes(), waiting + 2);
    std::size_t received = 0;
    while (m_serial.HasWaitingBytes() && m_terminal.HasBytes(10'000)) {
        received += m_terminal.Receive(1).size();
        ASSERT_TRUE(m_serial.ContinueWriting());
    }
    EXPECT_EQ(m_serial.WaitingBytes(), 0U);
    EXPECT_EQ(received + m_terminal.Receive(100'002 - received).size(), 100'002U);
}

TEST_F(WaitingBytes, of_a_line_are_none_once_it_is_closed) {
    ASSERT_TRUE(m_serial.Open());
    ASSERT_TRUE(m_serial.Write(std::string(100'000, 'x')));
    m_serial.Close();
    EXPECT_EQ(m_serial.WaitingBytes(), 0U);
}

TEST_F(WaitingBytes, leave_at_the_speed_that_was_accepted_last) {
    EXPECT_EQ(m_serial.BaudRate(), 9600);
    EXPECT_TRUE(m_serial.SetBaudRate(115200));
    EXPECT_EQ(m_serial.BaudRate(), 115200);
    EXPECT_FALSE(m_serial.SetBaudRate(0));
    EXPECT_EQ(m_serial.BaudRate(), 115200);
}
