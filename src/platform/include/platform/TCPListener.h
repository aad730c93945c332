// A listening TCP port of the main loop: keeps trying to have it, and takes in whoever connects.
#pragma once

#include "platform/Time.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Core::IO {

/// Nothing in it waits.
class TCPListener {
public:
    static constexpr Time kRetry = Time::FromMilliseconds(10'000);
    /// How long nobody is taken in when the process has no descriptors left.
    static constexpr Time kRest = Time::FromMilliseconds(1000);

    TCPListener() = default;
    ~TCPListener();
    TCPListener(const TCPListener&) = delete;
    TCPListener& operator=(const TCPListener&) = delete;

    /// Listens on an IPv4 address in numbers; port 0 lets the system choose. When that cannot be
    /// done now it is tried again every kRetry, and `report` is told why, once for each reason.
    /// Returns whether it listens.
    bool Start(const std::string& address, std::uint16_t port, int backlog,
               std::function<void(const std::string&)> report);
    /// To be called once a pass.
    void TryAgain();

    bool IsListening() const { return m_descriptor >= 0; }
    /// The port that it listens on; 0 when it does not.
    std::uint16_t Port() const;
    /// -1 while nobody would be taken in.
    int Descriptor() const;
    /// The next connection, non-blocking, fit for select(), sending at once and watched by
    /// keepalive; -1 when there is none now.
    int Accept();

private:
    bool TryToListen();

    std::string m_address;
    std::uint16_t m_port = 0;
    int m_backlog = 0;
    std::function<void(const std::string&)> m_report;
    std::string m_toldReason;
    int m_descriptor = -1;
    bool m_hasStarted = false;
    MonotonicTime m_nextAttempt;
    MonotonicTime m_acceptAgain;
};

} // namespace Core::IO
