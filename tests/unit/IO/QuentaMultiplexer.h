// A port multiplexer that a test plays: its sockets in a folder of their own, its clocks, its
// trace.
#pragma once

#include "Clock.h"
#include "IO/QuentaPort.h"
#include "TraceOutputs.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

/// The sockets of one multiplexer. All its waiting is done by the kernel's queues: what a client
/// has connected or written before is there when it is looked for.
class CTestMultiplexer {
public:
    /// Not in a folder of the environment's: the path of a socket must be short.
    CTestMultiplexer() {
        std::string folder = "/tmp/quentaXXXXXX";
        if (mkdtemp(folder.data()) != nullptr) {
            m_folder = folder;
        }
    }
    ~CTestMultiplexer() {
        Die();
        std::filesystem::remove_all(m_folder);
    }
    CTestMultiplexer(const CTestMultiplexer&) = delete;
    CTestMultiplexer& operator=(const CTestMultiplexer&) = delete;

    std::string SocketPrefix() const { return m_folder + "/port_"; }

    /// Serves a port from now on.
    void Serve(std::int32_t port, int backlog = 8) {
        ServePath(SocketPrefix() + std::to_string(port), backlog);
    }

    void ServePath(const std::string& path, int backlog = 8) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const auto* generic = reinterpret_cast<const sockaddr*>(&address);
        ASSERT_EQ(bind(m_listener, generic, sizeof address), 0);
        ASSERT_EQ(listen(m_listener, backlog), 0);
        m_path = path;
    }

    /// Lets the next client in; false when none has connected.
    bool Accept() {
        CloseClient();
        m_client = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        return m_client >= 0;
    }

    void Send(std::string_view bytes) const {
        ASSERT_EQ(send(m_client, bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
    }

    /// What the client has written, up to 1 MiB of it.
    std::string Receive() const {
        std::string bytes(1024 * 1024, '\0');
        const ssize_t count = recv(m_client, bytes.data(), bytes.size(), 0);
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

    void CloseClient() { CloseOne(m_client); }

    void Die() {
        CloseClient();
        CloseOne(m_listener);
        unlink(m_path.c_str());
    }

private:
    static void CloseOne(int& descriptor) {
        if (descriptor >= 0) {
            close(descriptor);
        }
        descriptor = -1;
    }

    std::string m_folder;
    std::string m_path;
    int m_listener = -1;
    int m_client = -1;
};

/// With a multiplexer, sleeps that are counted and not slept, and a clock that can be put forward.
class CQuentaTest : public testing::Test {
protected:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        s_slept.clear();
        unsetenv("CORVANE_TRACE");
        CTraceOutputs::Restart(); // no line counts as a repetition of another test's
        Core::ClockHooks().monotonic = [] { return RealTime() + s_passed; };
        Core::ClockHooks().sleep = [](Core::Time span) { s_slept.push_back(span.AsSeconds()); };
    }
    void TearDown() override { Core::ClockHooks() = Core::SClockHooks(); }

    static void PassTime(std::int64_t milliseconds) {
        s_passed = s_passed + Core::Time::FromMilliseconds(milliseconds);
    }

    /// What is printed to standard error while `action` runs.
    template <typename F>
    static std::string Trace(F action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }

    static inline std::vector<double> s_slept;
    CTestMultiplexer m_multiplexer;

private:
    static Core::Time RealTime() {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return Core::Time::FromNanoseconds(std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec);
    }

    static inline Core::Time s_passed;
};
