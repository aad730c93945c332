// What waits for the services: state, of which only the last matters, and lines, which all do.
#pragma once

#include "LinkMessage.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// The members of a state that are written only when its message is wanted.
class ILateMembers {
public:
    /// Appends the members, as JSON.
    virtual void Append(std::string& members) const = 0;

protected:
    virtual ~ILateMembers() = default;
};

/// The order and the bounds of everything that is published. Knows no socket: the link says whether
/// it is connected and takes what is to be sent.
class CLinkQueue {
public:
    /// At most so much waits, estimated as the length of the lines to come. State that no newer
    /// one replaces may pass it: there is one of each key.
    static constexpr std::size_t kCapacity = std::size_t{1024} * 1024;

    enum class EPriority {
        line,      ///< waits for a connection; the oldest is dropped first when there are too many
        event,     ///< the same, but dropped only when no line is left to drop
        transient, ///< about this connection, or this moment: gone with it
    };

    struct SWaiting;

    /// One remembered value.
    struct SState {
        SLinkMessage message;
        SWaiting* waiting = nullptr; ///< its newest message that has not been taken
        /// Knows the members where they change with every publication; null where they stand in
        /// `message`. While nobody listens nothing is written for nobody.
        const ILateMembers* lateMembers = nullptr;

        void WriteLateMembers();
    };

    /// A name is registered once a connection, whoever uses it.
    void AddName(const std::string& name, SLinkMessage registration);

    /// The state of this key, made with `method` and `members` when it is new. It stays where it is
    /// as long as the queue lives.
    SState& State(const std::string& key, const char* method, const std::string& members);
    /// Publishes the state as its message now stands.
    void Publish(SState& state);

    void Add(SLinkMessage message, EPriority priority);

    /// The connection is there: the names, then the lines that waited, then all remembered state.
    void Connected();
    /// The connection is gone: what was not wholly sent waits again, state is only remembered.
    void Disconnected();

    bool IsEmpty() const { return m_takenBytes == m_leftBytes && !HasSomethingToTake(); }
    /// Whether a message fits without one being replaced or dropped for it.
    bool HasRoomFor(const SLinkMessage& message) const;

    /// Appends what leaves next to `out`, message by message, until at least `size` bytes were
    /// added or nothing waits.
    void Take(std::string& out, std::size_t size);
    /// Of all that was taken, `bytes` more have left.
    void Left(std::size_t bytes);

    /// Lines and events dropped since the start.
    std::uint64_t Dropped() const { return m_dropped; }

    struct SWaiting {
        SLinkMessage message;
        std::uint64_t sequence = 0;
        std::size_t size = 0;
        EPriority priority = EPriority::line;
        SState* state = nullptr; ///< null for what is no state
    };

private:
    struct SInFlight {
        SWaiting waiting;
        std::size_t endOffset = 0; ///< counted from the first byte taken on this connection
    };
    using Queue = std::deque<SWaiting>;

    bool HasSomethingToTake() const;
    Queue* OldestQueue();
    SWaiting& Push(Queue& queue, const SLinkMessage& message);
    void MakeRoom();
    void ReturnInFlight();
    void DropTransients(Queue& queue);

    std::vector<SLinkMessage> m_names;
    std::unordered_set<std::string> m_knownNames;
    std::deque<SState> m_states;
    std::unordered_map<std::string, SState*> m_statesByKey;

    Queue m_namesToSend;
    Queue m_lines;
    Queue m_events; ///< and transients
    Queue m_stateMessages;
    std::size_t m_waitingBytes = 0;
    std::uint64_t m_sequence = 0;
    std::uint64_t m_dropped = 0;
    bool m_connected = false;

    std::deque<SInFlight> m_inFlight;
    std::size_t m_takenBytes = 0;
    std::size_t m_leftBytes = 0;
};
