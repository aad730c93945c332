// Decodes binary PDPSTAT sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelPDPSTATB : public CNovatelBinaryRecord, public CNovatelPDPSTAT {
public:
    explicit CNovatelPDPSTATB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
