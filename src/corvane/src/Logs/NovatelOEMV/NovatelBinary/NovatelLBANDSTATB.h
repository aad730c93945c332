// Decodes binary LBANDSTAT sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelLBANDSTAT.h"

namespace Novatel {

/// Two generations of receivers lay this log out differently. A message length of 56 means the
/// older one, with every field in four bytes of its own; any other length is read as the packed one
/// (48 bytes), and what a short sentence lacks is zero.
class CNovatelLBANDSTATB : public CNovatelBinaryRecord, public CNovatelLBANDSTAT {
public:
    explicit CNovatelLBANDSTATB(const Bytes::Sentence& sentenceData,
                                ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
