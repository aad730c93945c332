#include "LinkQueue.h"

#include <utility>

void CLinkQueue::SState::WriteLateMembers() {
    if (lateMembers != nullptr) {
        message.members.clear();
        lateMembers->Append(message.members);
    }
}

void CLinkQueue::AddName(const std::string& name, SLinkMessage registration) {
    if (!m_knownNames.insert(name).second) {
        return;
    }
    if (m_connected) {
        Push(m_namesToSend, registration);
    }
    m_names.push_back(std::move(registration));
}

CLinkQueue::SState& CLinkQueue::State(const std::string& key, const char* method,
                                      const std::string& members) {
    SState*& state = m_statesByKey[key];
    if (state == nullptr) {
        state = &m_states.emplace_back();
        state->message.method = method;
        state->message.members = members;
    }
    return *state;
}

void CLinkQueue::Publish(SState& state) {
    if (!m_connected) {
        return;
    }
    if (state.waiting != nullptr && !HasRoomFor(state.message)) {
        SWaiting& waiting = *state.waiting;
        m_waitingBytes -= waiting.size;
        waiting.message = state.message;
        waiting.size = state.message.EstimatedSize();
        m_waitingBytes += waiting.size;
    } else {
        SWaiting& waiting = Push(m_stateMessages, state.message);
        waiting.state = &state;
        state.waiting = &waiting;
    }
    MakeRoom();
}

void CLinkQueue::Add(SLinkMessage message, EPriority priority) {
    if (priority == EPriority::transient && !m_connected) {
        return;
    }
    const std::size_t size = message.EstimatedSize();
    Queue& queue = priority == EPriority::line ? m_lines : m_events;
    queue.push_back({std::move(message), m_sequence++, size, priority, nullptr});
    m_waitingBytes += size;
    MakeRoom();
}

void CLinkQueue::Connected() {
    m_connected = true;
    m_takenBytes = 0;
    m_leftBytes = 0;
    for (const SLinkMessage& name : m_names) {
        Push(m_namesToSend, name);
    }
    for (SState& state : m_states) {
        state.WriteLateMembers();
        SWaiting& waiting = Push(m_stateMessages, state.message);
        waiting.state = &state;
        state.waiting = &waiting;
    }
}

void CLinkQueue::Disconnected() {
    m_connected = false;
    ReturnInFlight();
    for (Queue* queue : {&m_namesToSend, &m_stateMessages}) {
        for (const SWaiting& waiting : *queue) {
            m_waitingBytes -= waiting.size;
        }
        queue->clear();
    }
    for (SState& state : m_states) {
        state.waiting = nullptr;
    }
    DropTransients(m_events);
    m_takenBytes = 0;
    m_leftBytes = 0;
    MakeRoom();
}

bool CLinkQueue::HasRoomFor(const SLinkMessage& message) const {
    return m_waitingBytes + message.EstimatedSize() <= kCapacity;
}

void CLinkQueue::Take(std::string& out, std::size_t size) {
    const std::size_t start = out.size();
    while (out.size() - start < size) {
        Queue* queue = OldestQueue();
        if (queue == nullptr) {
            break;
        }
        const std::size_t before = out.size();
        SWaiting waiting = std::move(queue->front());
        if (waiting.state != nullptr && waiting.state->waiting == &queue->front()) {
            waiting.state->waiting = nullptr;
        }
        queue->pop_front();
        waiting.message.AppendTo(out);
        m_takenBytes += out.size() - before;
        m_inFlight.push_back({std::move(waiting), m_takenBytes});
    }
}

void CLinkQueue::Left(std::size_t bytes) {
    m_leftBytes += bytes;
    while (!m_inFlight.empty() && m_inFlight.front().endOffset <= m_leftBytes) {
        m_waitingBytes -= m_inFlight.front().waiting.size;
        m_inFlight.pop_front();
    }
}

bool CLinkQueue::HasSomethingToTake() const {
    return m_connected && !(m_namesToSend.empty() && m_lines.empty() && m_events.empty() &&
                            m_stateMessages.empty());
}

/// Names go first, since everything else speaks of them; then all in the order of publication.
CLinkQueue::Queue* CLinkQueue::OldestQueue() {
    if (!m_namesToSend.empty()) {
        return &m_namesToSend;
    }
    Queue* oldest = nullptr;
    for (Queue* queue : {&m_lines, &m_events, &m_stateMessages}) {
        if (!queue->empty() &&
            (oldest == nullptr || queue->front().sequence < oldest->front().sequence)) {
            oldest = queue;
        }
    }
    return oldest;
}

CLinkQueue::SWaiting& CLinkQueue::Push(Queue& queue, const SLinkMessage& message) {
    const std::size_t size = message.EstimatedSize();
    m_waitingBytes += size;
    queue.push_back({message, m_sequence++, size, EPriority::transient, nullptr});
    return queue.back();
}

void CLinkQueue::MakeRoom() {
    while (m_waitingBytes > kCapacity && !(m_lines.empty() && m_events.empty())) {
        Queue& queue = m_lines.empty() ? m_events : m_lines;
        m_waitingBytes -= queue.front().size;
        queue.pop_front();
        ++m_dropped;
    }
}

void CLinkQueue::ReturnInFlight() {
    for (; !m_inFlight.empty(); m_inFlight.pop_back()) {
        SWaiting& waiting = m_inFlight.back().waiting;
        if (waiting.priority == EPriority::transient) {
            m_waitingBytes -= waiting.size;
        } else {
            Queue& queue = waiting.priority == EPriority::line ? m_lines : m_events;
            queue.push_front(std::move(waiting));
        }
    }
}

void CLinkQueue::DropTransients(Queue& queue) {
    for (const SWaiting& waiting : queue) {
        if (waiting.priority == EPriority::transient) {
            m_waitingBytes -= waiting.size;
        }
    }
    std::erase_if(queue,
                  [](const SWaiting& waiting) { return waiting.priority == EPriority::transient; });
}
