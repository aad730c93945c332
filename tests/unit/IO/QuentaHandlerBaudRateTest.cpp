// The speed of a port is the multiplexer's to set, and told to it by a remote procedure call.

#include "IO/QuentaHandler.h"

#include "IO/QuentaMultiplexer.h"
#include "IO/QuentaRPCServer.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class QuentaHandlerBaudRate : public CQuentaTest {
protected:
    void ServeAndOpen(CQuentaHandler& handler) {
        m_multiplexer.Serve(50);
        ASSERT_TRUE(handler.SetDevice("50"));
        ASSERT_TRUE(handler.Open());
    }

    CQuentaRPCServer m_server{"1"};
    CQuentaHandler m_handler{m_multiplexer.SocketPrefix(), m_server.Port()};
};

} // namespace

TEST_F(QuentaHandlerBaudRate, is_kept_until_the_port_is_first_opened_and_sent_once) {
    EXPECT_TRUE(m_handler.SetBaudRate(57600));
    ASSERT_TRUE(m_handler.SetDevice("50"));
    EXPECT_FALSE(m_handler.Open());
    EXPECT_THAT(m_server.Requests(), ElementsAre());
    ServeAndOpen(m_handler);
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[50,57600]"));
    ASSERT_TRUE(m_handler.Close());
    ASSERT_TRUE(m_handler.Open());
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[50,57600]"));
}

TEST_F(QuentaHandlerBaudRate, is_not_told_to_anybody_unless_it_was_set) {
    ServeAndOpen(m_handler);
    EXPECT_THAT(m_server.Requests(), ElementsAre());
}

TEST_F(QuentaHandlerBaudRate, is_sent_at_once_when_the_port_is_known) {
    ASSERT_TRUE(m_handler.SetDevice("52"));
    EXPECT_TRUE(m_handler.SetBaudRate(9600));
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[52,9600]"));
}

TEST_F(QuentaHandlerBaudRate, is_sent_at_once_while_the_port_is_open) {
    ServeAndOpen(m_handler);
    EXPECT_TRUE(m_handler.SetBaudRate(9600));
    EXPECT_TRUE(m_handler.SetBaudRate(115200));
    EXPECT_THAT(m_server.Requests(),
                ElementsAre("SetPortConfig[50,9600]", "SetPortConfig[50,115200]"));
}

TEST_F(QuentaHandlerBaudRate, that_is_refused_is_told_and_sent_again_with_the_next_opening) {
    m_server.SetResult("0");
    ServeAndOpen(m_handler);
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_handler.SetBaudRate(1200)); }),
              "Cannot set port 50 of the multiplexer to 1200 baud: refused by the multiplexer\n");
    EXPECT_TRUE(m_handler.IsOpen());
    m_handler.Read(10);
    EXPECT_EQ(m_server.Requests().size(), 1u) << "sent again without an opening";

    m_server.SetResult("1");
    ASSERT_TRUE(m_handler.Close());
    ASSERT_TRUE(m_handler.Open());
    EXPECT_THAT(m_server.Requests(),
                ElementsAre("SetPortConfig[50,1200]", "SetPortConfig[50,1200]"));
}

TEST_F(QuentaHandlerBaudRate, that_nobody_takes_is_told_and_does_not_keep_the_port_from_opening) {
    const CLoopbackSocket nobodyListens;
    CQuentaHandler handler(m_multiplexer.SocketPrefix(), nobodyListens.Port());
    EXPECT_TRUE(handler.SetBaudRate(57600));
    EXPECT_EQ(Trace([&] { ServeAndOpen(handler); }),
              "Cannot set port 50 of the multiplexer to 57600 baud: 127.0.0.1:" +
                  std::to_string(nobodyListens.Port()) + ": Connection refused\n");
    EXPECT_TRUE(handler.IsOpen());
}
