// Turns the receiver's error and status words into diagnostics.
#pragma once

#include "LogObserver/LogObserver.h"
#include "platform/Diagnosticator.h"

#include <cstdint>

/// On each change of either word every diagnostic of the table (docs/diagnostics.md) is raised or
/// cleared, also those whose bits have not changed.
class CDiagnosticsObserver : public CLogObserver {
public:
    void NewRecord(CGPSRecord* record) override;

private:
    void Publish();

    Diagnosticator::CDiagnosticatorAPI m_diagnostics{"CDiagnosticsObserver"};
    std::uint32_t m_previousErrorWord = 0xFFFFFFFF;
    std::uint32_t m_previousStatusWord = 0xFFFFFFFF;
};
