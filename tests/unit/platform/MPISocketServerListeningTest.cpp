// How the server listens and accepts: how many clients, and what it does when it cannot.

#include "MPIServerTesting.h"
#include "ScriptedServer.h"
#include "Support/CrowdedDescriptors.h"

#include <cstring>

namespace {

class MPISocketServerListening : public CMPIServerTesting {
protected:
    bool Start(const std::string& address, std::uint16_t port) {
        return m_server.StartServer(address, port, 5,
                                    [this](const std::string& why) { m_reports.push_back(why); });
    }
    void PassAfter(std::int64_t milliseconds) {
        m_clock.Advance(Core::Time::FromMilliseconds(milliseconds));
        m_loop.Pass();
    }
    static std::string Reason(std::uint16_t port, int error) {
        return "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(error) +
               "; trying again every 10 s";
    }
    bool Ends(CTestClient& client) {
        return m_loop.PassUntil([&] {
            client.Transfer();
            return client.HasEnded();
        });
    }
};

} // namespace

TEST_F(MPISocketServerListening, listens_to_nobody_before_it_is_started) {
    m_loop.Pass();
    EXPECT_FALSE(m_server.IsListening());
    EXPECT_EQ(m_server.Port(), 0);
    EXPECT_EQ(m_server.Descriptor(), -1);
    EXPECT_FALSE(m_server.WantsToWrite());
    EXPECT_TRUE(m_reports.empty());
}

TEST_F(MPISocketServerListening, listens_on_the_port_that_it_is_told) {
    std::uint16_t port = 0;
    {
        const CLoopbackSocket free;
        port = free.Port();
    }
    ASSERT_TRUE(Start("127.0.0.1", port));
    EXPECT_TRUE(m_server.IsListening());
    EXPECT_EQ(m_server.Port(), port);
    EXPECT_TRUE(m_reports.empty());
    Connect();
}

TEST_F(MPISocketServerListening, tries_again_every_10_s_and_tells_the_reason_once) {
    auto occupant = std::make_unique<CLoopbackSocket>();
    occupant->Listen(1);
    const std::uint16_t port = occupant->Port();
    EXPECT_FALSE(Start("127.0.0.1", port));
    EXPECT_FALSE(m_server.IsListening());
    PassAfter(10'000);
    PassAfter(10'000);
    EXPECT_EQ(m_reports, Lines{Reason(port, EADDRINUSE)});
    occupant.reset();
    PassAfter(9'999);
    EXPECT_FALSE(m_server.IsListening());
    PassAfter(1);
    EXPECT_TRUE(m_server.IsListening());
    EXPECT_EQ(m_server.Port(), port);
    PassAfter(100'000);
    EXPECT_EQ(m_server.Port(), port);
    Connect();
}

TEST_F(MPISocketServerListening, tells_another_reason) {
    const CLoopbackSocket occupant;
    occupant.Listen(1);
    EXPECT_FALSE(Start("127.0.0.1", occupant.Port()));
    {
        const CDescriptorLimit none(0);
        ASSERT_TRUE(none.IsSet());
        PassAfter(10'000);
        PassAfter(10'000);
    }
    EXPECT_EQ(m_reports,
              (Lines{Reason(occupant.Port(), EADDRINUSE), Reason(occupant.Port(), EMFILE)}));
}

TEST_F(MPISocketServerListening, tells_an_address_that_is_none) {
    for (const char* address : {"", "localhost", "::1", "256.0.0.1", "127.0.0.1 "}) {
        CTestServer server(m_loop.sockets);
        Lines reports;
        EXPECT_FALSE(server.StartServer(address, 0, 5, [&](const std::string& why) {
            reports.push_back(why);
        })) << address;
        EXPECT_EQ(reports, Lines{"cannot listen on " + std::string(address) +
                                 ":0: not an IPv4 address in numbers; trying again every 10 s"});
    }
}

TEST_F(MPISocketServerListening, tells_an_address_that_is_not_the_machines) {
    EXPECT_FALSE(Start("192.0.2.1", 0)); // for documentation (RFC 5737)
    EXPECT_EQ(m_reports.size(), 1U);
    EXPECT_FALSE(m_server.IsListening());
}

TEST_F(MPISocketServerListening, can_follow_a_server_that_has_closed_on_its_clients) {
    auto first = std::make_unique<CTestServer>(m_loop.sockets);
    ASSERT_TRUE(first->StartServer("127.0.0.1", 0, 5, nullptr));
    m_loop.sockets.Add(first.get());
    const std::uint16_t port = first->Port();
    CTestClient client(port);
    EXPECT_TRUE(m_loop.PassUntil([&] { return first->ClientCount() == 1; }));
    m_loop.sockets.Remove(first.get());
    first.reset();
    EXPECT_TRUE(Ends(client));
    EXPECT_TRUE(Start("127.0.0.1", port)) << "the old connection's end must not keep the port";
}

TEST_F(MPISocketServerListening, serves_256_clients_and_closes_on_one_more) {
    const CDescriptorLimit enough(768);
    if (!enough.IsSet()) {
        GTEST_SKIP() << "this machine does not allow 768 descriptors";
    }
    Listen();
    std::vector<std::unique_ptr<CTestClient>> clients;
    for (int i = 0; i < 256; ++i) {
        clients.push_back(Connect());
    }
    CTestClient oneMore(m_server.Port());
    EXPECT_TRUE(Ends(oneMore));
    EXPECT_EQ(m_server.ClientCount(), 256U);
    EXPECT_EQ(AnswersTo(*clients.back(), Request("1", "Echo") + "\n", 1), Lines{Result("1", "[]")});
    clients.front()->Close();
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.ClientCount() == 255; }));
    const auto next = Connect();
    EXPECT_EQ(AnswersTo(*next, Request("2", "Echo") + "\n", 1), Lines{Result("2", "[]")});
}

TEST_F(MPISocketServerListening, serves_fewer_clients_where_there_are_fewer_descriptors) {
    Listen();
    std::vector<std::unique_ptr<CTestClient>> clients;
    for (int i = 0; i < 4; ++i) {
        clients.push_back(std::make_unique<CTestClient>(m_server.Port()));
    }
    const CDescriptorLimit limit(MPISocketServerC::kReservedDescriptors + 3);
    ASSERT_TRUE(limit.IsSet());
    EXPECT_TRUE(Ends(*clients.back()));
    EXPECT_EQ(m_server.ClientCount(), 3U);
    for (int i = 0; i < 3; ++i) {
        clients[static_cast<std::size_t>(i)]->Transfer();
        EXPECT_FALSE(clients[static_cast<std::size_t>(i)]->HasEnded());
    }
}

TEST_F(MPISocketServerListening, rests_for_1_s_when_there_are_no_descriptors_left) {
    Listen();
    const CTestClient client(m_server.Port());
    {
        const CDescriptorLimit none(0);
        ASSERT_TRUE(none.IsSet());
        EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.Descriptor() < 0; }));
    }
    EXPECT_FALSE(m_loop.IsReady()) << "the client that waits must not keep the loop busy";
    PassAfter(999);
    EXPECT_EQ(m_server.ClientCount(), 0U);
    EXPECT_FALSE(m_loop.IsReady());
    PassAfter(1);
    EXPECT_EQ(m_server.ClientCount(), 1U);
}

TEST_F(MPISocketServerListening, serves_its_clients_while_it_rests) {
    Listen();
    const auto served = Connect();
    const CTestClient waiting(m_server.Port());
    const CDescriptorLimit none(0);
    ASSERT_TRUE(m_loop.PassUntil([this] { return m_server.Descriptor() < 0; }));
    EXPECT_EQ(AnswersTo(*served, Request("1", "Echo") + "\n", 1), Lines{Result("1", "[]")});
}

TEST_F(MPISocketServerListening, takes_no_client_whose_descriptor_does_not_fit_a_set) {
    Listen();
    CTestClient client(m_server.Port());
    const CCrowdedDescriptors crowd;
    if (!crowd.IsComplete()) {
        GTEST_SKIP() << "this machine does not allow so many descriptors";
    }
    EXPECT_TRUE(Ends(client));
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(MPISocketServerListening, accepts_many_that_come_together) {
    Listen(64);
    std::vector<std::unique_ptr<CTestClient>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<CTestClient>(m_server.Port()));
        ASSERT_TRUE(clients.back()->IsConnected());
    }
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.ClientCount() == 50; }));
}
