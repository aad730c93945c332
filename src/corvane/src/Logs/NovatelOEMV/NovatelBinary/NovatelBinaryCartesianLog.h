// The decoder that all binary logs with a Cartesian solution share.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelCartesianLog.h"

namespace Novatel {

class CNovatelBinaryCartesianLog : public CNovatelBinaryRecord,
                                   public virtual CNovatelCartesianLog {
protected:
    explicit CNovatelBinaryCartesianLog(const Bytes::Sentence& sentenceData, ECRCCheck check);

    /// Fills the solution from a body of 112 bytes; what a short sentence lacks is zero.
    void DecodeCartesianLog(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
