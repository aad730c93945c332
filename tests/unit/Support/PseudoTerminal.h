// The far end of a serial line: a pseudo-terminal, of which the code under test opens the device.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <termios.h>
#include <unistd.h>

class CPseudoTerminal {
public:
    CPseudoTerminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        char name[64];
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
            ::ptsname_r(m_master, name, sizeof name) != 0) {
            std::abort();
        }
        m_device = name;
    }
    ~CPseudoTerminal() { HangUp(); }
    CPseudoTerminal(const CPseudoTerminal&) = delete;
    CPseudoTerminal& operator=(const CPseudoTerminal&) = delete;

    const std::string& Device() const { return m_device; }
    int Descriptor() const { return m_master; }

    /// False when not everything could be sent.
    bool Send(const std::string& bytes) {
        return ::write(m_master, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }

    /// What comes, up to `count` bytes; fewer when nothing more has come for ten seconds.
    std::string Receive(std::size_t count) {
        std::string received;
        while (received.size() < count && HasBytes(10'000)) {
            char bytes[4096];
            const ssize_t result =
                ::read(m_master, bytes, std::min(sizeof bytes, count - received.size()));
            if (result <= 0) {
                break;
            }
            received.append(bytes, static_cast<std::size_t>(result));
        }
        return received;
    }

    bool HasBytes(int milliseconds) {
        pollfd watched{m_master, POLLIN, 0};
        return ::poll(&watched, 1, milliseconds) == 1 && (watched.revents & POLLIN) != 0;
    }

    void HangUp() {
        if (m_master >= 0) {
            ::close(m_master);
            m_master = -1;
        }
    }

    /// The settings that the device has.
    termios Settings() const {
        termios settings{};
        ::tcgetattr(m_master, &settings);
        return settings;
    }
    void SetSettings(const termios& settings) { ::tcsetattr(m_master, TCSANOW, &settings); }

private:
    int m_master;
    std::string m_device;
};
