#include "mux/Client.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using Mux::CClient;
using Mux::CLine;
using testing::StartsWith;

namespace {

class MuxClient : public testing::Test {
protected:
    MuxClient() {
        std::array<int, 2> ends{};
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data());
        m_peer = ends[1];
        m_client = std::make_unique<CClient>(ends[0], m_line);
    }
    ~MuxClient() override { Close(); }

    void Close() {
        if (m_peer >= 0) {
            close(m_peer);
        }
        m_peer = -1;
    }
    /// The program writes.
    void Write(const std::string& bytes) const {
        ASSERT_EQ(write(m_peer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    /// What the program finds to read.
    std::string ReadAll() const {
        std::string all;
        std::array<char, 65536> bytes;
        ssize_t count = 0;
        while ((count = read(m_peer, bytes.data(), bytes.size())) > 0) {
            all.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return all;
    }

    int m_peer = -1;
    CLine m_line{"port 50", "", 9600, [](std::string_view) {}};
    std::unique_ptr<CClient> m_client;
};

std::string Numbered(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
        bytes += std::to_string(bytes.size()) + ",";
    }
    bytes.resize(count);
    return bytes;
}

} // namespace

TEST_F(MuxClient, is_known_by_its_process) {
    EXPECT_THAT(m_client->Name(), StartsWith(std::to_string(getpid()) + " ("));
}

TEST_F(MuxClient, gets_what_is_sent) {
    m_client->Send("one ");
    m_client->Send("two");
    EXPECT_EQ(ReadAll(), "one two");
}

TEST_F(MuxClient, that_reads_late_gets_all_in_order) {
    const std::string bytes = Numbered(900'000);
    for (std::size_t at = 0; at < bytes.size(); at += 4096) {
        m_client->Send(std::string_view(bytes).substr(at, 4096));
    }
    EXPECT_TRUE(m_client->WantsToWrite());
    std::string read;
    while (m_client->WantsToWrite()) {
        read += ReadAll();
        m_client->Service(false, true);
    }
    EXPECT_EQ(read + ReadAll(), bytes);
    EXPECT_FALSE(m_client->HasEnded());
}

TEST_F(MuxClient, for_which_more_than_a_mebibyte_waits_has_ended) {
    const std::string piece(4096, 'x');
    std::size_t sent = 0;
    for (; !m_client->HasEnded() && sent < 4'000'000; sent += piece.size()) {
        m_client->Send(piece);
    }
    EXPECT_TRUE(m_client->HasEnded());
    EXPECT_EQ(m_client->LostBytes(), 1024U * 1024U + 4096U);
    EXPECT_EQ(sent - ReadAll().size(), m_client->LostBytes());
}

TEST_F(MuxClient, is_read_as_far_as_asked) {
    Write("abcdef");
    EXPECT_EQ(m_client->BytesThere(), 6U);
    EXPECT_EQ(m_client->Read(4), "abcd");
    EXPECT_EQ(m_client->BytesThere(), 2U);
    EXPECT_EQ(m_client->Read(100), "ef");
    EXPECT_EQ(m_client->Read(100), "");
    EXPECT_FALSE(m_client->HasEnded());
}

TEST_F(MuxClient, that_writes_and_leaves_at_once_is_read_to_its_end) {
    Write("last words");
    Close();
    m_client->Send("nobody reads this");
    EXPECT_FALSE(m_client->HasEnded());
    EXPECT_EQ(m_client->Read(100), "last words");
    EXPECT_EQ(m_client->Read(100), "");
    EXPECT_TRUE(m_client->HasEnded());
}

TEST_F(MuxClient, that_writes_no_more_still_gets_what_is_sent) {
    shutdown(m_peer, SHUT_WR);
    EXPECT_EQ(m_client->Read(100), "");
    EXPECT_FALSE(m_client->WantsToRead()) << "or the loop would spin on its end";
    m_client->Service(false, false);
    EXPECT_FALSE(m_client->HasEnded());
    m_client->Send("still here");
    EXPECT_EQ(ReadAll(), "still here");
    Close();
    m_client->Service(false, false);
    EXPECT_TRUE(m_client->HasEnded());
}
