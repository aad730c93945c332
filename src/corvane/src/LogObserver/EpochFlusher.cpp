#include "LogObserver/EpochFlusher.h"

#include "Logs/GPSRecord.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelPDPXYZ.h"
#include "Port/PortHandler.h"

void EpochFlusher::NewRecord(CGPSRecord* record) {
    if (m_portHandler == nullptr || record == nullptr) {
        return;
    }
    if (dynamic_cast<Novatel::CNovatelPDPXYZ*>(record) != nullptr ||
        dynamic_cast<Novatel::CNovatelPDPSTAT*>(record) != nullptr) {
        m_portHandler->FlushCapture();
    }
}
