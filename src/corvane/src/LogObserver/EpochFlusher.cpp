#include "LogObserver/EpochFlusher.h"

#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelPDPXYZ.h"
#include "Port/PortHandler.h"

void EpochFlusher::NewRecord(CGPSRecord* record) {
    if (m_portHandler == nullptr || record == nullptr) {
        return;
    }
    const CLogCast log(*record);
    if (log.As<Novatel::CNovatelPDPXYZ>() != nullptr ||
        log.As<Novatel::CNovatelPDPSTAT>() != nullptr) {
        m_portHandler->FlushCapture();
    }
}
