#include "platform/MPISocketClient.h"

#include "JSONValue.h"
#include "platform/ScriptedServer.h"

#include <gtest/gtest.h>
#include <mutex>
#include <vector>

namespace {

/// What an answer may be preceded by, and what it is.
struct SAnswer {
    const char* text;
    bool isResult;
    const char* told; ///< the result as JSON, or the error
};

/// A server that answers the requests of a client with these texts in turn, and keeps them.
class CAnsweringServer {
public:
    explicit CAnsweringServer(std::vector<std::string> answers)
        : m_answers(std::move(answers)), m_server([this](CScriptedPeer& peer) {
              for (std::string line = peer.ReadLine(); !line.empty(); line = peer.ReadLine()) {
                  peer.Send(m_answers.at(Keep(line)));
              }
          }) {}

    std::uint16_t Port() const { return m_server.Port(); }
    std::vector<std::string> Requests() {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    std::size_t Keep(const std::string& request) {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
        return m_requests.size() - 1;
    }

    const std::vector<std::string> m_answers;
    std::mutex m_mutex;
    std::vector<std::string> m_requests;
    CScriptedServer m_server;
};

/// One call, as a test looks at it.
struct SCall {
    bool succeeded = false;
    std::string told; ///< the result as JSON, or the error
};

SCall Call(MPISocketClientC& client, const BListC& params = BListC()) {
    SCall call;
    BAtomC result("untouched");
    std::string error;
    call.succeeded = client.Call("Method", params, result, error);
    if (call.succeeded) {
        JSONValue::Append(call.told, result);
    } else {
        call.told = error;
        EXPECT_NE(result.AsText(), nullptr) << "a failed call has changed the result";
    }
    return call;
}

/// The next callback as "method params", "none" when there is none, or the error.
std::string NextCallback(MPISocketClientC& client, std::int64_t milliseconds = 10'000) {
    std::string error;
    const auto callback = client.NextCallback(Core::Time::FromMilliseconds(milliseconds), error);
    if (!callback) {
        return error.empty() ? "none" : error;
    }
    EXPECT_EQ(error, "");
    std::string text = callback->method + " ";
    JSONValue::Append(text, callback->params);
    return text;
}

void Connect(MPISocketClientC& client, std::uint16_t port) {
    std::string error;
    ASSERT_TRUE(client.Connect("127.0.0.1", port, error)) << error;
    ASSERT_TRUE(client.IsConnected());
}

/// What a first call gives when it is answered by `answer`.
SCall CallAnsweredBy(const std::string& answer) {
    CAnsweringServer server({answer});
    MPISocketClientC client;
    Connect(client, server.Port());
    return Call(client);
}

} // namespace

TEST(MPISocketClient, sends_a_call_as_one_line_with_an_id_that_rises) {
    CAnsweringServer server({"{\"id\":1,\"result\":1}\n", "{\"id\":2,\"result\":2}\n"});
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_TRUE(Call(client, BListC().Add(50).Add("a\nb").Add(0.5)).succeeded);
    EXPECT_EQ(Call(client).told, "2");
    EXPECT_EQ(server.Requests(),
              (std::vector<std::string>{
                  R"({"jsonrpc":"2.0","id":1,"method":"Method","params":[50,"a\nb",0.5]})",
                  R"({"jsonrpc":"2.0","id":2,"method":"Method","params":[]})",
              }));
}

TEST(MPISocketClient, returns_the_result_whatever_it_is) {
    constexpr SAnswer kAnswers[] = {
        {R"({"jsonrpc":"2.0","id":1,"result":1})", true, "1"},
        {R"({"jsonrpc":"2.0","id":1,"result":null})", true, "null"},
        {R"({"id":1.0,"result":[[50,"gps"],2.5]})", true, R"([[50,"gps"],2.5])"},
        {R"({"result":{"a":1},"id":1,"error":null})", true, R"({"a":1})"},
    };
    for (const SAnswer& answer : kAnswers) {
        const SCall call = CallAnsweredBy(std::string(answer.text) + "\n");
        EXPECT_EQ(call.succeeded, answer.isResult) << answer.text;
        EXPECT_EQ(call.told, answer.told) << answer.text;
    }
}

TEST(MPISocketClient, ignores_notifications_and_answers_to_others) {
    const SCall call = CallAnsweredBy("{\"method\":\"cb\",\"params\":[]}\n"
                                      "{\"id\":7,\"result\":7}\n"
                                      "{\"id\":\"1\",\"result\":8}\n"
                                      "{\"id\":null,\"result\":9}\n"
                                      "{\"id\":7,\"error\":{\"code\":1,\"message\":\"no\"}}\n"
                                      "{\"id\":1,\"result\":10}\n");
    EXPECT_EQ(call.told, "10");
}

TEST(MPISocketClient, tells_an_error_with_its_code_and_message) {
    constexpr SAnswer kAnswers[] = {
        {R"({"id":1,"error":{"code":-32602,"message":"port wanted"}})", false,
         "error -32602: port wanted"},
        {R"({"id":null,"error":{"code":-32700,"message":"not JSON"}})", false,
         "error -32700: not JSON"},
        {R"({"id":1,"error":{"code":5}})", false, "error 5"},
        {R"({"id":1,"error":{"message":"no"}})", false, "error: no"},
        {R"({"id":1,"error":"no"})", false, "error"},
    };
    for (const SAnswer& answer : kAnswers) {
        const SCall call = CallAnsweredBy(std::string(answer.text) + "\n");
        EXPECT_EQ(call.succeeded, answer.isResult) << answer.text;
        EXPECT_EQ(call.told, answer.told) << answer.text;
    }
}

TEST(MPISocketClient, goes_on_with_the_connection_after_an_error) {
    CAnsweringServer server(
        {"{\"id\":1,\"error\":{\"code\":1,\"message\":\"no\"}}\n", "{\"id\":2,\"result\":2}\n"});
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_FALSE(Call(client).succeeded);
    EXPECT_TRUE(client.IsConnected());
    EXPECT_EQ(Call(client).told, "2");
}

TEST(MPISocketClient, takes_an_answer_that_comes_in_pieces) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.ReadLine();
        for (const char byte : std::string("{\"id\":1,\"result\":\"in pieces\"}\n")) {
            peer.Send(std::string(1, byte));
        }
        peer.AwaitEnd();
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "\"in pieces\"");
}

TEST(MPISocketClient, takes_the_answer_of_a_server_that_closes_behind_it) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.ReadLine();
        peer.Send("{\"id\":1,\"result\":1}\n");
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "1");
}

TEST(MPISocketClient, is_told_that_it_is_not_connected) {
    MPISocketClientC client;
    EXPECT_FALSE(client.IsConnected());
    EXPECT_EQ(Call(client).told, "not connected");
}

TEST(MPISocketClient, can_connect_again_after_closing) {
    CAnsweringServer server({"{\"id\":1,\"result\":1}\n", "{\"id\":2,\"result\":2}\n"});
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "1");
    client.Close();
    EXPECT_FALSE(client.IsConnected());
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "2");
}

TEST(MPISocketClient, gives_callbacks_in_their_order) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.Send("{\"jsonrpc\":\"2.0\",\"method\":\"cb_a\",\"params\":[1]}\n"
                  "{\"method\":\"cb_b\",\"params\":{\"x\":2}}\n{\"method\":\"cb_c\"}\n");
        peer.AwaitEnd();
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(NextCallback(client), "cb_a [1]");
    EXPECT_EQ(NextCallback(client), R"(cb_b {"x":2})");
    EXPECT_EQ(NextCallback(client), "cb_c null");
    EXPECT_EQ(NextCallback(client, 20), "none");
    EXPECT_TRUE(client.IsConnected());
}

TEST(MPISocketClient, keeps_the_callbacks_that_come_with_an_answer) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.ReadLine();
        peer.Send("{\"method\":\"cb\",\"params\":[1]}\n{\"id\":1,\"result\":5}\n"
                  "{\"method\":\"cb\",\"params\":[2]}\n");
        peer.AwaitEnd();
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "5");
    EXPECT_EQ(NextCallback(client), "cb [1]");
    EXPECT_EQ(NextCallback(client), "cb [2]");
}

TEST(MPISocketClient, keeps_the_last_thousand_callbacks_that_come_with_an_answer) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.ReadLine();
        std::string lines;
        for (int i = 0; i < 1002; ++i) {
            lines += "{\"method\":\"cb\",\"params\":[" + std::to_string(i) + "]}\n";
        }
        peer.Send(lines + "{\"id\":1,\"result\":5}\n");
        peer.AwaitEnd();
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(Call(client).told, "5");
    EXPECT_EQ(NextCallback(client), "cb [2]");
    for (int i = 0; i < 998; ++i) {
        NextCallback(client);
    }
    EXPECT_EQ(NextCallback(client), "cb [1001]");
    EXPECT_EQ(NextCallback(client, 1), "none");
}

TEST(MPISocketClient, waits_for_a_callback_no_longer_than_it_may) {
    CScriptedServer server([](CScriptedPeer& peer) { peer.AwaitEnd(); });
    MPISocketClientC client;
    Connect(client, server.Port());
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_EQ(NextCallback(client, 50), "none");
    EXPECT_GE((Core::MonotonicTime::Now() - begin).AsSeconds(), 0.05);
    EXPECT_TRUE(client.IsConnected());
}

TEST(MPISocketClient, gives_the_callbacks_of_a_server_that_closes_behind_them) {
    CScriptedServer server([](CScriptedPeer& peer) { peer.Send("{\"method\":\"cb\"}\n"); });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(NextCallback(client), "cb null");
    EXPECT_EQ(NextCallback(client), "the peer has closed the connection");
    EXPECT_FALSE(client.IsConnected());
    EXPECT_EQ(NextCallback(client), "not connected");
}

TEST(MPISocketClient, ends_the_connection_at_a_callback_without_sense) {
    CScriptedServer server([](CScriptedPeer& peer) {
        peer.Send("garbage\n");
        peer.AwaitEnd();
    });
    MPISocketClientC client;
    Connect(client, server.Port());
    EXPECT_EQ(NextCallback(client), "the answer is not a JSON object");
    EXPECT_FALSE(client.IsConnected());
}

TEST(MPISocketClient, waits_for_an_answer_as_long_as_it_is_told) {
    CScriptedServer server([](CScriptedPeer& peer) { peer.AwaitEnd(); });
    MPISocketClientC client;
    client.SetTimeout(Core::Time::FromMilliseconds(50));
    Connect(client, server.Port());
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_EQ(Call(client).told, "no answer within the time-out");
    const double seconds = (Core::MonotonicTime::Now() - begin).AsSeconds();
    EXPECT_GE(seconds, 0.05);
    EXPECT_LT(seconds, 0.9) << "sooner than the usual time-out";
}
