#include "IO/QuentaHandler.h"

#include "IO/QuentaMultiplexer.h"

#include <gmock/gmock.h>
#include <limits>

using testing::ElementsAre;

namespace {

class QuentaHandler : public CQuentaTest {
protected:
    void OpenPort50() {
        m_multiplexer.Serve(50);
        ASSERT_TRUE(m_handler.SetDevice("50"));
        ASSERT_TRUE(m_handler.Open());
        ASSERT_TRUE(m_multiplexer.Accept());
    }

    CQuentaHandler m_handler{m_multiplexer.SocketPrefix()};
};

} // namespace

TEST_F(QuentaHandler, opens_the_port_that_its_device_text_names) {
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.FileDescriptor(), -1);
    m_multiplexer.Serve(52);
    EXPECT_TRUE(m_handler.SetDevice("52"));
    EXPECT_EQ(Trace([this] { EXPECT_TRUE(m_handler.Open()); }), "");
    EXPECT_TRUE(m_handler.IsOpen());
    EXPECT_GE(m_handler.FileDescriptor(), 0);
    EXPECT_TRUE(m_multiplexer.Accept());
}

TEST_F(QuentaHandler, refuses_a_device_text_that_is_no_number) {
    EXPECT_FALSE(m_handler.SetDevice("abc"));
    EXPECT_FALSE(m_handler.SetDevice(""));
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_handler.Open()); }), "Quenta port not set yet\n");
}

TEST_F(QuentaHandler, keeps_its_device_while_open) {
    OpenPort50();
    EXPECT_FALSE(m_handler.SetDevice("52"));
    EXPECT_TRUE(m_handler.Close());
    EXPECT_TRUE(m_handler.SetDevice("52"));
    EXPECT_EQ(m_handler.FileDescriptor(), -1);
}

TEST_F(QuentaHandler, has_nothing_to_do_with_the_port_that_was_its_device_before) {
    OpenPort50();
    ASSERT_TRUE(m_handler.Close());
    ASSERT_TRUE(m_handler.SetDevice("52"));
    EXPECT_EQ(m_handler.Read(10), "");
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_FALSE(m_multiplexer.Accept()) << "the read has connected to port 50";
}

TEST_F(QuentaHandler, cannot_be_opened_twice) {
    OpenPort50();
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_handler.Open()); }),
              "Quenta is already open.  cannot open twice\n");
    EXPECT_TRUE(m_handler.IsOpen());
}

TEST_F(QuentaHandler, tells_that_it_cannot_be_opened) {
    ASSERT_TRUE(m_handler.SetDevice("50"));
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_handler.Open()); }),
              "connect: No such file or directory\nQuenta not opened ok\n");
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.FileDescriptor(), -1);
    EXPECT_EQ(m_handler.TakeFailure(), "");
    EXPECT_THAT(s_slept, ElementsAre());
}

TEST_F(QuentaHandler, can_be_closed_once_and_opened_again) {
    OpenPort50();
    EXPECT_TRUE(m_handler.Close());
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.FileDescriptor(), -1);
    EXPECT_FALSE(m_handler.Close());
    EXPECT_TRUE(m_handler.Open());
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandler, of_port_0_is_open_without_a_multiplexer) {
    ASSERT_TRUE(m_handler.SetDevice("0"));
    EXPECT_TRUE(m_handler.Open());
    EXPECT_TRUE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.FileDescriptor(), -1);
    EXPECT_TRUE(m_handler.Write("log version\r\n"));
    EXPECT_EQ(m_handler.Read(10), "");
    EXPECT_TRUE(m_handler.IsOpen());
    EXPECT_THAT(s_slept, ElementsAre());
}

TEST_F(QuentaHandler, reads_what_is_there_up_to_the_count) {
    OpenPort50();
    m_multiplexer.Send(std::string("\xAA\x44\x12\x00zz", 6));
    EXPECT_EQ(m_handler.Read(4), std::string("\xAA\x44\x12\x00", 4));
    EXPECT_EQ(m_handler.Read(4), "zz");
    EXPECT_EQ(m_handler.Read(4), "");
    EXPECT_TRUE(m_handler.IsOpen());
}

TEST_F(QuentaHandler, reads_by_its_read_size) {
    OpenPort50();
    m_handler.SetReadSize(3);
    m_multiplexer.Send("abcde");
    EXPECT_EQ(m_handler.Read(), "abc");
    m_handler.SetReadSize(0);
    EXPECT_EQ(m_handler.Read(), "");
    m_handler.SetReadSize(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(m_handler.Read(), "de");
}

TEST_F(QuentaHandler, reads_nothing_when_nothing_is_asked_for_even_unconnected) {
    EXPECT_EQ(Trace([this] {
                  EXPECT_EQ(m_handler.Read(0), "");
                  EXPECT_EQ(m_handler.Read(-1), "");
              }),
              "");
    EXPECT_THAT(s_slept, ElementsAre());
}

TEST_F(QuentaHandler, with_a_time_out_still_returns_at_once_what_is_there) {
    OpenPort50();
    EXPECT_TRUE(m_handler.SetReadTimeout(Core::Time::FromMilliseconds(600'000)));
    m_multiplexer.Send("ab");
    EXPECT_EQ(m_handler.Read(10), "ab");
}

TEST_F(QuentaHandler, waits_for_bytes_the_whole_milliseconds_of_its_time_out) {
    OpenPort50();
    m_handler.SetReadTimeout(Core::Time::FromSeconds(0.0309));
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_EQ(m_handler.Read(10), "");
    EXPECT_GE((Core::MonotonicTime::Now() - begin).AsSeconds(), 0.029);
    EXPECT_TRUE(m_handler.IsOpen());
}

TEST_F(QuentaHandler, never_waits_with_a_negative_time_out) {
    OpenPort50();
    m_handler.SetReadTimeout(Core::Time::FromSeconds(-1.0));
    EXPECT_EQ(m_handler.Read(10), "");
}

TEST_F(QuentaHandler, sleeps_a_second_when_a_read_finds_no_multiplexer) {
    ASSERT_TRUE(m_handler.SetDevice("50"));
    EXPECT_FALSE(m_handler.Open());
    EXPECT_THAT(Trace([this] { EXPECT_EQ(m_handler.Read(10), ""); }),
                testing::EndsWith("Quenta port not connected for Read()\n"));
    EXPECT_THAT(s_slept, ElementsAre(1.0));
    EXPECT_FALSE(m_handler.IsOpen());
}

TEST_F(QuentaHandler, sleeps_a_second_when_it_is_read_before_it_was_ever_opened) {
    EXPECT_EQ(Trace([this] { EXPECT_EQ(m_handler.Read(10), ""); }),
              "Quenta port not connected for Read()\n");
    EXPECT_THAT(s_slept, ElementsAre(1.0));
}

TEST_F(QuentaHandler, writes_text_and_bytes_to_the_port) {
    OpenPort50();
    EXPECT_TRUE(m_handler.Write(std::string("log version\r\n")));
    EXPECT_EQ(m_handler.Write(std::vector<std::uint8_t>{0xAA, 0x00, 0x12}), 1);
    EXPECT_EQ(m_multiplexer.Receive(), std::string("log version\r\n\xAA\x00\x12", 16));
}

TEST_F(QuentaHandler, cannot_be_written_to_before_it_was_opened_or_after_it_was_closed) {
    EXPECT_FALSE(m_handler.Write(std::string("x")));
    EXPECT_EQ(m_handler.Write(std::vector<std::uint8_t>{1}), 0);
    OpenPort50();
    m_handler.Close();
    EXPECT_FALSE(m_handler.Write(std::string("x")));
    EXPECT_EQ(m_handler.Write(std::vector<std::uint8_t>{1}), 0);
}
