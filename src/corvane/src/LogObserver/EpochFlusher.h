// Hands the captured bytes over once an epoch, at the logs that close the receiver's output for it.
#pragma once

#include "LogObserver/LogObserver.h"

namespace Novatel {
class CPortHandler;
}

/// Does nothing until start-up has given it its port handler.
class EpochFlusher : public CLogObserver {
public:
    void SetPortHandler(Novatel::CPortHandler* portHandler) { m_portHandler = portHandler; }

    /// On a PDPXYZ or PDPSTAT the port handler flushes its capture, so that a block is an epoch.
    void NewRecord(CGPSRecord* record) override;

private:
    Novatel::CPortHandler* m_portHandler = nullptr;
};
