#include "mux/UnixListener.h"
#include "Support/TemporaryFolder.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using Mux::CUnixListener;

namespace {

class UnixListener : public testing::Test {
protected:
    std::string Open(CUnixListener& listener, mode_t mode = 0660) const {
        return listener.Open(m_path, mode, std::nullopt);
    }
    bool IsServed() const {
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, m_path.c_str());
        const bool isServed =
            connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        close(descriptor);
        return isServed;
    }
    bool IsThere() const { return std::filesystem::exists(m_path); }
    /// A socket's name whose program has died.
    void LeaveSocketBehind() const {
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, m_path.c_str());
        EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        close(descriptor);
    }
    mode_t Mode() const {
        struct stat status {};
        stat(m_path.c_str(), &status);
        return status.st_mode & 07777;
    }

    CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("tty_socket_50");
};

} // namespace

TEST_F(UnixListener, can_be_reached_and_takes_its_name_with_it) {
    CUnixListener listener;
    ASSERT_EQ(Open(listener), "");
    EXPECT_TRUE(IsServed());
    listener.Close();
    EXPECT_FALSE(IsThere());
}

TEST_F(UnixListener, has_the_mode_that_is_asked_for_whatever_the_umask) {
    const mode_t before = umask(0777);
    CUnixListener listener;
    EXPECT_EQ(Open(listener, 0666), "");
    EXPECT_EQ(Mode(), 0666U);
    umask(0);
    EXPECT_EQ(Open(listener, 0600), "");
    EXPECT_EQ(Mode(), 0600U);
    umask(before);
}

TEST_F(UnixListener, replaces_a_socket_that_nobody_serves) {
    LeaveSocketBehind();
    ASSERT_TRUE(IsThere());
    ASSERT_FALSE(IsServed());
    CUnixListener listener;
    EXPECT_EQ(Open(listener), "");
    EXPECT_TRUE(IsServed());
}

TEST_F(UnixListener, leaves_a_socket_alone_that_another_one_serves) {
    CUnixListener first;
    CUnixListener second;
    ASSERT_EQ(Open(first), "");
    EXPECT_EQ(Open(second), "another program serves it");
    EXPECT_EQ(second.Descriptor(), -1);
    second.Close();
    EXPECT_TRUE(IsServed());
}

TEST_F(UnixListener, leaves_a_socket_alone_whose_queue_is_full) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, m_path.c_str());
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(descriptor, 0), 0);
    EXPECT_TRUE(IsServed()) << "takes the only place in the queue";
    EXPECT_FALSE(IsServed());
    CUnixListener listener;
    EXPECT_EQ(Open(listener), "another program serves it");
    EXPECT_TRUE(IsThere());
    close(descriptor);
}

TEST_F(UnixListener, leaves_alone_what_is_no_socket) {
    m_folder.Write("tty_socket_50", "precious");
    CUnixListener listener;
    EXPECT_EQ(Open(listener), "something else than a socket stands there");
    EXPECT_EQ(std::filesystem::file_size(m_path), 8U);
}

TEST_F(UnixListener, does_not_remove_the_name_of_its_successor) {
    CUnixListener first;
    CUnixListener second;
    ASSERT_EQ(Open(first), "");
    std::filesystem::remove(m_path);
    ASSERT_EQ(Open(second), "");
    first.Close();
    EXPECT_TRUE(IsServed());
}

TEST_F(UnixListener, tells_why_it_cannot_be_made) {
    CUnixListener listener;
    EXPECT_EQ(listener.Open(m_folder.Path("none/tty_socket_50"), 0660, std::nullopt),
              "No such file or directory");
    EXPECT_EQ(listener.Descriptor(), -1);
}
