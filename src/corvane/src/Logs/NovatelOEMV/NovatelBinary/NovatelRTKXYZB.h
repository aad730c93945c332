// Decodes binary RTKXYZ sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryCartesianLog.h"
#include "Logs/NovatelOEMV/NovatelRTKXYZ.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelRTKXYZB : public CNovatelBinaryCartesianLog, public CNovatelRTKXYZ {
public:
    explicit CNovatelRTKXYZB(const Bytes::Sentence& sentenceData,
                             ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
