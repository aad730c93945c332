// Decodes binary TIME sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelTIME.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelTIMEB : public CNovatelBinaryRecord, public CNovatelTIME {
public:
    explicit CNovatelTIMEB(const Bytes::Sentence& sentenceData,
                           ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
