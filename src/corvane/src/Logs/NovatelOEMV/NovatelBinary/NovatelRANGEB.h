// Decodes binary RANGE sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelRANGE.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of observations gives ends the process
/// with a failed assertion.
class CNovatelRANGEB : public CNovatelBinaryRecord, public CNovatelRANGE {
public:
    explicit CNovatelRANGEB(const Bytes::Sentence& sentenceData,
                            ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
