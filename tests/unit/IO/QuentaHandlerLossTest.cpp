// The multiplexer goes away, comes back, or takes no bytes.

#include "IO/QuentaHandler.h"

#include "IO/QuentaMultiplexer.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

constexpr std::size_t kTail = Core::IO::WriteTail::kCapacity;

class QuentaHandlerLoss : public CQuentaTest {
protected:
    void SetUp() override {
        CQuentaTest::SetUp();
        ASSERT_TRUE(m_handler.SetDevice("50"));
        OpenPort();
    }

    void OpenPort() {
        m_multiplexer.Serve(50);
        ASSERT_TRUE(m_handler.Open());
        ASSERT_TRUE(m_multiplexer.Accept());
    }

    void ExpectLost(const std::string& reason) {
        EXPECT_FALSE(m_handler.IsOpen());
        EXPECT_EQ(m_handler.FileDescriptor(), -1);
        EXPECT_FALSE(m_handler.HasWaitingBytes());
        EXPECT_EQ(m_handler.TakeFailure(), "port 50 of the multiplexer (gps_main_boot): " + reason);
    }

    /// Writes numbered lines until one is refused; returns those that were taken.
    std::string WriteUntilRefused() {
        std::string taken;
        for (int number = 0;; ++number) {
            const std::string line = "command number " + std::to_string(number) + "\r\n";
            if (!m_handler.Write(line)) {
                return taken;
            }
            taken += line;
        }
    }

    CQuentaHandler m_handler{m_multiplexer.SocketPrefix()};
};

} // namespace

TEST_F(QuentaHandlerLoss, is_noticed_by_a_read_and_told_once) {
    m_multiplexer.Die();
    EXPECT_EQ(m_handler.Read(10), "");
    ExpectLost("closed by the multiplexer");
    EXPECT_EQ(m_handler.TakeFailure(), "");
    EXPECT_THAT(s_slept, ElementsAre());
}

TEST_F(QuentaHandlerLoss, is_noticed_by_a_read_that_fails) {
    ASSERT_TRUE(m_handler.Write("never read"));
    m_multiplexer.Die();
    EXPECT_EQ(m_handler.Read(10), "");
    ExpectLost("Connection reset by peer");
}

TEST_F(QuentaHandlerLoss, is_noticed_by_a_write_that_fails) {
    m_multiplexer.Die();
    EXPECT_FALSE(m_handler.Write("x"));
    ExpectLost("Broken pipe");
    EXPECT_FALSE(m_handler.Write("x"));
}

TEST_F(QuentaHandlerLoss, ends_when_the_multiplexer_is_opened_again) {
    m_multiplexer.Die();
    EXPECT_EQ(m_handler.Read(10), "");
    EXPECT_FALSE(m_handler.Open());
    OpenPort();
    EXPECT_TRUE(m_handler.IsOpen());
    m_multiplexer.Send("back");
    EXPECT_EQ(m_handler.Read(10), "back");
    EXPECT_TRUE(m_handler.Write("again"));
    EXPECT_EQ(m_multiplexer.Receive(), "again");
}

TEST_F(QuentaHandlerLoss, ends_when_a_read_finds_the_multiplexer_back) {
    m_multiplexer.Die();
    EXPECT_EQ(m_handler.Read(10), "");
    m_multiplexer.Serve(50);
    EXPECT_EQ(m_handler.Read(10), "");
    EXPECT_TRUE(m_handler.IsOpen());
    ASSERT_TRUE(m_multiplexer.Accept());
    m_multiplexer.Send("back");
    EXPECT_EQ(m_handler.Read(10), "back");
    EXPECT_THAT(s_slept, ElementsAre());
}

TEST_F(QuentaHandlerLoss, is_told_again_after_bytes_have_come) {
    m_multiplexer.Die();
    m_handler.Read(10);
    ExpectLost("closed by the multiplexer");
    OpenPort();
    m_multiplexer.Send("back");
    EXPECT_EQ(m_handler.Read(10), "back");
    m_multiplexer.Die();
    m_handler.Read(10);
    ExpectLost("closed by the multiplexer");
}

TEST_F(QuentaHandlerLoss, is_not_told_again_by_a_multiplexer_that_closes_whatever_opens) {
    m_multiplexer.Die();
    m_handler.Read(10);
    ExpectLost("closed by the multiplexer");
    OpenPort();
    m_multiplexer.Die();
    m_handler.Read(10);
    EXPECT_FALSE(m_handler.IsOpen());
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerLoss, leaves_nothing_to_close) {
    m_multiplexer.Die();
    m_handler.Read(10);
    EXPECT_FALSE(m_handler.Close());
}

TEST_F(QuentaHandlerLoss, is_not_what_an_own_close_is) {
    EXPECT_TRUE(m_handler.Close());
    m_handler.ContinueWriting();
    EXPECT_EQ(m_handler.TakeFailure(), "");
}

TEST_F(QuentaHandlerLoss, does_not_come_of_a_multiplexer_that_does_not_read_for_a_while) {
    const std::string taken = WriteUntilRefused();
    EXPECT_TRUE(m_handler.HasWaitingBytes());
    EXPECT_TRUE(m_handler.IsOpen());
    EXPECT_GT(taken.size(), kTail - 100);

    std::string arrived;
    while (arrived.size() < taken.size()) {
        const std::string more = m_multiplexer.Receive();
        ASSERT_FALSE(more.empty());
        arrived += more;
        m_handler.ContinueWriting();
    }
    EXPECT_TRUE(arrived == taken) << "bytes were lost or changed their order";
    EXPECT_FALSE(m_handler.HasWaitingBytes());
    EXPECT_EQ(m_handler.Write(std::vector<std::uint8_t>{'o', 'k'}), 1);
    EXPECT_EQ(m_multiplexer.Receive(), "ok");
}

TEST_F(QuentaHandlerLoss, refuses_bytes_whole_when_they_do_not_fit_the_tail) {
    const std::string taken = WriteUntilRefused();
    EXPECT_EQ(m_handler.Write(std::vector<std::uint8_t>(1000, 'x')), 0);
    std::string arrived;
    for (std::string more = m_multiplexer.Receive(); !more.empty();
         more = m_multiplexer.Receive()) {
        arrived += more;
        m_handler.ContinueWriting();
    }
    EXPECT_TRUE(arrived == taken);
}

TEST_F(QuentaHandlerLoss, comes_of_a_multiplexer_that_takes_nothing_for_ten_seconds) {
    WriteUntilRefused();
    PassTime(9'000);
    m_handler.ContinueWriting();
    EXPECT_TRUE(m_handler.IsOpen());
    PassTime(1'500);
    EXPECT_EQ(Trace([this] { m_handler.ContinueWriting(); }), "write: Connection timed out\n");
    ExpectLost("Connection timed out");
}

TEST_F(QuentaHandlerLoss, forgets_what_waited_for_the_multiplexer_that_died) {
    WriteUntilRefused();
    m_multiplexer.Die();
    m_handler.ContinueWriting();
    EXPECT_FALSE(m_handler.IsOpen());
    OpenPort();
    EXPECT_TRUE(m_handler.Write("new"));
    EXPECT_EQ(m_multiplexer.Receive(), "new");
}
