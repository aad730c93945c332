#include "IO/QuentaPort.h"

#include "IO/QuentaMultiplexer.h"

#include <array>
#include <fcntl.h>
#include <sys/resource.h>

namespace {

class QuentaPortTest : public CQuentaTest {
protected:
    /// A port that is connected to the multiplexer, which has let it in.
    void ConnectPort() {
        m_multiplexer.Serve(50);
        ASSERT_TRUE(m_port.Connect());
        ASSERT_TRUE(m_multiplexer.Accept());
    }

    std::string Read(std::size_t length) {
        std::string buffer(length, '\0');
        std::size_t count = 0;
        m_readSucceeded = m_port.Read(Bytes(buffer), length, count);
        return buffer.substr(0, count);
    }

    std::string ReadWithin(int milliseconds, std::size_t length) {
        std::string buffer(length, '\0');
        std::size_t count = 0;
        m_readSucceeded = m_port.Read(Bytes(buffer), length, milliseconds, count);
        return buffer.substr(0, count);
    }

    bool Write(std::string text) { return m_port.Write(Bytes(text), text.size()); }

    static std::uint8_t* Bytes(std::string& text) {
        return reinterpret_cast<std::uint8_t*>(text.data());
    }

    QuentaPort m_port{50, m_multiplexer.SocketPrefix()};
    bool m_readSucceeded = false;
};

/// Uses up the descriptors below the highest that a set of select() can hold.
class CDescriptorHog {
public:
    CDescriptorHog() {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit wanted = m_before;
        wanted.rlim_cur = FD_SETSIZE + 64;
        m_isRaised = wanted.rlim_cur <= m_before.rlim_max && setrlimit(RLIMIT_NOFILE, &wanted) == 0;
        int next = -1;
        while (m_isRaised && (next = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0) {
            m_descriptors.push_back(next);
            if (next >= FD_SETSIZE - 1) {
                break;
            }
        }
    }
    ~CDescriptorHog() {
        for (const int descriptor : m_descriptors) {
            close(descriptor);
        }
        setrlimit(RLIMIT_NOFILE, &m_before);
    }
    CDescriptorHog(const CDescriptorHog&) = delete;
    CDescriptorHog& operator=(const CDescriptorHog&) = delete;

    bool IsFull() const { return m_isRaised && m_descriptors.back() == FD_SETSIZE - 1; }

private:
    rlimit m_before = {};
    bool m_isRaised = false;
    std::vector<int> m_descriptors;
};

} // namespace

TEST_F(QuentaPortTest, has_its_socket_in_a_fixed_place_unless_told_otherwise) {
    EXPECT_STREQ(QuentaPort::kSocketPrefix, "/tmp/tty_socket_");
}

TEST_F(QuentaPortTest, connects_to_the_socket_of_its_number) {
    m_multiplexer.Serve(50);
    EXPECT_FALSE(m_port.IsConnected());
    EXPECT_EQ(m_port.Descriptor(), -1);
    EXPECT_TRUE(m_port.Connect());
    EXPECT_TRUE(m_port.IsConnected());
    EXPECT_TRUE(m_multiplexer.Accept());
}

TEST_F(QuentaPortTest, stays_with_the_connection_that_it_has) {
    ConnectPort();
    const int descriptor = m_port.Descriptor();
    EXPECT_TRUE(m_port.Connect());
    EXPECT_TRUE(m_port.EnsureConnected());
    EXPECT_EQ(m_port.Descriptor(), descriptor);
    EXPECT_FALSE(m_multiplexer.Accept());
}

TEST_F(QuentaPortTest, has_a_descriptor_that_never_blocks_and_is_not_inherited) {
    ConnectPort();
    EXPECT_NE(fcntl(m_port.Descriptor(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(fcntl(m_port.Descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(QuentaPortTest, tells_that_there_is_no_socket) {
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_port.EnsureConnected()); }),
              "connect: No such file or directory\n");
    EXPECT_EQ(m_port.Descriptor(), -1);
}

TEST_F(QuentaPortTest, does_not_wait_for_a_multiplexer_that_lets_nobody_in) {
    m_multiplexer.Serve(50, 0);
    QuentaPort first(50, m_multiplexer.SocketPrefix());
    ASSERT_TRUE(first.Connect());
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(m_port.Connect()); }),
              "connect: Resource temporarily unavailable\n");
    ASSERT_TRUE(m_multiplexer.Accept());
    EXPECT_TRUE(m_port.Connect());
}

TEST_F(QuentaPortTest, cuts_a_path_that_does_not_fit_an_address) {
    std::string path = m_multiplexer.SocketPrefix();
    path.append(107 - path.size(), 'x');
    m_multiplexer.ServePath(path);
    QuentaPort cut(50, path);
    EXPECT_TRUE(cut.Connect());
    EXPECT_TRUE(m_multiplexer.Accept());
}

TEST_F(QuentaPortTest, refuses_a_descriptor_that_no_set_can_hold) {
    m_multiplexer.Serve(50);
    std::string trace;
    {
        const CDescriptorHog hog;
        if (!hog.IsFull()) {
            GTEST_SKIP() << "the descriptor limit here is below that of a set";
        }
        trace = Trace([this] { EXPECT_FALSE(m_port.Connect()); });
    }
    EXPECT_EQ(trace, "socket: Too many open files\n");
    EXPECT_EQ(m_port.Descriptor(), -1);
    EXPECT_TRUE(m_port.Connect());
}

TEST_F(QuentaPortTest, of_number_0_does_nothing_with_success) {
    QuentaPort null(0, m_multiplexer.SocketPrefix());
    std::array<std::uint8_t, 4> bytes = {};
    std::size_t count = 1;
    EXPECT_TRUE(null.IsConnected());
    EXPECT_TRUE(null.Connect());
    EXPECT_EQ(null.Descriptor(), -1);
    EXPECT_TRUE(null.Write(bytes.data(), bytes.size()));
    EXPECT_FALSE(null.HasWaitingBytes());
    EXPECT_FALSE(null.Read(bytes.data(), bytes.size(), count));
    EXPECT_EQ(count, 0u);
    EXPECT_FALSE(null.Read(bytes.data(), bytes.size(), 60'000, count));
    null.Close();
    EXPECT_TRUE(null.IsConnected());
}

TEST_F(QuentaPortTest, reads_what_is_there_up_to_the_length) {
    ConnectPort();
    m_multiplexer.Send("abcdef");
    EXPECT_EQ(Read(4), "abcd");
    EXPECT_EQ(Read(4), "ef");
    EXPECT_TRUE(m_readSucceeded);
}

TEST_F(QuentaPortTest, reads_no_bytes_while_nothing_is_there_and_stays_connected) {
    ConnectPort();
    EXPECT_EQ(Read(4), "");
    EXPECT_TRUE(m_readSucceeded);
    EXPECT_TRUE(m_port.IsConnected());
}

TEST_F(QuentaPortTest, reads_within_a_time_what_is_there_without_filling_the_length) {
    ConnectPort();
    m_multiplexer.Send("ab");
    EXPECT_EQ(ReadWithin(60'000, 4), "ab");
}

TEST_F(QuentaPortTest, waits_for_the_first_byte_no_longer_than_the_time) {
    ConnectPort();
    const Core::MonotonicTime begin = Core::MonotonicTime::Now();
    EXPECT_EQ(ReadWithin(30, 4), "");
    EXPECT_GE((Core::MonotonicTime::Now() - begin).AsSeconds(), 0.029);
    EXPECT_TRUE(m_readSucceeded);
    EXPECT_TRUE(m_port.IsConnected());
}

TEST_F(QuentaPortTest, reads_nothing_without_a_connection) {
    EXPECT_EQ(Read(4), "");
    EXPECT_FALSE(m_readSucceeded);
    EXPECT_EQ(ReadWithin(60'000, 4), "");
    EXPECT_FALSE(m_readSucceeded);
}

TEST_F(QuentaPortTest, takes_the_end_of_the_stream_for_a_lost_connection) {
    ConnectPort();
    m_multiplexer.Send("last");
    m_multiplexer.CloseClient();
    EXPECT_EQ(Read(10), "last");
    EXPECT_TRUE(m_port.IsConnected());
    EXPECT_EQ(Trace([this] { EXPECT_EQ(ReadWithin(60'000, 10), ""); }), "");
    EXPECT_TRUE(m_readSucceeded);
    EXPECT_EQ(m_port.Descriptor(), -1);
    EXPECT_EQ(m_port.LossReason(), "closed by the multiplexer");
}

TEST_F(QuentaPortTest, takes_a_failed_read_for_a_lost_connection_and_tells_it) {
    ConnectPort();
    ASSERT_TRUE(Write("never read"));
    m_multiplexer.CloseClient(); // with bytes unread: the kernel resets the connection
    EXPECT_EQ(Trace([this] { EXPECT_EQ(Read(10), ""); }),
              "QuentaPort::ReadData:: Connection reset by peer\n");
    EXPECT_FALSE(m_readSucceeded);
    EXPECT_EQ(m_port.Descriptor(), -1);
    EXPECT_EQ(m_port.LossReason(), "Connection reset by peer");
}

TEST_F(QuentaPortTest, writes_all_bytes) {
    ConnectPort();
    EXPECT_TRUE(Write(std::string("log com1\0versionb\r\n", 19)));
    EXPECT_EQ(m_multiplexer.Receive(), std::string("log com1\0versionb\r\n", 19));
}

TEST_F(QuentaPortTest, writes_nothing_without_a_connection) {
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(Write("x")); }), "");
}

TEST_F(QuentaPortTest, takes_a_failed_write_for_a_lost_connection_and_tells_it) {
    ConnectPort();
    m_multiplexer.CloseClient();
    EXPECT_EQ(Trace([this] { EXPECT_FALSE(Write("x")); }), "write: Broken pipe\n");
    EXPECT_EQ(m_port.Descriptor(), -1);
    EXPECT_EQ(m_port.LossReason(), "Broken pipe");
}

TEST_F(QuentaPortTest, forgets_what_waits_when_it_is_closed) {
    ConnectPort();
    while (!m_port.HasWaitingBytes()) {
        ASSERT_TRUE(Write(std::string(1000, 'x')));
    }
    m_port.Close();
    EXPECT_FALSE(m_port.IsConnected());
    EXPECT_FALSE(m_port.HasWaitingBytes());
    ASSERT_TRUE(m_port.Connect());
    ASSERT_TRUE(m_multiplexer.Accept());
    EXPECT_TRUE(Write("new"));
    EXPECT_EQ(m_multiplexer.Receive(), "new");
}
