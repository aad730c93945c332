// Decodes binary PDPXYZ sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryCartesianLog.h"
#include "Logs/NovatelOEMV/NovatelPDPXYZ.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelPDPXYZB : public CNovatelBinaryCartesianLog, public CNovatelPDPXYZ {
public:
    explicit CNovatelPDPXYZB(const Bytes::Sentence& sentenceData,
                             ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
