// A remembered value of a typed client, written as JSON only when somebody takes it.
#pragma once

#include "HubLink.h"

#include <string>

/// `TValue` is what was said last; `Write` appends it to the members of the message. All clients of
/// a name share the state of a method: the last word counts, whoever said it.
template <class TValue>
class CTypedState : private ILateMembers {
public:
    using Writer = void (*)(std::string& members, const TValue& value);

    CTypedState(const char* clientName, const char* method, Writer write)
        : m_method(method), m_write(write) {
        AppendMember(m_nameMember, "name", std::string(clientName));
    }
    ~CTypedState() override {
        if (m_state != nullptr && m_state->lateMembers == this) {
            m_state->WriteLateMembers();
            m_state->lateMembers = nullptr;
        }
    }
    CTypedState(const CTypedState&) = delete;
    CTypedState& operator=(const CTypedState&) = delete;

    void Publish(const TValue& value) {
        m_value = value;
        CHubLink& link = CHubLink::Get();
        if (m_state == nullptr) {
            m_state = &link.State(m_method + m_nameMember, m_method, std::string());
        }
        m_state->lateMembers = this;
        link.Publish(*m_state);
    }

private:
    void Append(std::string& members) const override {
        members += m_nameMember;
        m_write(members, m_value);
    }

    const char* m_method;
    Writer m_write;
    std::string m_nameMember;
    TValue m_value{};
    CLinkQueue::SState* m_state = nullptr;
};
