// The connection to the MQTT broker, in a thread of its own.
#pragma once

#include "hub/mqtt/Access.h"
#include "hub/mqtt/Outbox.h"

#include <memory>

namespace Hub {

/// Publishes what is in the outbox, below "corvane/<device>/", whenever the broker is there. It
/// says itself whether the device is: "online" is 1 from each connect on, and 0 afterwards, by the
/// last will when there is no more time to say it.
class CMQTTConnection {
public:
    /// Begins to connect.
    CMQTTConnection(const SMQTTAccess& access, std::shared_ptr<COutbox> outbox);
    /// Publishes what waits, as far as a broker that is there takes it within two seconds.
    ~CMQTTConnection();
    CMQTTConnection(const CMQTTConnection&) = delete;
    CMQTTConnection& operator=(const CMQTTConnection&) = delete;

private:
    class CSession;
    std::shared_ptr<CSession> m_session; ///< the thread's as well, which may outlive this
};

} // namespace Hub
