// Decodes the receiver's binary answers to commands, whatever command they answer.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelResponse.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero, or no text.
class CNovatelBinaryResponse : public CNovatelBinaryRecord, public CNovatelResponse {
public:
    explicit CNovatelBinaryResponse(const Bytes::Sentence& sentenceData,
                                    ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
