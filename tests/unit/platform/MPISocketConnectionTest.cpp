#include "platform/MPISocketClient.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using ELine = MPISocketConnectionC::ELine;

/// A connection and the descriptor of its peer.
class MPISocketConnection : public testing::Test {
protected:
    void SetUp() override {
        int ends[2] = {-1, -1};
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
        m_connection.emplace(ends[0]);
        m_peer = ends[1];
    }
    void TearDown() override { ClosePeer(); }

    void ClosePeer() {
        if (m_peer >= 0) {
            close(m_peer);
        }
        m_peer = -1;
    }

    /// Gives bytes to the connection, which reads while they are given.
    void Arrive(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = write(m_peer, bytes.data(), bytes.size());
            bytes.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
            ASSERT_TRUE(m_connection->Receive());
        }
        while (HasArrived()) {
            ASSERT_TRUE(m_connection->Receive());
        }
    }

    bool HasArrived() const {
        pollfd watched = {m_connection->Descriptor(), POLLIN, 0};
        return poll(&watched, 1, 0) == 1;
    }

    std::string ReadAtPeer() const {
        std::string all(1024 * 1024, '\0');
        const ssize_t count = read(m_peer, all.data(), all.size());
        all.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return all;
    }

    std::string TakeWholeLine() {
        std::string line;
        EXPECT_EQ(m_connection->TakeLine(line), ELine::whole);
        return line;
    }

    ELine TakeWhatIsNoLine() {
        std::string line;
        return m_connection->TakeLine(line);
    }

    std::optional<MPISocketConnectionC> m_connection;
    int m_peer = -1;
};

} // namespace

TEST_F(MPISocketConnection, gives_lines_whole_and_in_order_when_they_come_together) {
    Arrive("one\ntwo\n\nfour\n");
    EXPECT_EQ(TakeWholeLine(), "one");
    EXPECT_EQ(TakeWholeLine(), "two");
    EXPECT_EQ(TakeWholeLine(), "");
    EXPECT_EQ(TakeWholeLine(), "four");
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
}

TEST_F(MPISocketConnection, gives_a_line_once_its_end_has_come) {
    for (const char byte : std::string("first\nsec")) {
        EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
        Arrive(std::string(1, byte));
        if (byte == '\n') {
            EXPECT_EQ(TakeWholeLine(), "first");
        }
    }
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
    Arrive("ond\nthird");
    EXPECT_EQ(TakeWholeLine(), "second");
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
    Arrive("\n");
    EXPECT_EQ(TakeWholeLine(), "third");
}

TEST_F(MPISocketConnection, gives_a_line_of_the_greatest_length) {
    const std::string longest(MPISocketConnectionC::kMaxLine, 'x');
    Arrive("before\n" + longest + "\nafter\n");
    EXPECT_EQ(TakeWholeLine(), "before");
    EXPECT_TRUE(TakeWholeLine() == longest);
    EXPECT_EQ(TakeWholeLine(), "after");
}

TEST_F(MPISocketConnection, tells_of_a_line_that_is_a_byte_too_long_with_or_without_its_end) {
    Arrive(std::string(MPISocketConnectionC::kMaxLine, 'x'));
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
    Arrive("x");
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::tooLong);
    Arrive("\n");
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::tooLong);
}

TEST_F(MPISocketConnection, tells_the_end_of_the_peer_from_a_failure) {
    Arrive("last\n");
    ClosePeer();
    errno = EIO;
    EXPECT_FALSE(m_connection->Receive());
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(TakeWholeLine(), "last");
}

TEST_F(MPISocketConnection, receives_nothing_without_harm) {
    EXPECT_TRUE(m_connection->Receive());
    EXPECT_EQ(TakeWhatIsNoLine(), ELine::partial);
}

TEST_F(MPISocketConnection, sends_lines_with_their_end) {
    m_connection->Queue("one");
    m_connection->Queue("two");
    EXPECT_TRUE(m_connection->HasWaitingBytes());
    EXPECT_TRUE(m_connection->Send());
    EXPECT_FALSE(m_connection->HasWaitingBytes());
    EXPECT_EQ(ReadAtPeer(), "one\ntwo\n");
}

TEST_F(MPISocketConnection, keeps_what_the_peer_does_not_take_and_sends_it_in_order_later) {
    std::string all;
    for (int i = 0; i < 100'000; ++i) {
        const std::string line = "line " + std::to_string(i);
        m_connection->Queue(line);
        all += line + "\n";
    }
    ASSERT_TRUE(m_connection->Send());
    ASSERT_TRUE(m_connection->HasWaitingBytes());
    m_connection->Queue("the end");
    all += "the end\n";

    std::string arrived;
    while (arrived.size() < all.size()) {
        const std::string more = ReadAtPeer();
        ASSERT_FALSE(more.empty());
        arrived += more;
        ASSERT_TRUE(m_connection->Send());
    }
    EXPECT_TRUE(arrived == all);
    EXPECT_FALSE(m_connection->HasWaitingBytes());
}

TEST_F(MPISocketConnection, tells_that_nobody_can_take_a_line_any_more) {
    ClosePeer();
    m_connection->Queue("too late");
    EXPECT_FALSE(m_connection->Send());
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(MPISocketConnection, waits_no_longer_than_to_the_deadline) {
    const Core::MonotonicTime deadline =
        Core::MonotonicTime::Now() + Core::Time::FromMilliseconds(30);
    EXPECT_FALSE(m_connection->Wait(POLLIN, deadline));
    EXPECT_GE(Core::MonotonicTime::Now(), deadline);
}

TEST_F(MPISocketConnection, waits_no_longer_than_for_what_it_waits_for) {
    const Core::MonotonicTime faraway =
        Core::MonotonicTime::Now() + Core::Time::FromMilliseconds(60'000);
    EXPECT_TRUE(m_connection->Wait(POLLIN | POLLOUT, faraway));
    ASSERT_EQ(write(m_peer, "x", 1), 1);
    EXPECT_TRUE(m_connection->Wait(POLLIN, faraway));
    ClosePeer();
    EXPECT_TRUE(m_connection->Wait(0, faraway));
    EXPECT_LT(Core::MonotonicTime::Now(), faraway);
}
