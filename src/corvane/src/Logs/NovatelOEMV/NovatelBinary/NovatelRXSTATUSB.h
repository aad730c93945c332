// Decodes binary RXSTATUS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of status words gives ends the process.
/// Unlike the other logs it does so with exit status 1, so that a supervisor sees no crash.
class CNovatelRXSTATUSB : public CNovatelBinaryRecord, public CNovatelRXSTATUS {
public:
    explicit CNovatelRXSTATUSB(const Bytes::Sentence& sentenceData,
                               ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
