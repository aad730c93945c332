// Decodes binary REFSTATION sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelREFSTATION.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelREFSTATIONB : public CNovatelBinaryRecord, public CNovatelREFSTATION {
public:
    explicit CNovatelREFSTATIONB(const Bytes::Sentence& sentenceData,
                                 ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
