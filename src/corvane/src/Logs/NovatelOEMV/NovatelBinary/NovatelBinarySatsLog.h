// The decoder that the binary satellite lists PSRSATS, RTKSATS and PDPSATS share.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelSatsLog.h"

namespace Novatel {

class CNovatelBinarySatsLog : public CNovatelBinaryRecord, public CNovatelSatsLog {
protected:
    explicit CNovatelBinarySatsLog(const Bytes::Sentence& sentenceData, ECRCCheck check);

    /// Leaves the list empty when the sentence is too short for it; bytes after it are ignored.
    void DecodeSatellites(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
