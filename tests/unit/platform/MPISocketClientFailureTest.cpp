// A client whose server is absent, silent, slow or hostile: no call outlasts its time-out.

#include "platform/MPISocketClient.h"

#include "platform/ScriptedServer.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <vector>

namespace {

constexpr double kTimeoutSeconds = 1.0;
/// What a busy machine, or an emulated one, may add to it.
constexpr double kGraceSeconds = 3.0;

/// How a call on a new connection fails, and after how long.
struct SFailure {
    std::string error;
    double seconds = 0.0;
    bool isConnected = true;
};

double SecondsSince(Core::MonotonicTime begin) {
    return (Core::MonotonicTime::Now() - begin).AsSeconds();
}

SFailure FailedCall(CScriptedServer::TScript script, const BListC& params = BListC()) {
    CScriptedServer server(std::move(script));
    MPISocketClientC client;
    SFailure failure;
    EXPECT_TRUE(client.Connect("localhost", server.Port(), failure.error)) << failure.error;
    BAtomC result;
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_FALSE(client.Call("Method", params, result, failure.error));
    failure.seconds = SecondsSince(begin);
    failure.isConnected = client.IsConnected();
    return failure;
}

SFailure FailedCallAnsweredBy(const std::string& answer) {
    return FailedCall([&answer](CScriptedPeer& peer) {
        peer.ReadLine();
        peer.Send(answer);
        peer.AwaitEnd();
    });
}

void ExpectTimeout(const SFailure& failure) {
    EXPECT_EQ(failure.error, "no answer within the time-out");
    EXPECT_GE(failure.seconds, kTimeoutSeconds);
    EXPECT_LT(failure.seconds, kTimeoutSeconds + kGraceSeconds);
    EXPECT_FALSE(failure.isConnected);
}

/// Connections that fill a listener's queue, so that the next one must wait.
class CQueueFiller {
public:
    explicit CQueueFiller(const CLoopbackSocket& listener) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(listener.Port());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        for (int i = 0; i < 8; ++i) {
            const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
            m_descriptors.push_back(descriptor);
        }
    }
    ~CQueueFiller() {
        for (const int descriptor : m_descriptors) {
            close(descriptor);
        }
    }
    CQueueFiller(const CQueueFiller&) = delete;
    CQueueFiller& operator=(const CQueueFiller&) = delete;

private:
    std::vector<int> m_descriptors;
};

} // namespace

TEST(MPISocketClientFailure, an_absent_server_is_told_at_once) {
    const CLoopbackSocket nobodyListens;
    MPISocketClientC client;
    std::string error;
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_FALSE(client.Connect("127.0.0.1", nobodyListens.Port(), error));
    EXPECT_LT(SecondsSince(begin), kTimeoutSeconds);
    EXPECT_EQ(error, "127.0.0.1:" + std::to_string(nobodyListens.Port()) + ": Connection refused");
    EXPECT_FALSE(client.IsConnected());
}

TEST(MPISocketClientFailure, connecting_to_a_server_with_a_full_queue_ends_with_the_time_out) {
    const CLoopbackSocket listener;
    listener.Listen(0);
    const CQueueFiller filler(listener);
    MPISocketClientC client;
    std::string error;
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_FALSE(client.Connect("127.0.0.1", listener.Port(), error));
    EXPECT_GE(SecondsSince(begin), kTimeoutSeconds);
    EXPECT_LT(SecondsSince(begin), kTimeoutSeconds + kGraceSeconds);
    EXPECT_EQ(error, "127.0.0.1:" + std::to_string(listener.Port()) + ": Connection timed out");
    EXPECT_FALSE(client.IsConnected());
}

TEST(MPISocketClientFailure, a_host_that_is_no_address_is_refused_without_asking_anybody) {
    for (const char* host : {"", "::1", "controller", "127.0.0.1.1", "256.0.0.1", "127.0.0.1 "}) {
        MPISocketClientC client;
        std::string error;
        EXPECT_FALSE(client.Connect(host, 1, error)) << host;
        EXPECT_EQ(error, std::string(host) + ": not an IPv4 address in numbers");
    }
}

TEST(MPISocketClientFailure, a_silent_server_costs_the_time_out) {
    ExpectTimeout(FailedCall([](CScriptedPeer& peer) { peer.AwaitEnd(); }));
}

TEST(MPISocketClientFailure, a_server_that_dribbles_its_answer_costs_no_more) {
    ExpectTimeout(FailedCall([](CScriptedPeer& peer) {
        while (peer.Send(" ")) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }));
}

TEST(MPISocketClientFailure, a_server_that_sends_nothing_but_notifications_costs_no_more) {
    ExpectTimeout(FailedCall([](CScriptedPeer& peer) {
        while (peer.Send("{\"method\":\"cb\"}\n")) {
        }
    }));
}

TEST(MPISocketClientFailure, a_server_that_does_not_read_costs_no_more) {
    CLoopbackSocket listener;
    listener.Listen(8); // and nobody accepts
    MPISocketClientC client;
    SFailure failure;
    ASSERT_TRUE(client.Connect("127.0.0.1", listener.Port(), failure.error)) << failure.error;
    BAtomC result;
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    const BListC params = BListC().Add(std::string(16 * 1024 * 1024, 'x'));
    EXPECT_FALSE(client.Call("Method", params, result, failure.error));
    failure.seconds = SecondsSince(begin);
    failure.isConnected = client.IsConnected();
    ExpectTimeout(failure);
}

TEST(MPISocketClientFailure, an_answer_without_sense_ends_the_connection_at_once) {
    constexpr struct {
        const char* answer;
        const char* error;
    } kAnswers[] = {
        {"garbage\n", "the answer is not a JSON object"},
        {"\n", "the answer is not a JSON object"},
        {"[{\"id\":1,\"result\":1}]\n", "the answer is not a JSON object"},
        {"\xAA\x44\x12\x1C\n", "the answer is not a JSON object"},
        {"{\"id\":1}\n", "the answer has neither result nor error"},
    };
    for (const auto& [answer, error] : kAnswers) {
        const SFailure failure = FailedCallAnsweredBy(answer);
        EXPECT_EQ(failure.error, error) << answer;
        EXPECT_LT(failure.seconds, kTimeoutSeconds) << answer;
        EXPECT_FALSE(failure.isConnected) << answer;
    }
}

TEST(MPISocketClientFailure, an_answer_nested_without_end_is_not_understood) {
    const SFailure failure = FailedCallAnsweredBy(std::string(500'000, '[') + "\n");
    EXPECT_EQ(failure.error, "the answer is not a JSON object");
}

TEST(MPISocketClientFailure, an_answer_longer_than_a_line_may_be_ends_the_connection) {
    const SFailure failure =
        FailedCallAnsweredBy(std::string(MPISocketConnectionC::kMaxLine + 1, ' '));
    EXPECT_EQ(failure.error, "the answer is longer than 1 MiB");
    EXPECT_FALSE(failure.isConnected);
}

TEST(MPISocketClientFailure, a_server_that_closes_in_the_middle_of_its_answer_is_told_at_once) {
    const SFailure failure = FailedCall([](CScriptedPeer& peer) {
        peer.ReadLine();
        peer.Send("{\"id\":1,\"resu");
    });
    EXPECT_EQ(failure.error, "the peer has closed the connection");
    EXPECT_LT(failure.seconds, kTimeoutSeconds);
    EXPECT_FALSE(failure.isConnected);
}
