// A simulated port as the programs that open it see it.
#include "sim/PortLink.h"

#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <filesystem>
#include <termios.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

class SimPortLink : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(m_link.Open(Path(), 115200), ""); }
    void TearDown() override { Leave(); }

    std::string Path() const { return m_folder.Path("com1"); }

    /// Somebody opens it, and reads and writes without waiting.
    void Enter() {
        m_peer = ::open(Path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(m_peer, 0);
        ASSERT_TRUE(m_link.LookForPeer());
    }
    void Leave() {
        if (m_peer >= 0) {
            ::close(m_peer);
            m_peer = -1;
        }
    }
    std::string Received() const {
        std::string all;
        char bytes[4096];
        for (ssize_t count = ::read(m_peer, bytes, sizeof bytes); count > 0;
             count = ::read(m_peer, bytes, sizeof bytes)) {
            all.append(bytes, static_cast<std::size_t>(count));
        }
        return all;
    }
    void SetSpeed(speed_t speed) const {
        termios settings{};
        ::tcgetattr(m_peer, &settings);
        ::cfsetspeed(&settings, speed);
        ::tcsetattr(m_peer, TCSANOW, &settings);
    }
    static Sim::Bytes AllBytes() {
        Sim::Bytes bytes;
        for (int value = 0; value < 256; ++value) {
            bytes.push_back(static_cast<std::uint8_t>(value));
        }
        return bytes;
    }

    CTemporaryFolder m_folder;
    Sim::CPortLink m_link;
    int m_peer = -1;
};

} // namespace

TEST_F(SimPortLink, passes_every_byte_as_it_is_both_ways) {
    Enter();
    const Sim::Bytes bytes = AllBytes();
    EXPECT_TRUE(m_link.Write(bytes));
    EXPECT_EQ(Received(), std::string(bytes.begin(), bytes.end()));
    ASSERT_EQ(::write(m_peer, bytes.data(), bytes.size()), 256);
    EXPECT_EQ(m_link.Read(), std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(m_link.Read(), "");
}

TEST_F(SimPortLink, has_its_speed_at_first_and_notices_another_one) {
    EXPECT_EQ(m_link.Speed(), 115200U);
    Enter();
    EXPECT_EQ(m_link.Speed(), 115200U);
    SetSpeed(B460800);
    EXPECT_EQ(m_link.Speed(), 460800U);
}

TEST_F(SimPortLink, sees_who_comes_and_goes) {
    EXPECT_FALSE(m_link.LookForPeer());
    Enter();
    Leave();
    EXPECT_FALSE(m_link.LookForPeer());
    Enter();
}

TEST_F(SimPortLink, loses_what_is_said_to_nobody_and_what_nobody_has_read) {
    EXPECT_TRUE(m_link.Write(AllBytes()));
    Enter();
    EXPECT_EQ(Received(), "");
    EXPECT_TRUE(m_link.Write(AllBytes()));
    Leave();
    EXPECT_FALSE(m_link.LookForPeer());
    Enter();
    EXPECT_EQ(Received(), "");
}

TEST_F(SimPortLink, still_reads_what_somebody_wrote_who_has_left) {
    Enter();
    ASSERT_EQ(::write(m_peer, "reset\r\n", 7), 7);
    Leave();
    m_link.LookForPeer();
    EXPECT_EQ(m_link.Read(), "reset\r\n");
}

TEST_F(SimPortLink, takes_whole_writes_or_none_when_nobody_reads) {
    Enter();
    const Sim::Bytes log(1000, 'x');
    std::size_t taken = 0;
    while (m_link.Write(log)) {
        ASSERT_LT(++taken, 1000U) << "it never fills up";
    }
    EXPECT_GT(taken, 0U);
    std::size_t received = Received().size();
    while (m_link.HasUnsent()) {
        m_link.ContinueWriting();
        received += Received().size();
    }
    EXPECT_EQ(received, taken * log.size());
    EXPECT_TRUE(m_link.Write(log));
}

TEST_F(SimPortLink, takes_its_link_away_at_the_end) {
    {
        Sim::CPortLink other;
        ASSERT_EQ(other.Open(m_folder.Path("com2"), 9600), "");
        EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path("com2")));
    }
    EXPECT_FALSE(std::filesystem::is_symlink(m_folder.Path("com2")));
}

TEST_F(SimPortLink, replaces_a_link_and_leaves_that_of_a_successor_alone) {
    auto first = std::make_unique<Sim::CPortLink>();
    ASSERT_EQ(first->Open(m_folder.Path("com2"), 9600), "");
    Sim::CPortLink second;
    ASSERT_EQ(second.Open(m_folder.Path("com2"), 9600), "");
    const auto target = std::filesystem::read_symlink(m_folder.Path("com2"));
    first.reset();
    EXPECT_EQ(std::filesystem::read_symlink(m_folder.Path("com2")), target);
}

TEST_F(SimPortLink, does_not_touch_anything_else_of_its_name) {
    m_folder.Write("com2", "mine");
    Sim::CPortLink other;
    EXPECT_THAT(other.Open(m_folder.Path("com2"), 9600), HasSubstr("something else"));
    EXPECT_TRUE(std::filesystem::is_regular_file(m_folder.Path("com2")));
    EXPECT_NE(Sim::CPortLink().Open(m_folder.Path("no/com1"), 9600), "");
}
