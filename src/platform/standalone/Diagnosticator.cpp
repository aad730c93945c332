#include "platform/Diagnosticator.h"

#include "HubLink.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Diagnosticator {

class CDiagnosticatorAPI::Impl {
public:
    explicit Impl(const std::string& name) : m_name(name), m_link(CHubLink::Get()) {}
    ~Impl() { m_link.RemoveActivity(this); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void Raise(SDescriptor descriptor, std::int32_t value) {
        SDiagnostic& diagnostic = Find(descriptor);
        SLinkMessage& message = diagnostic.state->message;
        message.method = "diagnostics.raise";
        message.members = diagnostic.members;
        AppendMember(message.members, "value", static_cast<long long>(value));
        m_link.Publish(*diagnostic.state);
    }

    void Clear(SDescriptor descriptor) {
        SDiagnostic& diagnostic = Find(descriptor);
        diagnostic.state->message.method = kClear;
        diagnostic.state->message.members = diagnostic.members;
        m_link.Publish(*diagnostic.state);
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
    static constexpr char kClear[] = "diagnostics.clear";

    /// Raised and cleared are two values of one state: only the last is told again.
    struct SDiagnostic {
        SDescriptor descriptor;
        std::string members;
        CLinkQueue::SState* state;
    };

    /// An owner has a handful of diagnostics, and may call with each record.
    SDiagnostic& Find(SDescriptor descriptor) {
        const auto known = std::ranges::find(m_diagnostics, descriptor, &SDiagnostic::descriptor);
        if (known != m_diagnostics.end()) {
            return *known;
        }
        std::string members;
        AppendMember(members, "name", m_name);
        AppendMember(members, "code", static_cast<long long>(descriptor.code));
        AppendMember(members, "sub", static_cast<long long>(descriptor.sub));
        CLinkQueue::SState& state = m_link.State("diagnostic " + members, kClear, members);
        m_diagnostics.push_back({descriptor, std::move(members), &state});
        return m_diagnostics.back();
    }

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
    std::vector<SDiagnostic> m_diagnostics;
    bool m_isWatched = false;
    long long m_received = 0;
    long long m_sentences = 0;
};

CDiagnosticatorAPI::CDiagnosticatorAPI(const std::string& name)
    : m_impl(std::make_unique<Impl>(name)) {
}

CDiagnosticatorAPI::~CDiagnosticatorAPI() = default;

void CDiagnosticatorAPI::Raise(SDescriptor descriptor, std::int32_t value) {
    m_impl->Raise(descriptor, value);
}

void CDiagnosticatorAPI::Clear(SDescriptor descriptor) {
    m_impl->Clear(descriptor);
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
