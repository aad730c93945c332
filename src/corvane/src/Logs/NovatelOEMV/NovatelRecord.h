// The root of all records of this receiver; most observers look for it first.
#pragma once

#include "Logs/GPSRecord.h"

namespace Novatel {

class CNovatelRecord : public virtual CGPSRecord {
public:
    /// Whether the sentence has passed the check of its binary CRC.
    bool IsValid() const { return m_valid; }

protected:
    CNovatelRecord() = default;

    bool m_valid = false;
};

} // namespace Novatel
