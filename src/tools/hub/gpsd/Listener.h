// Listens on a TCP port and takes in whoever connects.
#pragma once

#include "platform/Time.h"

#include <cstdint>
#include <string>

namespace Hub::GPSD {

/// To be served in the main loop. A port that cannot be had is tried again, and the operator told
/// why, once for each reason.
class CListener {
public:
    static constexpr Core::Time kRetry = Core::Time::FromMilliseconds(10'000);
    /// How long nobody is taken in when the process has no descriptors left.
    static constexpr Core::Time kRest = Core::Time::FromMilliseconds(1000);

    CListener() = default;
    ~CListener();
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;

    /// On an IPv4 address in numbers; port 0 lets the system choose.
    void Start(const std::string& address, std::uint16_t port);
    /// To be called once a pass.
    void TryAgain();

    bool IsListening() const { return m_descriptor >= 0; }
    /// The port that it listens on; 0 when it does not.
    std::uint16_t Port() const;
    /// -1 while nobody would be taken in.
    int Descriptor() const;
    /// The next connection, non-blocking and fit for select(); -1 when there is none. A connection
    /// that does not fit is closed.
    int Accept();

private:
    void TryToListen();

    std::string m_address;
    std::uint16_t m_port = 0;
    std::string m_toldReason;
    int m_descriptor = -1;
    bool m_hasStarted = false;
    Core::MonotonicTime m_nextAttempt;
    Core::MonotonicTime m_acceptAgain;
};

} // namespace Hub::GPSD
