// The decoder of binary logs with a whole geodetic solution.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelGeodeticLog.h"

namespace Novatel {

class CNovatelBinaryGeodeticLog : public CNovatelBinaryRecord, public virtual CNovatelGeodeticLog {
protected:
    explicit CNovatelBinaryGeodeticLog(const Bytes::Sentence& sentenceData, ECRCCheck check);

    /// Fills the solution from a body of 72 bytes; what a short sentence lacks is zero.
    void DecodeGeodeticLog(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
