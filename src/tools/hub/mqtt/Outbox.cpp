#include "hub/mqtt/Outbox.h"

#include <algorithm>
#include <utility>

namespace Hub {

void COutbox::SetState(const std::string& topic, const std::string& payload) {
    const std::lock_guard lock(m_mutex);
    if (SState* const state = Keep(topic, payload, 0)) {
        Wait(topic, *state);
    }
}

void COutbox::QueueEvent(const std::string& topic, const std::string& payload) {
    const std::lock_guard lock(m_mutex);
    Queue({{topic, payload, 1, false}, true});
}

void COutbox::QueueState(const std::string& topic, const std::string& payload) {
    const std::lock_guard lock(m_mutex);
    Keep(topic, payload, 1);
    Queue({{topic, payload, 1, true}, false});
}

std::optional<SPublication> COutbox::Take() {
    const std::lock_guard lock(m_mutex);
    if (!m_queue.empty()) {
        SPublication next = std::move(m_queue.front().publication);
        m_queue.pop_front();
        return next;
    }
    if (m_waiting.empty()) {
        return std::nullopt;
    }
    const std::string topic = std::move(m_waiting.front());
    m_waiting.pop_front();
    SState& state = m_states.at(topic);
    state.isWaiting = false;
    return SPublication{topic, state.payload, state.qos, true};
}

void COutbox::RepeatStates() {
    const std::lock_guard lock(m_mutex);
    for (auto& [topic, state] : m_states) {
        Wait(topic, state);
    }
}

bool COutbox::IsEmpty() const {
    const std::lock_guard lock(m_mutex);
    return m_queue.empty() && m_waiting.empty();
}

std::uint64_t COutbox::TakeLost() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_lost, 0);
}

/// Null when there are too many.
COutbox::SState* COutbox::Keep(const std::string& topic, const std::string& payload, int qos) {
    auto state = m_states.find(topic);
    if (state == m_states.end()) {
        if (m_states.size() >= kMostStates) {
            return nullptr;
        }
        state = m_states.try_emplace(topic).first;
    }
    state->second.payload = payload;
    state->second.qos = qos;
    return &state->second;
}

void COutbox::Wait(const std::string& topic, SState& state) {
    if (!state.isWaiting) {
        state.isWaiting = true;
        m_waiting.push_back(topic);
    }
}

void COutbox::Queue(SQueued queued) {
    if (m_queue.size() >= kMostQueued) {
        const auto oldestEvent = std::find_if(m_queue.begin(), m_queue.end(),
                                              [](const SQueued& each) { return each.isEvent; });
        m_queue.erase(oldestEvent == m_queue.end() ? m_queue.begin() : oldestEvent);
        ++m_lost;
    }
    m_queue.push_back(std::move(queued));
}

} // namespace Hub
