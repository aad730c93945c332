// Decodes binary TRACKSTAT sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelTRACKSTAT.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of channels gives ends the process with a
/// failed assertion.
class CNovatelTRACKSTATB : public CNovatelBinaryRecord, public CNovatelTRACKSTAT {
public:
    explicit CNovatelTRACKSTATB(const Bytes::Sentence& sentenceData,
                                ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
