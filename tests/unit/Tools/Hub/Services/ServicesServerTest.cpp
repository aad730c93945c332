#include "MessageKinds.h"
#include "ServicesTesting.h"
#include "platform/MPIServerTesting.h"

#include <gmock/gmock.h>

namespace {

using namespace HubTesting;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Services : public CServicesTesting {
protected:
    json Params(const std::string& method) {
        for (const SKind& kind : MessageKinds()) {
            if (kind.method == method) {
                return kind.Params();
            }
        }
        return nullptr;
    }
};

/// With clients that are connected over TCP.
class ServicesClients : public testing::Test {
protected:
    ServicesClients() {
        m_loop.sockets.Add(&m_server);
        EXPECT_TRUE(m_server.StartServer("127.0.0.1", 0, 5, [](const std::string&) {}));
    }

    std::unique_ptr<CTestClient> Connect() {
        const std::size_t before = m_server.ClientCount();
        auto client = std::make_unique<CTestClient>(m_server.Port());
        EXPECT_TRUE(m_loop.PassUntil([&] { return m_server.ClientCount() == before + 1; }));
        return client;
    }
    void Say(CTestClient& client, const std::string& name) {
        const json params = {{"name", name}, {"time", 1.5}, {"separation", 2}};
        client.SendLine(
            json{{"jsonrpc", "2.0"}, {"method", "nmea.geoid"}, {"params", params}}.dump());
        AwaitCalls(m_observer.calls.size() + 1);
    }
    void AwaitCalls(std::size_t count) {
        EXPECT_TRUE(m_loop.PassUntil([&] { return m_observer.calls.size() >= count; }));
    }
    void Leave(std::unique_ptr<CTestClient> client) {
        const std::size_t before = m_server.ClientCount();
        client->Close();
        EXPECT_TRUE(m_loop.PassUntil([&] { return m_server.ClientCount() == before - 1; }));
    }

    CTemporaryFolder m_folder;
    Hub::CCategories m_categories{m_folder.Path("categories.conf")};
    CNotingObserver m_observer;
    CServerLoop m_loop;
    Hub::CServicesServer m_server{m_loop.sockets, m_categories, {&m_observer}};
};

} // namespace

TEST_F(Services, tell_every_observer_in_their_order) {
    CNotingObserver second;
    m_server = std::make_unique<Hub::CServicesServer>(
        m_sockets, *m_categories, std::vector<Hub::CHubObserver*>{&m_observer, &second});
    Notify("nmea.geoid", Params("nmea.geoid"));
    EXPECT_THAT(m_observer.calls, ElementsAre("geoid|N|1.5|1|43.75"));
    EXPECT_EQ(second.calls, m_observer.calls);
}

TEST_F(Services, keep_the_order_of_messages) {
    Notify("logger.raw", Params("logger.raw"));
    Notify("nmea.geoid", Params("nmea.geoid"));
    Notify("logger.raw", Params("logger.raw"));
    EXPECT_THAT(m_observer.calls,
                ElementsAre("raw|N|1.5|1|foo", "geoid|N|1.5|1|43.75", "raw|N|1.5|1|foo"));
}

TEST_F(Services, tell_a_null_as_a_number_that_is_none) {
    json params = Params("nmea.geoid");
    params["separation"] = nullptr;
    EXPECT_THAT(CallsOf("nmea.geoid", params), ElementsAre("geoid|N|1.5|1|nan"));
}

TEST_F(Services, begin_each_message_anew) {
    Notify("position.sky", Params("position.sky"));
    json params = Params("position.sky");
    params["satellites"] = json::array();
    EXPECT_THAT(CallsOf("position.sky", params), ElementsAre("sky|N|1.5|1|"));
    params["satellites"] = {5};
    CallsOf("position.sky", params);
    EXPECT_THAT(CallsOf("position.sky", Params("position.sky")),
                ElementsAre("sky|N|1.5|1|(7 1 4294967295 47.500000)(255 0 0 none)"));
}

TEST_F(Services, tell_the_other_level) {
    json status = Params("logger.status");
    status["level"] = "info";
    EXPECT_THAT(CallsOf("logger.status", status), ElementsAre("status|N|1.5|1|info|k|v, w"));
    json event = Params("logger.event");
    event["level"] = "warning";
    EXPECT_THAT(CallsOf("logger.event", event), ElementsAre("event|N|1.5|1|warning|lost"));
}

TEST_F(Services, take_as_many_channels_as_a_receiver_may_have) {
    const json channel = {{"prn", 1}, {"word1", 0}, {"word2", 0}, {"cn0", 40}};
    json params = Params("position.sky");
    params["satellites"] = json(512, channel);
    EXPECT_EQ(WhyWrong("position.sky", params), "");
    params["satellites"] = json(513, channel);
    EXPECT_EQ(WhyWrong("position.sky", params), "\"satellites\" must be at most 512");
}

TEST_F(Services, pass_over_a_poorer_solution_beside_a_better_one) {
    json params = Params("position.ecef");
    CallsOf("position.ecef", params);
    params["positionQuality"] = 1;
    params["fixQuality"] = 1;
    params["solutionClass"] = 4;
    EXPECT_THAT(CallsOf("position.ecef", params), ElementsAre(HasSubstr("passed over|N|1.5|1|")));
}

TEST_F(Services, tell_a_request_what_was_wrong_with_it_first) {
    EXPECT_EQ(WhyWrong("logger.status", json::object()), "\"name\" is missing");
    json params = Params("logger.status");
    params["value"] = 5;
    params["time"] = "now";
    EXPECT_EQ(WhyWrong("logger.status", params), "\"time\" must be a number or null");
}

TEST_F(Services, refuse_what_is_no_message) {
    for (const char* const line : {"", "x", "{}", R"({"jsonrpc":"2.0"})", "[]", "null"}) {
        m_observer.calls.clear();
        EXPECT_LT(AnswerTo(line)["error"]["code"], -32599) << line;
        EXPECT_THAT(m_observer.calls, ElementsAre("refused")) << line;
    }
}

TEST_F(Services, refuse_methods_that_are_not_theirs) {
    EXPECT_EQ(Request("logger.stat", Params("logger.status"))["error"]["code"], -32601);
    EXPECT_THAT(m_observer.calls, ElementsAre("refused"));
}

TEST_F(Services, want_their_arguments_by_name) {
    const json answer = Request("nmea.geoid", {"N", 1.5, 43.75});
    EXPECT_EQ(answer["error"]["code"], -32602);
    EXPECT_EQ(answer["error"]["message"], "the arguments of this method are an object");
    EXPECT_EQ(AnswerTo(R"({"jsonrpc":"2.0","id":1,"method":"nmea.geoid"})")["error"]["code"],
              -32602);
}

TEST_F(ServicesClients, are_told_apart_by_numbers_that_are_never_used_again) {
    auto first = Connect();
    auto second = Connect();
    Say(*first, "a");
    Say(*second, "b");
    Say(*first, "c");
    Leave(std::move(second));
    auto third = Connect();
    Say(*third, "d");
    EXPECT_THAT(m_observer.calls, ElementsAre("geoid|a|1.5|1|2", "geoid|b|1.5|2|2",
                                              "geoid|c|1.5|1|2", "gone|2", "geoid|d|1.5|3|2"));
}

TEST_F(ServicesClients, that_never_said_a_thing_are_not_told_to_be_gone) {
    Leave(Connect());
    EXPECT_THAT(m_observer.calls, IsEmpty());
}

TEST_F(ServicesClients, send_many_messages_in_one_batch) {
    auto client = Connect();
    client->SendLine(
        R"([{"jsonrpc":"2.0","method":"nmea.geoid","params":{"name":"a","time":1,"separation":2}},)"
        R"({"jsonrpc":"2.0","method":"nmea.geoid","params":{"name":"b"}},)"
        R"({"jsonrpc":"2.0","method":"nmea.geoid","params":{"name":"c","time":1,"separation":3}}])");
    AwaitCalls(3);
    EXPECT_THAT(m_observer.calls, ElementsAre("geoid|a|1|1|2", "refused", "geoid|c|1|1|3"));
}

TEST_F(ServicesClients, of_a_line_that_is_too_long_are_refused_and_closed) {
    auto client = Connect();
    client->Send(std::string(1024 * 1024 + 1, 'x'));
    EXPECT_TRUE(m_loop.PassUntil([&] {
        client->Transfer();
        return client->HasEnded();
    }));
    EXPECT_THAT(client->Received(), HasSubstr("-32600"));
    EXPECT_THAT(m_observer.calls, ElementsAre("refused"));
}
