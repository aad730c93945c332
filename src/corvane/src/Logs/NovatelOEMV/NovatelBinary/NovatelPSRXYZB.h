// Decodes binary PSRXYZ sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryCartesianLog.h"
#include "Logs/NovatelOEMV/NovatelPSRXYZ.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelPSRXYZB : public CNovatelBinaryCartesianLog, public CNovatelPSRXYZ {
public:
    explicit CNovatelPSRXYZB(const Bytes::Sentence& sentenceData,
                             ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
