// Decodes binary LBANDINFO sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelLBANDINFO.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelLBANDINFOB : public CNovatelBinaryRecord, public CNovatelLBANDINFO {
public:
    explicit CNovatelLBANDINFOB(const Bytes::Sentence& sentenceData,
                                ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
