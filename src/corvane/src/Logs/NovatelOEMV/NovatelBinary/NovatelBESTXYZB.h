// Decodes binary BESTXYZ sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBESTXYZ.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryCartesianLog.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelBESTXYZB : public CNovatelBinaryCartesianLog, public CNovatelBESTXYZ {
public:
    explicit CNovatelBESTXYZB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
