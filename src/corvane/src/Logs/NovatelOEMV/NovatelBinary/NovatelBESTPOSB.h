// Decodes binary BESTPOS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBESTPOS.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelBESTPOSB : public CNovatelBinaryRecord, public CNovatelBESTPOS {
public:
    explicit CNovatelBESTPOSB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
