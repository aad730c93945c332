// The one connection of a process to the services: connecting, sending, reading, all without
// waiting.
#pragma once

#include "LinkQueue.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/// Every named client of the process publishes through this. Used by the clients' implementations
/// and, as a SocketC, by the main loop.
class CHubLink : public SocketC {
public:
    /// A hub that is not there is tried again so long after the last attempt.
    static constexpr Core::Time kRetryInterval = Core::Time::FromMilliseconds(1000);
    /// In an offline run, how long the outcome of the first connect is waited for.
    static constexpr Core::Time kFirstConnectLimit = Core::Time::FromMilliseconds(1000);
    /// In an offline run, a hub that takes nothing for so long is gone, and not waited for again.
    static constexpr Core::Time kStallLimit = Core::Time::FromMilliseconds(10'000);
    static constexpr Core::Time kFinishLimit = Core::Time::FromMilliseconds(2000);
    static constexpr Core::Time kActivityInterval = Core::Time::FromMilliseconds(1000);
    /// The longest line that is read.
    static constexpr std::size_t kMaxLine = std::size_t{1024} * 1024;

    /// The link of this process, to the services' port. It lives as long as the process.
    static CHubLink& Get();
    /// Whether this process has ever asked for it: one that publishes nothing connects to nobody.
    static bool IsInUse() { return s_isInUse; }

    explicit CHubLink(int port) : m_port(port) {}
    ~CHubLink() override;
    CHubLink(const CHubLink&) = delete;
    CHubLink& operator=(const CHubLink&) = delete;

    void SetProgram(const std::string& program) { m_program = program; }

    /// Registers a client's name.
    void AddName(const std::string& name);
    /// A state of the clients, see CLinkQueue::State.
    CLinkQueue::SState& State(const std::string& key, const char* method,
                              const std::string& members);
    /// Publishes a state with a new text, or as its message stands, with the time now.
    void Publish(CLinkQueue::SState& state, std::string text);
    void Publish(CLinkQueue::SState& state);
    /// Publishes a line or an event; its time is set to now unless it has one.
    void Publish(SLinkMessage message, CLinkQueue::EPriority priority);

    /// `report` is called once a second while connected; `owner` names it for removal.
    void AddActivity(const void* owner, std::function<void()> report);
    void RemoveActivity(const void* owner);

    /// Makes the category so, now or when a hub comes.
    void WishCategory(const std::string& category, bool enabled);

    void BeginOfflineRun();
    void Finish();
    /// Waits for `span` and serves the connection meanwhile.
    void Wait(Core::Time span);
    bool IsConnected() const { return m_state == EConnection::connected; }
    /// Whether anybody sees each message; without, only the last of a state is ever seen.
    bool IsHeard() const { return IsConnected() || m_tap != nullptr; }

    int Descriptor() const override { return m_descriptor; }
    bool WantsToWrite() const override;
    void Service(bool readable, bool writable) override;
    void EndPass() override;

    /// Sees every message as it is published; for tests.
    void SetTap(std::function<void(const SLinkMessage&)> tap) { m_tap = std::move(tap); }

private:
    enum class EConnection { none, connecting, connected };
    struct SWish {
        bool enabled = false;
        int pendingId = 0; ///< of the request whose answer is awaited
        bool isSetting = false;
    };

    void StartConnecting();
    void FinishConnecting();
    void BecomeConnected();
    void Disconnect();
    bool HasPeerClosed() const;
    void Write();
    void Read();
    void HandleLine(const std::string& line);
    void AskCategory(const std::string& category, SWish& wish, bool set);
    void RunTimers();
    void PublishDropped();
    void WaitForRoom(const SLinkMessage& message);
    bool Poll(Core::Time limit);

    static inline bool s_isInUse = false;

    int m_port;
    std::string m_program = "corvane";
    int m_descriptor = -1;
    EConnection m_state = EConnection::none;
    Core::MonotonicTime m_nextAttempt;
    Core::MonotonicTime m_nextActivity;
    bool m_offline = false;

    CLinkQueue m_queue;
    std::string m_out;         ///< taken from the queue, not yet sent
    std::size_t m_outSent = 0; ///< of which so much has left
    std::uint64_t m_sentInAll = 0;
    std::string m_in;
    std::uint64_t m_toldDropped = 0;

    std::map<std::string, SWish> m_wishes;
    int m_lastId = 0;
    std::vector<std::pair<const void*, std::function<void()>>> m_activities;
    std::function<void(const SLinkMessage&)> m_tap;
};
