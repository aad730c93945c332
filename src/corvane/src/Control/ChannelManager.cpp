#include "Control/ChannelManager.h"

#include "Control/CommandManager.h"

#include <algorithm>
#include <string>

ChannelManager::ChannelManager(CCommandManager* commands, std::int32_t first, std::int32_t last)
    : m_commands(commands), m_first(first), m_last(last) {
    if (last > first) {
        m_isTracking.assign(static_cast<std::size_t>(std::int64_t{last} + 1 - first), true);
        m_activeCount = ManagedCount();
    }
}

bool ChannelManager::Limit(Core::MonotonicTime now, std::int32_t count, std::int32_t total) {
    if (now < m_nextChange) {
        return false;
    }
    if (total > count) {
        AssignAll(count);
    } else if (m_activeCount != count) {
        AssignChanged(count);
    } else {
        return false;
    }
    m_nextChange = now + kChangeInterval;
    return true;
}

void ChannelManager::AssignAll(std::int32_t count) {
    for (std::int32_t i = 0; i < ManagedCount(); ++i) {
        const bool track = count > i;
        SendAssign(ChannelNumber(i), track);
        m_isTracking[static_cast<std::size_t>(i)] = track;
    }
    m_activeCount = count;
}

void ChannelManager::AssignChanged(std::int32_t count) {
    for (std::int32_t i = 0; i < ManagedCount(); ++i) {
        UpdateChannel(i, count);
    }
    m_activeCount = count;
}

void ChannelManager::UpdateChannel(std::int32_t index, std::int32_t count) {
    const bool track = index < count;
    if (track != m_isTracking[static_cast<std::size_t>(index)]) {
        SendAssign(ChannelNumber(index), track);
        m_isTracking[static_cast<std::size_t>(index)] = track;
    }
}

/// Ends in a line feed alone, unlike every other command; the receiver takes both.
void ChannelManager::SendAssign(std::int32_t channel, bool track) {
    m_commands->SendCommand("assign " + std::to_string(channel) + (track ? " auto" : " idle") +
                            "\n");
}

std::int32_t ChannelManager::ChannelNumber(std::int32_t index) const {
    return std::max(std::min(index + m_first, m_last), m_first);
}
