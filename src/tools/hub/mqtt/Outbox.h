// What is to be told to the broker: states, of which the last one matters, and what must arrive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace Hub {

struct SPublication {
    std::string topic; ///< below that of the device
    std::string payload;
    int qos = 0;
    bool isRetained = false;
};

/// Filled by the main loop, emptied by the connection's thread. Never waits for the broker.
class COutbox {
public:
    static constexpr std::size_t kMostQueued = 1000;
    static constexpr std::size_t kMostStates = 6000;

    /// Retained. Replaces the state of that topic that was not taken yet. One too many is left out.
    void SetState(const std::string& topic, const std::string& payload);

    /// Kept until it can be taken; past the bound the oldest events go first.
    void QueueEvent(const std::string& topic, const std::string& payload);
    /// A change of a state, of which none may be missed; the last one is a state besides, which is
    /// told anew.
    void QueueState(const std::string& topic, const std::string& payload);

    /// What comes next: what is queued, then states.
    std::optional<SPublication> Take();
    /// The broker may have forgotten all states: each is to be taken again.
    void RepeatStates();
    bool IsEmpty() const;

    /// How many of what was queued have gone, since this was asked last.
    std::uint64_t TakeLost();

private:
    struct SState {
        std::string payload;
        int qos = 0;
        bool isWaiting = false;
    };
    struct SQueued {
        SPublication publication;
        bool isEvent = false;
    };

    SState* Keep(const std::string& topic, const std::string& payload, int qos);
    void Wait(const std::string& topic, SState& state);
    void Queue(SQueued queued);

    mutable std::mutex m_mutex;
    std::map<std::string, SState> m_states;
    std::deque<std::string> m_waiting; ///< topics of the states that are to be taken
    std::deque<SQueued> m_queue;
    std::uint64_t m_lost = 0;
};

} // namespace Hub
