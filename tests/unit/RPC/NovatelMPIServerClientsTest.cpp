// The service with clients of its own: callbacks, and what one pass may do.

#include "RPC/NovatelMPIServerTesting.h"
#include "platform/MPIServerTesting.h"

namespace {

using Lines = std::vector<std::string>;
using Sentences::Trackstat;

class NovatelMPIServerClients : public CNovatelMPIServerTesting {
protected:
    void SetUp() override {
        m_loop.sockets.Add(&m_listening);
        ASSERT_TRUE(m_listening.StartServer("127.0.0.1", 0, 5, nullptr));
    }

    std::unique_ptr<CTestClient> Connect() {
        const std::size_t before = m_listening.ClientCount();
        auto client = std::make_unique<CTestClient>(m_listening.Port());
        EXPECT_TRUE(m_loop.PassUntil([&] { return m_listening.ClientCount() == before + 1; }));
        return client;
    }
    /// The lines that come until the answer to a last request has come.
    Lines LinesUpTo(CTestClient& client, const std::string& requests) {
        const std::size_t before = client.LineCount();
        client.Send(requests + R"({"jsonrpc":"2.0","id":"end","method":"DummyFunction"})" + "\n");
        EXPECT_TRUE(m_loop.PassUntil([&] {
            client.Transfer();
            return client.LineCount() > before && client.Received().ends_with(kEnd);
        }));
        Lines lines = client.Lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        lines.pop_back();
        return lines;
    }
    Lines NewLines(CTestClient& client) { return LinesUpTo(client, ""); }
    void AskForTrackingStatus(CTestClient& client) {
        EXPECT_EQ(LinesUpTo(client, kAsk).size(), 1U);
    }
    /// A TRACKSTAT with so many satellites, taken outside of the sockets' service as in the loop.
    void Track(int satellites) {
        Trackstat log;
        for (int i = 0; i < satellites; ++i) {
            log.channel({.prn = static_cast<std::uint16_t>(i + 1)});
        }
        Offer(m_receiverStatus, log);
    }
    static std::string Posted(int count) {
        return R"({"jsonrpc":"2.0","method":"cb_trackingStatus","params":[)" +
               std::to_string(count) + "]}";
    }

    static inline const std::string kAsk =
        R"({"jsonrpc":"2.0","id":1,"method":"novatel_GetReceiverTrackingStatus"})"
        "\n";
    static inline const std::string kEnd = R"({"jsonrpc":"2.0","id":"end","result":[]})"
                                           "\n";

    CServerLoop m_loop;
    CNovatelMPIServer m_listening{m_loop.sockets, &m_commands, &m_upgrade, &m_receiverStatus};
};

} // namespace

TEST_F(NovatelMPIServerClients,
       are_told_each_change_of_the_tracked_satellites_once_they_have_asked) {
    const auto asker = Connect();
    const auto other = Connect();
    Track(1);
    EXPECT_EQ(NewLines(*asker), Lines{}) << "not before it has asked";
    AskForTrackingStatus(*asker);
    Track(3);
    Track(3);
    Track(5);
    Track(0);
    EXPECT_EQ(NewLines(*asker), (Lines{Posted(3), Posted(5), Posted(0)}));
    EXPECT_EQ(NewLines(*other), Lines{});
}

TEST_F(NovatelMPIServerClients, are_told_once_however_often_they_have_asked) {
    const auto asker = Connect();
    AskForTrackingStatus(*asker);
    AskForTrackingStatus(*asker);
    Track(2);
    EXPECT_EQ(NewLines(*asker), Lines{Posted(2)});
}

TEST_F(NovatelMPIServerClients, are_told_with_the_pass_in_which_it_changes) {
    const auto asker = Connect();
    AskForTrackingStatus(*asker);
    Track(2);
    m_loop.sockets.EndPass();
    bool hasCome = false;
    for (int i = 0; i < 1000 && !hasCome; ++i) {
        asker->Transfer();
        hasCome = asker->Lines().back() == Posted(2);
        usleep(hasCome ? 0 : 1000);
    }
    EXPECT_TRUE(hasCome);
}

TEST_F(NovatelMPIServerClients, are_forgotten_when_they_have_closed) {
    auto gone = Connect();
    const auto left = Connect();
    AskForTrackingStatus(*gone);
    AskForTrackingStatus(*left);
    gone.reset();
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_listening.ClientCount() == 1; }));
    const auto newcomer = Connect();
    Track(4);
    EXPECT_EQ(NewLines(*left), Lines{Posted(4)});
    EXPECT_EQ(NewLines(*newcomer), Lines{});
}

TEST_F(NovatelMPIServerClients, get_the_changes_of_a_batch_behind_its_answer) {
    const auto asker = Connect();
    AskForTrackingStatus(*asker);
    const std::string set = R"({"jsonrpc":"2.0","id":2,"method":"novatel_SetSBASPRN","params":[)";
    asker->SendLine("[" + set + "1]}," + set + "2]}," + set + "3]}]");
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_commands.SBASPrn() == 1; }));
    Track(6);
    const std::string done = R"({"jsonrpc":"2.0","id":2,"result":[]})";
    EXPECT_EQ(NewLines(*asker), (Lines{"[" + done + "," + done + "," + done + "]", Posted(6)}));
}

TEST_F(NovatelMPIServerClients, have_one_setting_written_and_one_pause_made_in_a_pass) {
    const auto client = Connect();
    std::string requests;
    for (const char* call :
         {R"("novatel_SetSBASPRN","params":[1])", R"("novatel_RefreshReceiverConfiguration")",
          R"("novatel_SetSBASPRN","params":[2])", R"("novatel_RefreshReceiverConfiguration")",
          R"("novatel_SetSBASPRN","params":[3])"}) {
        requests += R"({"jsonrpc":"2.0","method":)" + std::string(call) + "}\n";
    }
    client->Send(requests);
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_commands.SBASPrn() == 1; }));
    EXPECT_EQ(m_clock.Pauses().size(), 3U) << "one call that pauses fits in as well";
    EXPECT_TRUE(m_loop.IsReady());
    m_loop.Pass();
    EXPECT_EQ(m_commands.SBASPrn(), 2);
    EXPECT_EQ(m_clock.Pauses().size(), 6U);
    m_loop.Pass();
    EXPECT_EQ(m_commands.SBASPrn(), 3);
}

TEST_F(NovatelMPIServerClients, have_each_kind_of_setting_written_one_a_pass) {
    constexpr const char* kCalls[] = {
        R"("novatel_SetSBASEnabled","params":[1])",
        R"("novatel_SetReferenceFormat","params":["CMR"])",
        R"("novatel_SetReferencePosition","params":[6378137,0,0])",
        R"("novatel_UnsetReferencePosition")",
        R"("novatel_SetGlonassCorrectionsEnabled","params":[0])",
        R"("novatel_SetGPSLoggingEnabled","params":[1])",
        R"("novatel_SetIonosphereMode","params":[1])",
        R"("novatel_SetSBASPRN","params":[1])",
    };
    m_listening.AfterService();
    std::string answer;
    ASSERT_TRUE(m_listening.Answer(
        m_connection, R"({"jsonrpc":"2.0","method":"novatel_SetSBASPRN","params":[7]})", answer));
    const std::string settings = SettingsFile();
    for (const char* call : kCalls) {
        EXPECT_FALSE(m_listening.Answer(
            m_connection, R"({"jsonrpc":"2.0","id":1,"method":)" + std::string(call) + "}", answer))
            << call;
    }
    EXPECT_EQ(SettingsFile(), settings);
    EXPECT_EQ(answer, "");
}

TEST_F(NovatelMPIServerClients, do_not_have_an_upgrade_started_in_a_pass_that_has_paused) {
    m_listening.AfterService();
    std::string answer;
    ASSERT_TRUE(m_listening.Answer(
        m_connection, R"({"jsonrpc":"2.0","method":"novatel_RefreshReceiverConfiguration"})",
        answer));
    const std::string start =
        R"({"jsonrpc":"2.0","id":1,"method":"novatel_StartFirmwareUpgrade","params":["/none"]})";
    EXPECT_FALSE(m_listening.Answer(m_connection, start, answer));
    m_listening.AfterService();
    EXPECT_TRUE(m_listening.Answer(m_connection, start, answer));
    EXPECT_EQ(answer, R"({"jsonrpc":"2.0","id":1,"result":[0]})");
}
