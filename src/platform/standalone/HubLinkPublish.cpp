// The half of the link that its clients see: publishing, categories, activity.

#include "HubLink.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

#include <unistd.h>

void CHubLink::AddName(const std::string& name) {
    SLinkMessage registration;
    registration.method = "logger.register";
    AppendMember(registration.members, "name", name);
    AppendMember(registration.members, "process", m_program);
    AppendMember(registration.members, "pid", static_cast<long long>(getpid()));
    AppendMember(registration.members, "version", std::string(CORVANE_VERSION));
    registration.time = Core::UnixTime::Now().AsSeconds();
    if (m_tap) {
        m_tap(registration);
    }
    m_queue.AddName(name, std::move(registration));
}

CLinkQueue::SState& CHubLink::State(const std::string& key, const char* method,
                                    const std::string& members) {
    return m_queue.State(key, method, members);
}

void CHubLink::Publish(CLinkQueue::SState& state, std::string text) {
    state.message.textKind = SLinkMessage::EText::value;
    state.message.text = std::move(text);
    Publish(state);
}

void CHubLink::Publish(CLinkQueue::SState& state) {
    state.message.time = Core::UnixTime::Now().AsSeconds();
    if (IsHeard()) {
        state.WriteLateMembers();
    }
    if (m_tap) {
        m_tap(state.message);
    }
    WaitForRoom(state.message);
    m_queue.Publish(state);
}

void CHubLink::Publish(SLinkMessage message, CLinkQueue::EPriority priority) {
    if (message.time == 0.0) {
        message.time = Core::UnixTime::Now().AsSeconds();
    }
    if (m_tap) {
        m_tap(message);
    }
    WaitForRoom(message);
    m_queue.Add(std::move(message), priority);
}

/// Offline, the run waits for its hub: nothing may be replaced or dropped.
void CHubLink::WaitForRoom(const SLinkMessage& message) {
    if (!m_offline || m_state != EConnection::connected || m_queue.HasRoomFor(message)) {
        return;
    }
    Core::MonotonicTime stalled = Core::MonotonicTime::Now() + kStallLimit;
    std::uint64_t sent = m_sentInAll;
    while (m_state == EConnection::connected && !m_queue.IsEmpty() &&
           !m_queue.HasRoomFor(message)) {
        const Core::MonotonicTime now = Core::MonotonicTime::Now();
        if (m_sentInAll != sent) {
            sent = m_sentInAll;
            stalled = now + kStallLimit;
        } else if (now >= stalled) {
            // A hub that hangs may well accept again: the run does not wait for it twice.
            m_offline = false;
            Disconnect();
            return;
        }
        Poll(stalled - now);
    }
}

void CHubLink::AddActivity(const void* owner, std::function<void()> report) {
    m_activities.emplace_back(owner, std::move(report));
}

void CHubLink::RemoveActivity(const void* owner) {
    std::erase_if(m_activities, [owner](const auto& activity) { return activity.first == owner; });
}

void CHubLink::PublishDropped() {
    if (m_queue.Dropped() == m_toldDropped) {
        return;
    }
    static const std::string kName = "PlatformLink";
    SLinkMessage probe;
    if (!m_queue.HasRoomFor(probe)) {
        return;
    }
    AddName(kName);
    m_toldDropped = m_queue.Dropped();
    std::string members;
    AppendMember(members, "name", kName);
    AppendMember(members, "level", std::string("info"));
    AppendMember(members, "key", std::string("dropped_messages"));
    Publish(State("PlatformLink dropped_messages", "logger.status", members),
            std::to_string(m_toldDropped));
}

void CHubLink::WishCategory(const std::string& category, bool enabled) {
    SWish& wish = m_wishes[category];
    wish.enabled = enabled;
    if (m_state == EConnection::connected) {
        AskCategory(category, wish, false);
    }
}

void CHubLink::AskCategory(const std::string& category, SWish& wish, bool set) {
    SLinkMessage request;
    request.method = set ? "logger.setCategory" : "logger.getCategory";
    AppendMember(request.members, "category", category);
    if (set) {
        request.members += wish.enabled ? R"(,"enabled":true)" : R"(,"enabled":false)";
    }
    request.id = ++m_lastId;
    wish.pendingId = request.id;
    wish.isSetting = set;
    Publish(std::move(request), CLinkQueue::EPriority::transient);
}

/// Only the answers to the category requests mean anything here; all else is passed over.
void CHubLink::HandleLine(const std::string& line) {
    const nlohmann::json message = nlohmann::json::parse(line, nullptr, false);
    if (!message.is_object() || !message.contains("id") || !message["id"].is_number_integer()) {
        return;
    }
    const auto wish = std::find_if(m_wishes.begin(), m_wishes.end(), [&message](const auto& entry) {
        return entry.second.pendingId != 0 && message["id"] == entry.second.pendingId;
    });
    if (wish == m_wishes.end()) {
        return;
    }
    const auto result = message.find("result");
    if (result == message.end() || !result->is_object() || !result->contains("enabled")) {
        m_wishes.erase(wish);
        return;
    }
    const auto& enabled = (*result)["enabled"];
    const bool isEnabled = enabled.is_boolean()          ? enabled.get<bool>()
                           : enabled.is_number_integer() ? enabled != 0
                                                         : !wish->second.enabled;
    if (isEnabled == wish->second.enabled || wish->second.isSetting) {
        m_wishes.erase(wish);
    } else {
        AskCategory(wish->first, wish->second, true);
    }
}
