// What every log about an L-band correction service has, whatever receiver it comes from.
#pragma once

#include "Logs/GPSRecord.h"

class CLBandLog : public virtual CGPSRecord {
public:
    /// The frequency of the service's beam, in Hz.
    std::uint64_t GetFrequency() const { return m_frequency; }

protected:
    CLBandLog() = default;

    std::uint64_t m_frequency = 0;
};
