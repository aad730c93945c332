// What a client may take of the server: the length of a line, memory, descriptors, and the loop.

#include "MPIServerTesting.h"

namespace {

constexpr std::size_t kLine = MPISocketConnectionC::kMaxLine;
constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;
/// What all clients' buffers may take at any moment.
constexpr std::size_t kMaxBuffers = 16 * kMebibyte;

/// The last of the members that is served: it sees what the others' serving has left.
class CHeldBytesProbe : public SocketC {
public:
    explicit CHeldBytesProbe(const MPISocketServerC& server) : m_server(server) {}

    int Descriptor() const override { return -1; }
    bool WantsToWrite() const override { return false; }
    void Service(bool, bool) override { most = std::max(most, m_server.HeldBytes()); }
    void EndPass() override { most = std::max(most, m_server.HeldBytes()); }

    std::size_t most = 0;

private:
    const MPISocketServerC& m_server;
};

class MPISocketServerBounds : public CMPIServerTesting {
protected:
    using Clients = std::vector<std::unique_ptr<CTestClient>>;

    void SetUp() override { Listen(); }

    /// A request that blanks make so long.
    static std::string RequestOfLength(std::size_t length) {
        std::string request = Request("1", "Echo");
        request.resize(length, ' ');
        return request;
    }
    /// So that the buffer takes just as much: a block is what one read takes.
    void SendUnfinished(CTestClient& client, std::size_t length) {
        constexpr std::size_t kBlock = 16384;
        for (std::size_t sent = 0; sent < length; sent += std::min(kBlock, length - sent)) {
            client.Send(std::string(std::min(kBlock, length - sent), ' '));
            m_loop.Pass();
        }
        AwaitSent(client);
    }
    static std::size_t CountEnded(const Clients& clients) {
        std::size_t ended = 0;
        for (const auto& client : clients) {
            client->Transfer();
            ended += client->HasEnded() ? 1 : 0;
        }
        return ended;
    }
};

} // namespace

TEST_F(MPISocketServerBounds, takes_a_line_of_1_MiB) {
    const auto client = Connect();
    EXPECT_EQ(AnswersTo(*client, RequestOfLength(kLine) + "\n", 1), Lines{Result("1", "[]")});
    EXPECT_EQ(AnswersTo(*client, Request("2", "Echo") + "\n", 1), Lines{Result("2", "[]")});
}

TEST_F(MPISocketServerBounds, refuses_a_line_that_is_a_byte_longer_and_closes) {
    const auto client = Connect();
    client->Send(RequestOfLength(kLine + 1) + "\n" + Request("2", "Echo") + "\n");
    client->EndSending();
    AwaitEnd(*client);
    EXPECT_EQ(client->Lines(), Lines{Error("null", -32600, "the line is longer than 1 MiB")});
    EXPECT_FALSE(client->WasReset());
}

TEST_F(MPISocketServerBounds, refuses_a_line_without_an_end_as_soon_as_it_is_too_long) {
    const auto client = Connect();
    const std::string tooMuch(2 * kMebibyte, 'x');
    EXPECT_EQ(AnswersTo(*client, tooMuch, 1),
              Lines{Error("null", -32600, "the line is longer than 1 MiB")});
    AwaitEnd(*client);
    EXPECT_FALSE(client->WasReset()) << "it would lose the answer to a client that still sends";
    EXPECT_LE(m_server.ClientCount(), 1U);
}

TEST_F(MPISocketServerBounds, gives_a_client_one_second_to_read_why_it_is_refused) {
    const auto client = Connect();
    client->Send(std::string(kLine + 1, 'x'));
    AwaitSent(*client);
    m_clock.Advance(Core::Time::FromMilliseconds(999));
    m_loop.Pass();
    EXPECT_EQ(m_server.ClientCount(), 1U);
    EXPECT_FALSE(m_loop.IsReady()) << "and does not keep the loop busy";
    m_clock.Advance(Core::Time::FromMilliseconds(1));
    m_loop.Pass();
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(MPISocketServerBounds, disconnects_a_client_for_which_more_than_4_MiB_wait) {
    constexpr std::size_t kAnswer = 65536;
    MPISocketConnectionC* connection = nullptr;
    Offer("Big", ECost::light, [&](const BListC&) {
        connection = m_server.Caller();
        return std::make_unique<BListC>(BListC().AddString(std::string(kAnswer, 'x')));
    });
    const auto client = Connect(4096);
    std::size_t waiting = 0;
    for (int i = 0; i < 1000 && m_server.ClientCount() == 1; ++i) {
        client->SendLine(Request("1", "Big"));
        m_loop.Pass(1);
        waiting = m_server.ClientCount() == 1 && connection != nullptr ? connection->WaitingBytes()
                                                                       : waiting;
        EXPECT_LE(waiting, 4 * kMebibyte);
    }
    EXPECT_EQ(m_server.ClientCount(), 0U);
    EXPECT_GT(waiting + kAnswer + 100, 4 * kMebibyte) << "so far it must be let wait";
}

TEST_F(MPISocketServerBounds, disconnects_a_client_for_which_more_than_4_MiB_of_callbacks_wait) {
    MPISocketConnectionC* connection = nullptr;
    Offer("Remember", ECost::light, [&](const BListC&) {
        connection = m_server.Caller();
        return nullptr;
    });
    const auto client = Connect(4096);
    AnswersTo(*client, Request("1", "Remember") + "\n", 1);
    ASSERT_NE(connection, nullptr);
    const BListC big = BListC().AddString(std::string(kMebibyte, 'x'));
    for (int i = 0; i < 20 && m_server.closed.empty(); ++i) {
        connection->PostCallback("cb", big);
        m_loop.Pass();
    }
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(MPISocketServerBounds, lets_a_client_that_does_not_read_hold_up_nobody) {
    Offer("Big", ECost::light, [](const BListC&) {
        return std::make_unique<BListC>(BListC().AddString(std::string(kMebibyte, 'x')));
    });
    const auto deaf = Connect(4096);
    const auto other = Connect();
    for (int i = 0; i < 3; ++i) {
        deaf->SendLine(Request("1", "Big"));
    }
    deaf->EndSending();
    EXPECT_EQ(AnswersTo(*other, Request("2", "Echo") + "\n", 1), Lines{Result("2", "[]")});
    for (int i = 0; i < 20 && m_loop.IsReady(); ++i) {
        m_loop.Pass();
    }
    EXPECT_FALSE(m_loop.IsReady()) << "it must not keep the loop busy either";
    AwaitEnd(*deaf);
    EXPECT_EQ(deaf->LineCount(), 3U);
}

TEST_F(MPISocketServerBounds, disconnects_the_client_that_holds_most_when_all_hold_too_much) {
    CHeldBytesProbe probe(m_server);
    Clients small;
    for (int i = 0; i < 11; ++i) {
        small.push_back(Connect());
        SendUnfinished(*small.back(), kMebibyte / 2);
    }
    const auto big = Connect();
    SendUnfinished(*big, kMebibyte);
    m_loop.sockets.Add(&probe);
    for (int i = 0; i < 20; ++i) {
        big->Transfer();
        ASSERT_EQ(CountEnded(small), 0U) << "while one holds more";
        if (big->HasEnded()) {
            break;
        }
        small.push_back(Connect());
        SendUnfinished(*small.back(), kMebibyte / 2);
    }
    EXPECT_TRUE(big->HasEnded());
    EXPECT_LT(probe.most, kMaxBuffers);
    EXPECT_LT(m_server.HeldBytes(), kMaxBuffers);
}

TEST_F(MPISocketServerBounds, lets_lines_that_grow_together_not_take_too_much_either) {
    CHeldBytesProbe probe(m_server);
    Clients clients;
    for (int i = 0; i < 11; ++i) {
        clients.push_back(Connect());
        SendUnfinished(*clients.back(), kMebibyte);
    }
    ASSERT_EQ(CountEnded(clients), 0U);
    m_loop.sockets.Add(&probe);
    for (const auto& client : clients) {
        client->Send(" ");
    }
    usleep(3000); // so that one pass reads all of them
    m_loop.Pass();
    EXPECT_GE(probe.most, 10 * kMebibyte);
    EXPECT_LT(probe.most, kMaxBuffers);
}

TEST_F(MPISocketServerBounds, disconnects_nobody_whose_requests_have_all_been_answered) {
    Clients clients;
    for (int i = 0; i < 13; ++i) {
        clients.push_back(Connect());
        clients.back()->Send(RequestOfLength(kLine) + "\n");
        AwaitLines(*clients.back(), 1);
    }
    EXPECT_EQ(CountEnded(clients), 0U) << "nothing of theirs needs to be held";
}

TEST_F(MPISocketServerBounds, gives_back_memory_when_it_is_idle) {
    const auto client = Connect();
    AnswersTo(*client, RequestOfLength(kLine) + "\n", 1);
    EXPECT_GE(m_server.HeldBytes(), kLine);
    m_server.Idle();
    EXPECT_LT(m_server.HeldBytes(), 1000U);
}

TEST_F(MPISocketServerBounds, keeps_an_unfinished_line_when_it_is_idle) {
    const auto client = Connect();
    const std::string request = RequestOfLength(600'000);
    SendUnfinished(*client, 0);
    client->Send(request);
    AwaitSent(*client);
    EXPECT_GE(m_server.HeldBytes(), 600'000U);
    m_server.Idle();
    EXPECT_LT(m_server.HeldBytes(), 600'100U);
    EXPECT_EQ(AnswersTo(*client, "\n", 1), Lines{Result("1", "[]")});
}

TEST_F(MPISocketServerBounds, counts_the_memory_of_clients_as_long_as_they_are_there) {
    const auto client = Connect();
    SendUnfinished(*client, 100'000);
    EXPECT_GE(m_server.HeldBytes(), 100'000U);
    client->Close();
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.ClientCount() == 0; }));
    EXPECT_EQ(m_server.HeldBytes(), 0U);
}

TEST_F(MPISocketServerBounds, counts_the_memory_of_a_request_that_must_wait) {
    constexpr std::size_t kLength = 200'000;
    OfferRecording("Write", ECost::settingsWrite);
    const auto other = Connect();
    const auto client = Connect();
    AnswersTo(*client, Request("1", "Echo") + "\n", 1); // so that the next turn is the other's
    std::string request = Notification("Write", "second");
    request.resize(kLength, ' ');
    client->Send(request);
    AwaitSent(*client);
    other->SendLine(Notification("Write", "first"));
    client->Send("\n");
    usleep(3000); // so that one pass reads both
    m_loop.Pass();
    EXPECT_EQ(m_calls, Lines{"first"});
    EXPECT_GE(m_server.HeldBytes(), 2 * kLength) << "what was read, and the line taken from it";
    m_loop.Pass();
    EXPECT_EQ(m_calls, (Lines{"first", "second"}));
    EXPECT_LT(m_server.HeldBytes(), 2 * kLength);
}

TEST_F(MPISocketServerBounds, does_not_keep_the_loop_busy_for_clients_that_say_nothing) {
    const auto silent = Connect();
    const auto halfway = Connect();
    halfway->Send("{\"jsonrpc\"");
    const auto answered = Connect();
    AnswersTo(*answered, Request("1", "Echo") + "\n", 1);
    AwaitSent(*halfway);
    EXPECT_FALSE(m_loop.IsReady());
    EXPECT_EQ(m_server.ClientCount(), 3U);
}
