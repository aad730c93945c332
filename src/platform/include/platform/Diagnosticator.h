// The diagnostics client: raises and clears numbered diagnostics.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace Diagnosticator {

/// What identifies a diagnostic to the service. The numbers in use are listed in
/// docs/diagnostics.md.
struct SDescriptor {
    std::int32_t code;
    std::int32_t sub;

    bool operator==(const SDescriptor&) const = default;
};

/// One client of the diagnostics service, named after the object that owns it.
class CDiagnosticatorAPI {
public:
    explicit CDiagnosticatorAPI(const std::string& name);
    ~CDiagnosticatorAPI();
    CDiagnosticatorAPI(const CDiagnosticatorAPI&) = delete;
    CDiagnosticatorAPI& operator=(const CDiagnosticatorAPI&) = delete;

    /// Every call is one message while the service is connected; after a reconnect the last state
    /// of each diagnostic is told again.
    void Raise(SDescriptor descriptor, std::int32_t value);
    void Clear(SDescriptor descriptor);

    /// Counts a chunk of received bytes.
    void SignalReceivedData();
    /// Counts a sentence made from them.
    void SignalActivity();
    /// From now on both counts go out once a second while the service is connected, also when they
    /// are zero, so that silence can be told from death.
    void WatchActivity();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace Diagnosticator
