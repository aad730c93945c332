#include "hub/http/BoundedStream.h"

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using Hub::CBoundedStream;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A stream, and the client's end of it.
class BoundedStream : public testing::Test {
protected:
    ~BoundedStream() override {
        close(m_ends[0]);
        close(m_ends[1]);
    }

    void Say(std::string_view text) {
        ASSERT_EQ(::write(m_ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool Wait() {
        return m_stream.WaitForRequest([this] { return m_isCrowded.load(); });
    }
    /// What can be read until it fails or ends, byte by byte.
    std::string ReadAll() {
        std::string text;
        char byte = 0;
        while (m_stream.read(&byte, 1) == 1) {
            text += byte;
        }
        return text;
    }
    double SecondsOf(const std::function<void()>& action) {
        const auto begin = steady_clock::now();
        action();
        return std::chrono::duration<double>(steady_clock::now() - begin).count();
    }

    static std::array<int, 2> Pair() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        return ends;
    }

    std::array<int, 2> m_ends = Pair();
    std::atomic<bool> m_shallEnd = false;
    std::atomic<bool> m_isCrowded = false;
    CBoundedStream m_stream{m_ends[0], [this] { return m_shallEnd.load(); }};
};

} // namespace

TEST_F(BoundedStream, reads_what_a_client_says) {
    Say("hello");
    ASSERT_TRUE(Wait());
    shutdown(m_ends[1], SHUT_WR);
    EXPECT_EQ(ReadAll(), "hello");
}

TEST_F(BoundedStream, keeps_what_was_said_at_once_for_the_next_request) {
    Say("first second");
    ASSERT_TRUE(Wait());
    std::array<char, 6> first;
    EXPECT_EQ(m_stream.read(first.data(), first.size()), 6);
    EXPECT_LT(SecondsOf([this] { EXPECT_TRUE(Wait()); }), 0.1);
    shutdown(m_ends[1], SHUT_WR);
    EXPECT_EQ(ReadAll(), "second");
}

TEST_F(BoundedStream, reads_no_more_of_a_request_than_any_has) {
    const std::string chunk(1000, 'x');
    std::thread client([&] {
        for (int i = 0; i < 40; ++i) {
            Say(chunk);
        }
    });
    ASSERT_TRUE(Wait());
    EXPECT_EQ(ReadAll().size(), CBoundedStream::kLongestRequest);
    client.join();
}

TEST_F(BoundedStream, has_the_same_room_for_each_request) {
    for (int i = 0; i < 3; ++i) {
        Say(std::string(20'000, 'x'));
        ASSERT_TRUE(Wait());
        std::string read(20'000, ' ');
        for (std::size_t at = 0; at < read.size();) {
            const ssize_t count = m_stream.read(read.data() + at, read.size() - at);
            ASSERT_GT(count, 0);
            at += static_cast<std::size_t>(count);
        }
    }
}

TEST_F(BoundedStream, fails_when_a_request_comes_too_slowly) {
    std::atomic<bool> isDone = false;
    std::thread client([&] {
        while (!isDone) {
            Say("x");
            std::this_thread::sleep_for(milliseconds(50));
        }
    });
    ASSERT_TRUE(Wait());
    const double seconds = SecondsOf([this] { ReadAll(); });
    isDone = true;
    client.join();
    EXPECT_GE(seconds, 4.5);
    EXPECT_LT(seconds, 6.0);
}

TEST_F(BoundedStream, fails_when_the_client_takes_nothing_of_its_answer) {
    const std::string text(1'000'000, 'x');
    const double seconds = SecondsOf([&] {
        while (m_stream.write(text.data(), text.size()) > 0) {
        }
    });
    EXPECT_GE(seconds, 4.5);
    EXPECT_LT(seconds, 6.0);
}

TEST_F(BoundedStream, fails_and_does_not_kill_the_program_when_the_client_is_gone) {
    close(m_ends[1]);
    m_ends[1] = -1;
    EXPECT_EQ(m_stream.write("x", 1), -1);
    EXPECT_TRUE(Wait()); // its end is there to be read
    EXPECT_EQ(ReadAll(), "");
}

TEST_F(BoundedStream, waits_no_longer_than_a_second_while_others_want_the_place) {
    m_isCrowded = true;
    const double seconds = SecondsOf([this] { EXPECT_FALSE(Wait()); });
    EXPECT_GE(seconds, 0.9);
    EXPECT_LT(seconds, 2.0);
}

TEST_F(BoundedStream, waits_for_a_request_that_comes_late) {
    std::thread client([&] {
        std::this_thread::sleep_for(milliseconds(1500));
        Say("x");
    });
    EXPECT_TRUE(Wait());
    client.join();
}

TEST_F(BoundedStream, waits_for_nothing_when_the_server_ends) {
    ASSERT_GT(SecondsOf([this] {
                  std::thread ender([this] {
                      std::this_thread::sleep_for(milliseconds(100));
                      m_shallEnd = true;
                  });
                  EXPECT_FALSE(Wait());
                  ender.join();
              }),
              0.05);
    const std::string text(1'000'000, 'x');
    EXPECT_LT(SecondsOf([&] {
                  EXPECT_EQ(ReadAll(), "");
                  while (m_stream.write(text.data(), text.size()) > 0) {
                  }
                  m_stream.BidFarewell();
              }),
              0.5);
}

TEST_F(BoundedStream, lets_a_client_read_its_answer_that_is_still_talking) {
    std::string answer;
    std::thread client([&] {
        for (int i = 0; i < 50; ++i) {
            Say(std::string(1000, 'x'));
        }
        shutdown(m_ends[1], SHUT_WR);
        std::array<char, 100> chunk;
        ssize_t count = 0;
        while ((count = ::read(m_ends[1], chunk.data(), chunk.size())) > 0) {
            answer.append(chunk.data(), static_cast<std::size_t>(count));
        }
    });
    m_stream.write("no", 2);
    EXPECT_LT(SecondsOf([this] { m_stream.BidFarewell(); }), 0.9);
    client.join();
    EXPECT_EQ(answer, "no");
}

TEST_F(BoundedStream, waits_a_second_for_a_client_that_does_not_leave) {
    const double seconds = SecondsOf([this] { m_stream.BidFarewell(); });
    EXPECT_GE(seconds, 0.9);
    EXPECT_LT(seconds, 2.0);
}

namespace {

/// The two addresses of a connection that has come to an IPv6 listener.
std::pair<std::string, std::string> AddressesOf(const char* listen, int family, const char* reach) {
    const int listener = socket(AF_INET6, SOCK_STREAM, 0);
    const int off = 0;
    setsockopt(listener, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
    sockaddr_in6 name{};
    name.sin6_family = AF_INET6;
    inet_pton(AF_INET6, listen, &name.sin6_addr);
    socklen_t length = sizeof name;
    if (bind(listener, reinterpret_cast<sockaddr*>(&name), sizeof name) != 0 ||
        ::listen(listener, 1) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&name), &length) != 0) {
        close(listener);
        return {};
    }
    const int client = socket(family, SOCK_STREAM, 0);
    if (family == AF_INET) {
        sockaddr_in peer{};
        peer.sin_family = AF_INET;
        peer.sin_port = name.sin6_port;
        inet_pton(AF_INET, reach, &peer.sin_addr);
        connect(client, reinterpret_cast<sockaddr*>(&peer), sizeof peer);
    } else {
        inet_pton(AF_INET6, reach, &name.sin6_addr);
        connect(client, reinterpret_cast<sockaddr*>(&name), sizeof name);
    }
    const int accepted = accept(listener, nullptr, nullptr);
    const CBoundedStream stream(accepted, [] { return false; });
    std::string local;
    std::string remote;
    int localPort = 0;
    int remotePort = 0;
    stream.get_local_ip_and_port(local, localPort);
    stream.get_remote_ip_and_port(remote, remotePort);
    EXPECT_EQ(localPort, ntohs(name.sin6_port));
    EXPECT_GT(remotePort, 0);
    close(accepted);
    close(client);
    close(listener);
    return {local, remote};
}

} // namespace

TEST(BoundedStreamAddress, of_an_IPv6_connection_is_written_as_such) {
    const auto addresses = AddressesOf("::1", AF_INET6, "::1");
    if (addresses.first.empty()) {
        GTEST_SKIP() << "this machine has no IPv6";
    }
    EXPECT_EQ(addresses, (std::pair<std::string, std::string>("::1", "::1")));
}

TEST(BoundedStreamAddress, of_an_IPv4_connection_to_an_IPv6_listener_is_the_one_its_client_knows) {
    const auto addresses = AddressesOf("::", AF_INET, "127.0.0.1");
    if (addresses.first.empty()) {
        GTEST_SKIP() << "this machine has no IPv6";
    }
    EXPECT_EQ(addresses, (std::pair<std::string, std::string>("127.0.0.1", "127.0.0.1")));
}
