#include "Logs/GPSRecord.h"

CGPSRecord::CGPSRecord() : m_receptionTime(Core::UnixTime::Now()) {
}

int CGPSRecord::GetReceptionTime(double& seconds) const {
    seconds = m_receptionTime.AsSeconds();
    return 0;
}

double CGPSRecord::GetReceptionSeconds() const {
    return m_receptionTime.AsSeconds();
}

void CGPSRecord::GetReceptionUnixTime(Core::UnixTime& time) const {
    time = m_receptionTime;
}
