// One receiver port as a device that other programs open: a pseudo-terminal with a stable name.
#pragma once

#include "LogEncoder.h"

#include <cstdint>
#include <string>

namespace Sim {

/// Never blocks. What is said while nobody has the device open is gone, as on a line without a
/// listener.
class CPortLink {
public:
    CPortLink() = default;
    ~CPortLink();
    CPortLink(const CPortLink&) = delete;
    CPortLink& operator=(const CPortLink&) = delete;

    /// Makes the device, at first with this speed, and the symbolic link to it; a link that is
    /// there already is replaced. Why it failed; empty when it did not.
    std::string Open(const std::string& link, std::uint32_t baud);

    int Descriptor() const { return m_master; }

    /// Looks whether somebody has the device open. What one who has left did not read is gone.
    bool LookForPeer();
    bool HasPeer() const { return m_hasPeer; }
    /// As the other end has set it.
    std::uint32_t Speed() const;

    /// What has arrived; empty when nothing has.
    std::string Read();
    /// False when the device is full: then nothing of these bytes is taken.
    bool Write(const Bytes& bytes);
    /// Whether a part of what was taken has not left yet, and tries again.
    bool HasUnsent() const { return !m_unsent.empty(); }
    void ContinueWriting();

private:
    std::string MakeDevice(std::uint32_t baud);
    std::string MakeLink(const std::string& link);
    void DropUnread();

    int m_master = -1;
    std::string m_device;
    std::string m_link; ///< empty until it is made
    Bytes m_unsent;
    bool m_hasPeer = false;
};

} // namespace Sim
