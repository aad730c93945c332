#include "platform/RemoteLogger.h"

#include "HubLink.h"

#include <unordered_map>
#include <utility>

class CRemoteLogger::Impl {
public:
    explicit Impl(const std::string& name) : m_link(CHubLink::Get()) {
        m_link.AddName(name);
        AppendMember(m_nameMember, "name", name);
    }

    /// The member that begins every message's params, as JSON.
    const std::string& NameMember() const { return m_nameMember; }
    CHubLink& Link() { return m_link; }

    /// A status is published thousands of times a second when a capture is read: found by its key
    /// alone once the link knows it.
    CLinkQueue::SState& Status(ELevel level, const std::string& key) {
        CLinkQueue::SState*& state = m_states[static_cast<int>(level)][key];
        if (state == nullptr) {
            std::string members = m_nameMember;
            AppendMember(members, "level",
                         std::string(level == ELevel::essential ? "essential" : "info"));
            AppendMember(members, "key", key);
            state = &m_link.State("status " + members, "logger.status", members);
        }
        return *state;
    }

private:
    std::string m_nameMember;
    CHubLink& m_link;
    std::unordered_map<std::string, CLinkQueue::SState*> m_states[2];
};

CRemoteLogger::CRemoteLogger(const std::string& name) : m_impl(std::make_unique<Impl>(name)) {
}

CRemoteLogger::~CRemoteLogger() = default;

bool CRemoteLogger::IsHeard() const {
    return m_impl->Link().IsHeard();
}

void CRemoteLogger::PublishStatus(ELevel level, const std::string& key, std::string value) {
    m_impl->Link().Publish(m_impl->Status(level, key), std::move(value));
}

void CRemoteLogger::PublishData(const std::string& key, double time, std::string value) {
    SLinkMessage message;
    message.method = "logger.data";
    message.members = m_impl->NameMember();
    AppendMember(message.members, "key", key);
    message.textKind = SLinkMessage::EText::value;
    message.text = std::move(value);
    message.time = time;
    m_impl->Link().Publish(std::move(message), CLinkQueue::EPriority::line);
}

void CRemoteLogger::PublishEvent(ESeverity severity, std::string text) {
    SLinkMessage message;
    message.method = "logger.event";
    message.members = m_impl->NameMember();
    AppendMember(message.members, "level",
                 std::string(severity == ESeverity::warning ? "warning" : "error"));
    AppendMember(message.members, "text", text);
    m_impl->Link().Publish(std::move(message), CLinkQueue::EPriority::event);
}

void CRemoteLogger::LogRaw(const std::string& name, std::string bytes) {
    SLinkMessage message;
    message.method = "logger.raw";
    AppendMember(message.members, "name", name);
    message.textKind = SLinkMessage::EText::base64;
    message.text = std::move(bytes);
    m_impl->Link().Publish(std::move(message), CLinkQueue::EPriority::line);
}
