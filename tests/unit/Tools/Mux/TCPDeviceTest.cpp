#include "mux/TCPDevice.h"

#include <arpa/inet.h>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using EOpening = Mux::CDevice::EOpening;
using Mux::CTCPDevice;
using testing::HasSubstr;

namespace {

/// A peer on this machine that listens from its construction until it stops.
class CPeer {
public:
    CPeer() : m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        listen(m_listener, 1);
        socklen_t length = sizeof address;
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length);
        m_port = std::to_string(ntohs(address.sin_port));
    }
    ~CPeer() { Stop(); }
    CPeer(const CPeer&) = delete;
    CPeer& operator=(const CPeer&) = delete;

    const std::string& Port() const { return m_port; }
    void Accept() { m_connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC); }
    void Stop() {
        for (int* descriptor : {&m_connection, &m_listener}) {
            if (*descriptor >= 0) {
                close(*descriptor);
            }
            *descriptor = -1;
        }
    }
    void Send(const std::string& bytes) const {
        ASSERT_EQ(write(m_connection, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    std::string Receive(std::size_t count) const {
        std::string bytes(count, '\0');
        const ssize_t taken = recv(m_connection, bytes.data(), count, MSG_WAITALL);
        bytes.resize(taken > 0 ? static_cast<std::size_t>(taken) : 0);
        return bytes;
    }

private:
    int m_listener;
    int m_connection = -1;
    std::string m_port;
};

class TCPDevice : public testing::Test {
protected:
    CTCPDevice To(const std::string& host) { return CTCPDevice("peer", {host, m_peer.Port()}, 7); }

    /// Asks until it is decided, for ten seconds at most.
    static EOpening Open(CTCPDevice& device) {
        EOpening opening = EOpening::pending;
        for (int i = 0; i < 1000 && opening == EOpening::pending; ++i) {
            opening = device.Open();
            std::this_thread::sleep_for(std::chrono::milliseconds(opening == EOpening::pending));
        }
        return opening;
    }
    static std::string ReadSome(CTCPDevice& device) {
        std::string bytes;
        for (int i = 0; i < 1000 && bytes.empty() && device.IsOpen(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            bytes = device.Read();
        }
        return bytes;
    }

    CPeer m_peer;
};

} // namespace

TEST_F(TCPDevice, carries_bytes_both_ways) {
    CTCPDevice device = To("127.0.0.1");
    EXPECT_FALSE(device.IsOpen());
    ASSERT_EQ(Open(device), EOpening::open) << device.LastError();
    m_peer.Accept();
    m_peer.Send("hello");
    EXPECT_EQ(ReadSome(device), "hello");
    EXPECT_EQ(device.Read(), "");
    EXPECT_TRUE(device.Write("log version\r\n"));
    EXPECT_EQ(m_peer.Receive(13), "log version\r\n");
}

TEST_F(TCPDevice, is_found_by_its_name) {
    CTCPDevice device = To("localhost");
    EXPECT_EQ(Open(device), EOpening::open) << device.LastError();
}

TEST_F(TCPDevice, whose_peer_refuses_can_be_tried_again) {
    m_peer.Stop();
    CTCPDevice device = To("127.0.0.1");
    EXPECT_EQ(Open(device), EOpening::failed);
    EXPECT_EQ(device.LastError(), "peer: Connection refused");
    EXPECT_EQ(device.Descriptor(), -1);
    EXPECT_EQ(Open(device), EOpening::failed);
}

TEST_F(TCPDevice, is_lost_when_its_peer_closes_and_can_be_opened_again) {
    CTCPDevice device = To("127.0.0.1");
    ASSERT_EQ(Open(device), EOpening::open);
    m_peer.Accept();
    m_peer.Stop();
    EXPECT_EQ(ReadSome(device), "");
    EXPECT_FALSE(device.IsOpen());
    EXPECT_EQ(device.LastError(), "peer: closed by the peer");
    EXPECT_FALSE(device.Write("x"));
}

TEST_F(TCPDevice, keeps_a_speed_that_it_does_not_need) {
    CTCPDevice device = To("127.0.0.1");
    EXPECT_EQ(device.BaudRate(), 7);
    EXPECT_TRUE(device.SetBaudRate(9600));
    EXPECT_EQ(device.BaudRate(), 9600);
}
