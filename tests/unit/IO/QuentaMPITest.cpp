#include "IO/QuentaMPI.h"

#include "IO/QuentaRPCServer.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// A client, connected to a multiplexer that answers everything with one result.
class QuentaMPI : public testing::Test {
protected:
    CQuentaMPI& MultiplexerAnswers(const std::string& result) {
        m_server.SetResult(result);
        EXPECT_TRUE(m_client.Open()) << m_client.LastError();
        return m_client;
    }

    CQuentaRPCServer m_server{"null"};
    CQuentaMPI m_client{m_server.Port()};
};

constexpr const char* kOtherKind = "the answer is of another kind than expected";

} // namespace

TEST(QuentaMPIPort, is_that_of_the_multiplexer) {
    EXPECT_EQ(CQuentaMPI::kPort, 5309);
}

TEST_F(QuentaMPI, asks_for_the_dump_of_all_ports) {
    BListC ports;
    CQuentaMPI& client =
        MultiplexerAnswers(R"([[50,"gps_main_boot","/dev/ttyS1",115200,1,2,1e10,7]])");
    ASSERT_TRUE(client.GetPortDump(ports));
    EXPECT_THAT(m_server.Requests(), ElementsAre("GetPortDump[]"));
    ASSERT_EQ(ports.Size(), 1u);
    ASSERT_NE(ports.At(0).AsList(), nullptr);
    EXPECT_EQ(*ports.At(0).AsList()->At(1).AsText(), "gps_main_boot");
    EXPECT_EQ(ports.At(0).AsList()->At(6).AsDouble(), 1e10);
}

TEST_F(QuentaMPI, asks_for_the_device_of_a_port) {
    std::string device;
    ASSERT_TRUE(MultiplexerAnswers("\"/dev/ttyS1\"").GetPortMapping(50, device));
    EXPECT_EQ(device, "/dev/ttyS1");
    EXPECT_THAT(m_server.Requests(), ElementsAre("GetPortMapping[50]"));
}

TEST_F(QuentaMPI, sets_the_device_of_a_port) {
    EXPECT_TRUE(MultiplexerAnswers("1").SetPortMapping(52, "/dev/ttyS2"));
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortMapping[52,\"/dev/ttyS2\"]"));
}

TEST_F(QuentaMPI, asks_for_the_speed_of_a_port) {
    std::int32_t baud = 0;
    ASSERT_TRUE(MultiplexerAnswers("115200").GetPortConfig(50, baud));
    EXPECT_EQ(baud, 115200);
    EXPECT_THAT(m_server.Requests(), ElementsAre("GetPortConfig[50]"));
}

TEST_F(QuentaMPI, sets_the_speed_of_a_port) {
    EXPECT_TRUE(MultiplexerAnswers("1").SetPortConfig(50, 57600));
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[50,57600]"));
}

TEST_F(QuentaMPI, tells_that_an_order_was_refused) {
    EXPECT_FALSE(MultiplexerAnswers("0").SetPortConfig(50, 57600));
    EXPECT_EQ(m_client.LastError(), "refused by the multiplexer");
    EXPECT_FALSE(m_client.SetPortMapping(50, "nowhere"));
}

TEST_F(QuentaMPI, takes_no_answer_of_another_kind) {
    BListC ports;
    std::string device = "as before";
    std::int32_t baud = -1;
    CQuentaMPI& client = MultiplexerAnswers("null");
    EXPECT_FALSE(client.GetPortDump(ports));
    EXPECT_EQ(client.LastError(), kOtherKind);
    EXPECT_FALSE(client.GetPortMapping(50, device));
    EXPECT_EQ(device, "as before");
    EXPECT_FALSE(client.GetPortConfig(50, baud));
    EXPECT_EQ(baud, -1);
    EXPECT_FALSE(client.SetPortConfig(50, 57600));
    EXPECT_EQ(client.LastError(), kOtherKind);
}

TEST_F(QuentaMPI, can_do_nothing_once_closed) {
    MultiplexerAnswers("1").Close();
    EXPECT_FALSE(m_client.SetPortConfig(50, 57600));
    EXPECT_EQ(m_client.LastError(), "not connected");
    EXPECT_TRUE(m_server.Requests().empty());
}

TEST_F(QuentaMPI, tells_that_nobody_listens) {
    const CLoopbackSocket nobodyListens;
    CQuentaMPI client(nobodyListens.Port());
    EXPECT_FALSE(client.Open());
    EXPECT_THAT(client.LastError(), testing::EndsWith("Connection refused"));
}
