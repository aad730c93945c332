#include "platform/Diagnosticator.h"

#include "HubLink.h"

#include <utility>

namespace Diagnosticator {

class CDiagnosticatorAPI::Impl {
public:
    explicit Impl(const std::string& name) : m_name(name), m_link(CHubLink::Get()) {}
    ~Impl() { m_link.RemoveActivity(this); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Raised and cleared are two values of one state: only the last is told again.
    void Publish(const char* method, SDescriptor descriptor, const std::int32_t* value) {
        std::string members;
        AppendMember(members, "name", m_name);
        AppendMember(members, "code", static_cast<long long>(descriptor.code));
        AppendMember(members, "sub", static_cast<long long>(descriptor.sub));
        CLinkQueue::SState& state = m_link.State("diagnostic " + members, method, members);
        if (value != nullptr) {
            AppendMember(members, "value", static_cast<long long>(*value));
        }
        state.message.method = method;
        state.message.members = std::move(members);
        m_link.Publish(state);
    }

    void CountReceived() { ++m_received; }
    void CountSentence() { ++m_sentences; }

    void WatchActivity() {
        if (!m_isWatched) {
            m_isWatched = true;
            m_link.AddActivity(this, [this] { ReportActivity(); });
        }
    }

private:
    void ReportActivity() {
        SLinkMessage message;
        message.method = "diagnostics.activity";
        AppendMember(message.members, "name", m_name);
        AppendMember(message.members, "received", std::exchange(m_received, 0));
        AppendMember(message.members, "sentences", std::exchange(m_sentences, 0));
        m_link.Publish(std::move(message), CLinkQueue::EPriority::transient);
    }

    std::string m_name;
    CHubLink& m_link;
    bool m_isWatched = false;
    long long m_received = 0;
    long long m_sentences = 0;
};

CDiagnosticatorAPI::CDiagnosticatorAPI(const std::string& name)
    : m_impl(std::make_unique<Impl>(name)) {
}

CDiagnosticatorAPI::~CDiagnosticatorAPI() = default;

void CDiagnosticatorAPI::Raise(SDescriptor descriptor, std::int32_t value) {
    m_impl->Publish("diagnostics.raise", descriptor, &value);
}

void CDiagnosticatorAPI::Clear(SDescriptor descriptor) {
    m_impl->Publish("diagnostics.clear", descriptor, nullptr);
}

void CDiagnosticatorAPI::SignalReceivedData() {
    m_impl->CountReceived();
}

void CDiagnosticatorAPI::SignalActivity() {
    m_impl->CountSentence();
}

void CDiagnosticatorAPI::WatchActivity() {
    m_impl->WatchActivity();
}

} // namespace Diagnosticator
