// Forwards the receiver's satellite, error and date sentences to the NMEA service.
#pragma once

#include "LogObserver/LogObserver.h"
#include "platform/NMEAHandlerAPI.h"

class CReceiverStatusObserver;

/// Positions are not forwarded: the service makes those sentences itself from the solution.
class CNMEALogObserver : public CLogObserver {
public:
    /// `receiverStatus` knows the time, which the sentences themselves do not carry reliably.
    explicit CNMEALogObserver(const CReceiverStatusObserver& receiverStatus)
        : m_receiverStatus(receiverStatus) {}

    void NewRecord(CGPSRecord* record) override;

private:
    CNMEAHandlerAPI m_nmeaHandler;
    const CReceiverStatusObserver& m_receiverStatus;
};
