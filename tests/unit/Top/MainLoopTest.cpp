#include "MainLoop.h"

#include "Port/PortHandlerTesting.h"
#include "platform/MPIServerTesting.h"

#include <array>
#include <functional>
#include <optional>

#include <unistd.h>

namespace {

/// A source over a real descriptor, so that select() sees it, which ends after so many reads.
class CPipeSource : public CFakeByteSource {
public:
    CPipeSource() {
        if (pipe(m_ends.data()) == 0 && write(m_ends[1], "x", 1) == 1) {
            descriptor = m_ends[0];
        }
        isOpen = false;
    }
    ~CPipeSource() override {
        close(m_ends[0]);
        close(m_ends[1]);
    }

    using CFakeByteSource::Read;
    std::string Read() override {
        if (onRead) {
            onRead();
        }
        return CFakeByteSource::Read();
    }
    bool IsAtEnd() const override { return isAtEnd && reads >= readsUntilEnd; }

    int readsUntilEnd = 1;
    std::function<void()> onRead;

private:
    std::array<int, 2> m_ends{-1, -1};
};

class CCountingSocket : public SocketC {
public:
    int Descriptor() const override { return -1; }
    bool WantsToWrite() const override { return false; }
    void Service(bool, bool) override {
        ++services;
        if (onService) {
            onService();
        }
    }
    void EndPass() override { ++endedPasses; }

    std::function<void()> onService;
    int services = 0;
    int endedPasses = 0;
};

class MainLoop : public testing::Test {
protected:
    MainLoop() {
        Connect(m_first, m_firstSource);
        Connect(m_second, m_secondSource);
        m_sockets.Add(&m_socket);
        m_secondSource.isAtEnd = true;
    }

    void Connect(Novatel::CPortHandler& handler, CPipeSource& source) {
        handler.SetByteSource(&source);
        handler.SetFramers(&m_framers);
        handler.SetObservers(&m_observers);
    }

    /// Leaves the RPC server with more memory than it needs, which it gives back when it is idle.
    void MakeServerHoldMemory() {
        ASSERT_TRUE(m_rpcServer.StartServer("127.0.0.1", 0, 5, nullptr));
        m_sockets.Add(&m_rpcServer);
        m_client.emplace(m_rpcServer.Port());
        m_client->SendLine(std::string(kMemory, ' '));
        for (int i = 0; i < 1000 && m_client->LineCount() == 0; ++i) {
            fd_set readSet;
            fd_set writeSet;
            FD_ZERO(&readSet);
            FD_ZERO(&writeSet);
            timeval timeout{0, 1000};
            select(m_sockets.AddToSets(readSet, writeSet) + 1, &readSet, &writeSet, nullptr,
                   &timeout);
            m_sockets.Service(readSet, writeSet);
            m_client->Transfer();
        }
        ASSERT_GE(m_rpcServer.HeldBytes(), kMemory);
    }

    void Run() { CMainLoop(m_handlers, m_sockets, m_rpcServer, m_logger).Run(); }

    CFakeClock m_clock;
    CPublished m_published;
    CTemporaryFolder m_folder;
    CConfig m_config{m_folder.Path("none.conf")};
    Novatel::CPortHandler::FramerList m_framers;
    Novatel::CPortHandler::ObserverList m_observers;
    CPipeSource m_firstSource;
    CPipeSource m_secondSource;
    Novatel::CPortHandler m_first{"First", m_config};
    Novatel::CPortHandler m_second{"Second", m_config};
    std::vector<Novatel::CPortHandler*> m_handlers{&m_first, &m_second};
    SocketCollectionC m_sockets;
    MPISocketServerC m_rpcServer{m_sockets};
    CCountingSocket m_socket;
    static constexpr std::size_t kMemory = 50'000;
    std::optional<CTestClient> m_client;
    CRemoteLogger m_logger{"Loop"};
};

} // namespace

TEST_F(MainLoop, ends_after_the_pass_in_which_a_source_reached_its_end) {
    Run();
    EXPECT_EQ(m_secondSource.reads, 1);
    EXPECT_EQ(m_socket.services, 1);
    EXPECT_EQ(m_socket.endedPasses, 1);
}

TEST_F(MainLoop, goes_on_after_a_failure_that_is_no_end) {
    m_secondSource.readsUntilEnd = 4;
    Run();
    EXPECT_EQ(m_secondSource.reads, 4);
    EXPECT_EQ(m_firstSource.reads, 4);
}

TEST_F(MainLoop, serves_the_handlers_in_their_order) {
    std::string order;
    m_firstSource.onRead = [&order] { order += "1"; };
    m_secondSource.onRead = [&order] { order += "2"; };
    m_secondSource.readsUntilEnd = 2;
    Run();
    EXPECT_EQ(order, "1212");
}

TEST_F(MainLoop, opens_a_closed_source_in_every_pass) {
    m_firstSource.canOpen = false;
    m_secondSource.readsUntilEnd = 3;
    Run();
    EXPECT_EQ(m_firstSource.opens, 3);
    EXPECT_EQ(m_secondSource.opens, 1);
}

TEST_F(MainLoop, calls_a_handler_also_when_its_source_has_no_descriptor) {
    m_firstSource.descriptor = -1;
    m_secondSource.readsUntilEnd = 2;
    Run();
    EXPECT_EQ(m_firstSource.reads, 0);
    EXPECT_EQ(m_firstSource.continues, 2);
}

TEST_F(MainLoop, never_watches_a_descriptor_that_does_not_fit_a_set) {
    m_firstSource.descriptor = FD_SETSIZE;
    Run();
    EXPECT_EQ(m_firstSource.reads, 0);
}

TEST_F(MainLoop, pauses_10_ms_after_each_failure_that_follows_another_within_half_a_second) {
    m_firstSource.Bring(std::string_view("a"));
    m_secondSource.readsUntilEnd = 3;
    Run();
    // The first failure is isolated; then the first source fails twice and the second twice more.
    EXPECT_EQ(m_clock.Pauses(), std::vector<Core::Time>(4, Core::Time::FromMilliseconds(10)));
}

TEST_F(MainLoop, does_not_pause_after_failures_half_a_second_apart) {
    static double s_seconds;
    s_seconds = 1000.0;
    Core::ClockHooks().unix = [] { return Core::Time::FromSeconds(s_seconds += 0.5); };
    m_firstSource.canOpen = false;
    m_firstSource.descriptor = -1;
    m_secondSource.readsUntilEnd = 3;
    Run();
    Core::ClockHooks().unix = nullptr;
    EXPECT_TRUE(m_clock.Pauses().empty());
}

TEST_F(MainLoop, checks_for_idleness_in_every_pass_when_supervised) {
    m_secondSource.readsUntilEnd = 3;
    m_secondSource.onRead = [this] { m_clock.Advance(Core::Time::FromSeconds(1.0)); };
    m_logger.SetIdleParameters(0.5);
    Run();
    EXPECT_EQ(m_published.Count("\"level\":\"warning\",\"text\":\"Idle for"), 2);
}

TEST_F(MainLoop, does_not_check_for_idleness_when_unsupervised) {
    m_secondSource.readsUntilEnd = 3;
    m_secondSource.onRead = [this] { m_clock.Advance(Core::Time::FromSeconds(1.0)); };
    Run();
    EXPECT_EQ(m_published.Count("Idle for"), 0);
}

TEST_F(MainLoop, tells_the_rpc_server_that_it_is_idle_when_nothing_was_ready) {
    MakeServerHoldMemory();
    const int descriptor = m_secondSource.descriptor;
    m_firstSource.descriptor = -1;
    m_secondSource.descriptor = -1;
    m_socket.onService = [&] { m_secondSource.descriptor = descriptor; };
    const int before = m_socket.services;
    Run();
    EXPECT_EQ(m_socket.services - before, 2) << "a pass with nothing ready, and the last one";
    EXPECT_LT(m_rpcServer.HeldBytes(), kMemory / 10);
    EXPECT_EQ(m_rpcServer.ClientCount(), 1U);
}

TEST_F(MainLoop, does_not_tell_the_rpc_server_that_it_is_idle_while_something_is_ready) {
    MakeServerHoldMemory();
    m_secondSource.readsUntilEnd = 3;
    Run();
    EXPECT_GE(m_rpcServer.HeldBytes(), kMemory);
}
