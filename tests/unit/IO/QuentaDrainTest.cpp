// What was written is waited for until the multiplexer has taken it.

#include "IO/QuentaHandler.h"

#include "IO/QuentaMultiplexer.h"
#include "IO/QuentaRPCServer.h"
#include "Support/FakeClock.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>

using testing::ElementsAre;

namespace {

constexpr char kNotTaken[] = "port 50 of the multiplexer does not take what was written";

/// With a clock that only the pauses move; what a test does meanwhile is done at each pause.
class QuentaDrain : public CQuentaTest {
protected:
    void SetUp() override {
        CQuentaTest::SetUp();
        s_test = this;
        m_clock.emplace();
        m_clock->AtPause([] {
            if (s_test->m_atPause) {
                s_test->m_atPause();
            }
        });
        m_multiplexer.Serve(50);
    }

    /// From the n-th pause on, the multiplexer takes what comes.
    void TakeFromPause(std::size_t number) {
        m_atPause = [this, number] {
            if (m_clock->Pauses().size() >= number) {
                m_taken += m_multiplexer.Receive();
            }
        };
    }
    std::size_t Pauses() const { return m_clock->Pauses().size(); }
    Core::Time Waited() const {
        Core::Time waited;
        for (const Core::Time pause : m_clock->Pauses()) {
            waited = waited + pause;
        }
        return waited;
    }

    std::optional<CFakeClock> m_clock;
    std::function<void()> m_atPause;
    std::string m_taken;

    static inline QuentaDrain* s_test = nullptr;
};

class QuentaPortDrain : public QuentaDrain {
protected:
    void ConnectPort() {
        ASSERT_TRUE(m_port.Connect());
        ASSERT_TRUE(m_multiplexer.Accept());
    }
    bool Write(const std::string& text) {
        return m_port.Write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
    /// Writes more than the socket holds; returns it.
    std::string WriteUntilBytesWait() {
        std::string written;
        while (!m_port.HasWaitingBytes()) {
            const std::string line = "command " + std::to_string(written.size()) + "\r\n";
            EXPECT_TRUE(Write(line));
            written += line;
        }
        return written;
    }

    QuentaPort m_port{50, m_multiplexer.SocketPrefix()};
};

class QuentaHandlerDrain : public QuentaDrain {
protected:
    void OpenPort() {
        ASSERT_TRUE(m_handler.SetDevice("50"));
        ASSERT_TRUE(m_handler.Open());
        ASSERT_TRUE(m_multiplexer.Accept());
    }

    CQuentaRPCServer m_server{"1"};
    CQuentaHandler m_handler{m_multiplexer.SocketPrefix(), m_server.Port()};
};

} // namespace

TEST_F(QuentaPortDrain, is_done_at_once_when_nothing_was_written) {
    ConnectPort();
    EXPECT_TRUE(m_port.Drain());
    EXPECT_EQ(Pauses(), 0u);
}

TEST_F(QuentaPortDrain, is_done_at_once_when_the_multiplexer_has_taken_everything) {
    ConnectPort();
    ASSERT_TRUE(Write("log version\r\n"));
    EXPECT_EQ(m_multiplexer.Receive(), "log version\r\n");
    EXPECT_TRUE(m_port.Drain());
    EXPECT_EQ(Pauses(), 0u);
}

TEST_F(QuentaPortDrain, waits_until_the_multiplexer_has_taken_what_the_socket_holds) {
    ConnectPort();
    ASSERT_TRUE(Write("log version\r\n"));
    ASSERT_FALSE(m_port.HasWaitingBytes());
    TakeFromPause(3);
    EXPECT_TRUE(m_port.Drain());
    EXPECT_EQ(m_taken, "log version\r\n");
    EXPECT_EQ(Pauses(), 3u);
}

TEST_F(QuentaPortDrain, goes_on_with_what_waits_for_the_socket) {
    ConnectPort();
    const std::string written = WriteUntilBytesWait();
    TakeFromPause(3);
    EXPECT_TRUE(m_port.Drain());
    EXPECT_FALSE(m_port.HasWaitingBytes());
    EXPECT_TRUE(m_taken == written) << "bytes were lost or changed their order";
}

TEST_F(QuentaPortDrain, is_given_up_after_a_second_and_drops_nothing) {
    EXPECT_EQ(QuentaPort::kDrainLimit, Core::Time::FromMilliseconds(1000));
    ConnectPort();
    ASSERT_TRUE(Write("log version\r\n"));
    EXPECT_FALSE(m_port.Drain());
    EXPECT_EQ(Waited(), QuentaPort::kDrainLimit);
    EXPECT_TRUE(m_port.IsConnected());
    EXPECT_EQ(m_multiplexer.Receive(), "log version\r\n");
    EXPECT_TRUE(m_port.Drain());
}

TEST_F(QuentaPortDrain, fails_at_once_without_a_connection) {
    EXPECT_FALSE(m_port.Drain());
    EXPECT_EQ(Pauses(), 0u);
}

TEST_F(QuentaPortDrain, of_port_0_is_done_at_once) {
    QuentaPort null(0, m_multiplexer.SocketPrefix());
    EXPECT_TRUE(null.Drain());
    EXPECT_EQ(Pauses(), 0u);
}

TEST_F(QuentaPortDrain, ends_with_a_connection_that_is_lost_while_bytes_wait) {
    ConnectPort();
    WriteUntilBytesWait();
    m_atPause = [this] { m_multiplexer.Die(); };
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_port.Drain()); }), "write: Broken pipe\n");
    EXPECT_EQ(Pauses(), 1u);
    EXPECT_FALSE(m_port.IsConnected());
}

TEST_F(QuentaPortDrain, fails_when_the_multiplexer_has_gone_without_taking_what_was_written) {
    ConnectPort();
    ASSERT_TRUE(Write("log version\r\n"));
    m_multiplexer.Die();
    EXPECT_FALSE(m_port.Drain());
    EXPECT_EQ(Pauses(), 0u);
}

TEST_F(QuentaHandlerDrain, waits_until_the_multiplexer_has_taken_what_was_written) {
    OpenPort();
    ASSERT_TRUE(m_handler.Write(std::string("log version\r\n")));
    TakeFromPause(2);
    m_handler.Drain();
    EXPECT_EQ(m_taken, "log version\r\n");
    EXPECT_EQ(Pauses(), 2u);
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerDrain, tells_once_that_the_multiplexer_does_not_take_what_was_written) {
    OpenPort();
    ASSERT_TRUE(m_handler.Write(std::string("log version\r\n")));
    m_handler.Drain();
    EXPECT_EQ(Waited(), QuentaPort::kDrainLimit);
    EXPECT_EQ(m_handler.TakeFailure(), kNotTaken);
    EXPECT_TRUE(m_handler.IsOpen());
    m_handler.Drain();
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerDrain, tells_a_lost_connection_as_such) {
    OpenPort();
    while (!m_handler.HasWaitingBytes()) {
        ASSERT_TRUE(m_handler.Write(std::string(1000, 'x')));
    }
    m_atPause = [this] { m_multiplexer.Die(); };
    m_handler.Drain();
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.TakeFailure(), "port 50 of the multiplexer (gps_main_boot): Broken pipe");
}

TEST_F(QuentaHandlerDrain, has_nothing_to_wait_for_or_to_tell_while_closed) {
    m_handler.Drain();
    OpenPort();
    ASSERT_TRUE(m_handler.Write(std::string("log version\r\n")));
    m_handler.Close();
    m_handler.Drain();
    EXPECT_EQ(Pauses(), 0u);
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerDrain, comes_before_the_multiplexer_is_told_a_new_speed) {
    OpenPort();
    ASSERT_TRUE(m_handler.Write(std::string("com thisport 115200\r\n")));
    m_atPause = [this] {
        EXPECT_THAT(m_server.Requests(), ElementsAre());
        if (Pauses() == 3) {
            m_taken = m_multiplexer.Receive();
        }
    };
    EXPECT_TRUE(m_handler.SetBaudRate(115200));
    EXPECT_EQ(m_taken, "com thisport 115200\r\n");
    EXPECT_EQ(Pauses(), 3u);
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[50,115200]"));
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerDrain, that_is_given_up_lets_the_multiplexer_be_told_a_new_speed) {
    OpenPort();
    ASSERT_TRUE(m_handler.Write(std::string("com thisport 115200\r\n")));
    m_atPause = [this] { EXPECT_THAT(m_server.Requests(), ElementsAre()); };
    EXPECT_TRUE(m_handler.SetBaudRate(115200));
    EXPECT_EQ(Waited(), QuentaPort::kDrainLimit);
    EXPECT_THAT(m_server.Requests(), ElementsAre("SetPortConfig[50,115200]"));
    EXPECT_EQ(m_handler.TakeFailure(), kNotTaken);
}

TEST_F(QuentaHandlerDrain, costs_a_new_speed_nothing_when_nothing_was_written) {
    ASSERT_TRUE(m_handler.SetDevice("50"));
    EXPECT_TRUE(m_handler.SetBaudRate(57600));
    OpenPort();
    EXPECT_TRUE(m_handler.SetBaudRate(115200));
    EXPECT_EQ(Pauses(), 0u);
    EXPECT_THAT(m_server.Requests(),
                ElementsAre("SetPortConfig[50,57600]", "SetPortConfig[50,115200]"));
}
