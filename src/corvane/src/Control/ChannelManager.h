// Switches a range of receiver channels between tracking and idle, for the reference bandwidth.
#pragma once

#include "platform/Time.h"

#include <cstdint>
#include <vector>

class CCommandManager;

/// Keeps as many of its channels tracking as it is told to, the first ones.
class ChannelManager {
public:
    /// Not more than one change in this time.
    static constexpr Core::Time kChangeInterval = Core::Time::FromMilliseconds(5000);

    /// Manages the receiver's channels `first` to `last`, all of them tracking; none unless `last`
    /// is greater than `first`. The command manager is not owned.
    ChannelManager(CCommandManager* commands, std::int32_t first, std::int32_t last);
    virtual ~ChannelManager() = default;

    /// Leaves `count` channels tracking. `total` is how many channels the receiver has: while that
    /// is more than `count` every channel is assigned anew. False when nothing was done, for the
    /// last change is too near or `count` are tracking already.
    virtual bool Limit(Core::MonotonicTime now, std::int32_t count, std::int32_t total);
    virtual std::int32_t ActiveCount() const { return m_activeCount; }

protected:
    virtual void AssignAll(std::int32_t count);
    virtual void AssignChanged(std::int32_t count);
    virtual void UpdateChannel(std::int32_t index, std::int32_t count);
    virtual void SendAssign(std::int32_t channel, bool track);
    /// The receiver's number of a managed channel, from index 0; always one of the range.
    virtual std::int32_t ChannelNumber(std::int32_t index) const;

private:
    std::int32_t ManagedCount() const { return static_cast<std::int32_t>(m_isTracking.size()); }

    CCommandManager* m_commands;
    std::int32_t m_first;
    std::int32_t m_last;
    std::int32_t m_activeCount = 0;
    std::vector<bool> m_isTracking;
    Core::MonotonicTime m_nextChange;
};
