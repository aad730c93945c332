// What a client can take and hold up: little of the server, and nothing of others.

#include "ServerTesting.h"
#include "Support/CrowdedDescriptors.h"
#include "platform/ScriptedServer.h"

#include <fcntl.h>
#include <unistd.h>

using namespace GPSDTesting;
using Hub::CGPSDServer;
using Hub::GPSD::CClient;
using testing::HasSubstr;

namespace {

class GPSDServerBounds : public CGPSDServerTesting {
protected:
    /// Fills what waits for watchers, one block after another.
    void PublishRaw(std::size_t size) {
        Hub::SRawBlock block;
        block.name = "NovatelPortHandler";
        block.bytes.assign(size, 'x');
        Publish(block);
        m_loop.Pass();
    }
};

class GPSDServerListening : public testing::Test {
protected:
    void PassAfter(std::int64_t milliseconds) {
        m_clocks.Advance(milliseconds);
        m_loop.Pass();
    }
    static std::size_t Count(const std::string& text, const std::string& part) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    }

    CClocks m_clocks;
    CServerLoop m_loop;
    CGPSDServer m_server{m_loop.sockets};
};

} // namespace

TEST_F(GPSDServerBounds, a_line_of_4096_bytes_is_taken_and_a_longer_one_ends_the_connection) {
    const auto fits = Connect();
    EXPECT_EQ(Classes(AnswersTo(*fits, "?" + std::string(4095, 'x') + "\n", 1)), Lines{"ERROR"});
    EXPECT_EQ(Classes(AnswersTo(*fits, "?VERSION;\n", 1)), Lines{"VERSION"});
    const auto tooLong = Connect();
    EXPECT_EQ(AnswersTo(*tooLong, "?" + std::string(4096, 'x') + "\n?VERSION;\n", 1),
              Lines{R"({"class":"ERROR","message":"The line is longer than 4096 bytes"})"});
    AwaitEnd(*tooLong);
    EXPECT_FALSE(tooLong->WasReset());
    EXPECT_EQ(tooLong->LineCount(), 2U);
}

TEST_F(GPSDServerBounds, a_line_without_an_end_is_not_kept) {
    const auto client = Connect();
    client->Send(std::string(1'000'000, 'x'));
    Await(*client, [&] { return client->LineCount() == 2; });
    EXPECT_THAT(client->Received(), HasSubstr("longer than 4096 bytes"));
    m_clocks.Advance(1'000);
    AwaitEnd(*client);
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(GPSDServerBounds, a_line_of_many_requests_is_a_long_one_too) {
    const auto client = Connect();
    for (int i = 0; i < 410; ++i) {
        client->Send("?VERSION;;"); // ten bytes each
    }
    Await(*client, [&] { return client->HasEnded(); });
    EXPECT_THAT(client->Received(), HasSubstr("longer than 4096 bytes"));
}

TEST_F(GPSDServerBounds, a_web_page_is_shut_out_at_once) {
    for (const char* request : {"GET / HTTP/1.1\r\nHost: localhost:2947\r\n\r\n",
                                "POST / HTTP/1.1\r\n\r\n?WATCH={\"json\":true};\n?POLL;\n"}) {
        const auto client = Connect();
        PublishSolution();
        client->Send(request);
        AwaitEnd(*client);
        EXPECT_EQ(client->LineCount(), 1U) << "the version alone: " << client->Received();
    }
}

TEST_F(GPSDServerBounds, a_client_that_does_not_read_is_disconnected) {
    const auto slow = Connect(4096);
    AnswersTo(*slow, "?WATCH={\"raw\":2};\n", 2);
    const auto quick = Watcher();
    // Up to 4 MiB are the kernel's, 1 MiB waits here.
    for (int i = 0; i < 70 && m_server.ClientCount() == 2; ++i) {
        PublishRaw(100'000);
        PublishSolution();
        quick->Transfer();
    }
    EXPECT_EQ(m_server.ClientCount(), 1U);
    const std::size_t before = quick->LineCount();
    PublishSolution();
    AwaitLines(*quick, before + 2);
}

TEST_F(GPSDServerBounds, a_client_that_reads_gets_more_than_what_may_wait) {
    const auto client = Watcher(R"("raw":2)");
    constexpr std::size_t kSize = 3 * CClient::kMaxWaiting;
    const std::size_t before = client->Received().size();
    for (std::size_t sent = 0; sent < kSize; sent += 65536) {
        PublishRaw(65536);
        Await(*client, [&] { return client->Received().size() >= before + sent; });
    }
    Await(*client, [&] { return client->Received().size() == before + kSize; });
}

TEST_F(GPSDServerBounds, who_holds_most_is_disconnected_when_all_hold_too_much) {
    std::vector<std::unique_ptr<CTestClient>> clients;
    for (int i = 0; i < 40; ++i) {
        clients.push_back(Watcher(R"("raw":2)"));
    }
    // 0.8 MiB for each, of which the kernel takes what it likes.
    for (int i = 0; i < 400 && m_server.ClientCount() == 40; ++i) {
        PublishRaw(20'000);
    }
    EXPECT_LT(m_server.ClientCount(), 40U);
    EXPECT_GT(m_server.ClientCount(), 0U);
}

TEST_F(GPSDServerBounds, requests_wait_while_many_answers_wait) {
    std::vector<Hub::SSky::SChannel> channels;
    for (std::uint8_t prn = 1; prn <= 138; ++prn) {
        channels.push_back(Channel(prn, 40.0));
    }
    Publish(Sky(channels, CClocks::Now()));
    constexpr std::size_t kRequests = 3000; // answered with 12 MB, more than a kernel holds
    const auto client = Connect();
    std::string flood;
    for (std::size_t i = 0; i < kRequests; ++i) {
        flood += "?POLL;\n";
    }
    client->Send(flood);
    for (int i = 0; i < 200; ++i) {
        m_loop.Pass();
    }
    EXPECT_EQ(m_server.ClientCount(), 1U) << "it may be slow, but is no danger";
    Await(*client, [&] {
        return client->HasSentAll() && !m_loop.IsReady() && client->LineCount() == 1 + kRequests;
    });
    EXPECT_GT(client->Received().size(), 11'000'000U);
}

TEST_F(GPSDServerBounds, a_flood_of_requests_does_not_keep_others_waiting) {
    std::vector<std::unique_ptr<CTestClient>> flooders;
    for (int i = 0; i < 10; ++i) {
        flooders.push_back(Connect());
        std::string flood;
        for (int j = 0; j < 10'000; ++j) {
            flood += "?POLL;?WATCH;\n";
        }
        flooders.back()->Send(flood);
    }
    const auto good = Connect();
    good->Send("?VERSION;\n");
    int passes = 0;
    while (good->LineCount() < 2 && passes < 100) {
        m_loop.Pass();
        good->Transfer();
        ++passes;
    }
    EXPECT_LE(passes, 5) << "its turn comes in each pass";
}

TEST_F(GPSDServerBounds, a_pass_takes_about_5_ms_for_requests) {
    const auto client = Connect();
    std::string flood;
    for (int i = 0; i < 500; ++i) {
        flood += "?POLL;\n";
    }
    client->Send(flood);
    // A clock that moves on by a millisecond each time that it is read.
    static Core::Time s_time;
    s_time = Core::Time::FromMilliseconds(1);
    Core::ClockHooks().monotonic = [] {
        s_time = s_time + Core::Time::FromMilliseconds(1);
        return s_time;
    };
    const std::size_t before = client->LineCount();
    m_loop.Pass(100);
    client->Transfer();
    EXPECT_LE(client->LineCount() - before, 6U);
    EXPECT_TRUE(m_loop.IsReady()) << "it goes on at once";
}

TEST_F(GPSDServerBounds, many_clients_are_served_and_one_more_is_shut_out) {
    const CDescriptorLimit enough(768);
    if (!enough.IsSet()) {
        GTEST_SKIP() << "this machine does not allow 768 descriptors";
    }
    std::vector<std::unique_ptr<CTestClient>> clients;
    for (std::size_t i = 0; i < CGPSDServer::kMaxClients; ++i) {
        clients.push_back(Connect());
    }
    CTestClient oneMore(m_server.Port());
    AwaitEnd(oneMore);
    EXPECT_EQ(oneMore.Received(), "");
    EXPECT_EQ(m_server.ClientCount(), CGPSDServer::kMaxClients);
    EXPECT_EQ(Classes(AnswersTo(*clients.back(), "?VERSION;\n", 1)), Lines{"VERSION"});
    clients.front()->Close();
    EXPECT_TRUE(m_loop.PassUntil(
        [this] { return m_server.ClientCount() == CGPSDServer::kMaxClients - 1; }));
    Connect();
}

TEST_F(GPSDServerBounds, it_rests_for_1_s_when_there_are_no_descriptors_left) {
    CTestClient client(m_server.Port());
    {
        const CDescriptorLimit none(0);
        ASSERT_TRUE(none.IsSet());
        EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.Descriptor() < 0; }));
    }
    EXPECT_FALSE(m_loop.IsReady()) << "the client that waits must not keep the loop busy";
    m_clocks.Advance(999);
    m_loop.Pass();
    EXPECT_EQ(m_server.ClientCount(), 0U);
    m_clocks.Advance(1);
    m_loop.Pass();
    EXPECT_EQ(m_server.ClientCount(), 1U);
}

TEST_F(GPSDServerBounds, a_client_whose_descriptor_does_not_fit_a_set_is_not_taken) {
    CTestClient client(m_server.Port());
    const CCrowdedDescriptors crowd;
    if (!crowd.IsComplete()) {
        GTEST_SKIP() << "this machine does not allow so many descriptors";
    }
    AwaitEnd(client);
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(GPSDServerBounds, clients_are_left_with_the_server) {
    SocketCollectionC sockets;
    auto server = std::make_unique<CGPSDServer>(m_loop.sockets);
    server->Start("127.0.0.1", 0);
    m_loop.sockets.Add(server.get());
    CTestClient client(server->Port());
    AwaitLines(client, 1);
    m_loop.sockets.Remove(server.get());
    server.reset();
    AwaitEnd(client);
    m_loop.Pass();
}

TEST_F(GPSDServerListening, a_port_that_is_taken_is_tried_again_every_10_s_and_told_once) {
    auto occupant = std::make_unique<CLoopbackSocket>();
    occupant->Listen(1);
    const std::uint16_t port = occupant->Port();
    m_loop.sockets.Add(&m_server);
    testing::internal::CaptureStderr();
    m_server.Start("127.0.0.1", port);
    PassAfter(10'000);
    PassAfter(10'000);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Count(told, "127.0.0.1:" + std::to_string(port)), 1U) << told;
    EXPECT_THAT(told, HasSubstr("Address already in use"));
    EXPECT_THAT(told, HasSubstr("--gpsd-port"));
    EXPECT_FALSE(m_server.IsListening());
    occupant.reset();
    PassAfter(9'999);
    EXPECT_FALSE(m_server.IsListening());
    PassAfter(1);
    EXPECT_TRUE(m_server.IsListening());
    EXPECT_EQ(m_server.Port(), port);
}

TEST_F(GPSDServerListening, an_address_that_is_none_is_told) {
    testing::internal::CaptureStderr();
    m_server.Start("localhost", 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("localhost:0: not an IPv4 address in numbers"));
    EXPECT_FALSE(m_server.IsListening());
    EXPECT_EQ(m_server.Port(), 0);
}
