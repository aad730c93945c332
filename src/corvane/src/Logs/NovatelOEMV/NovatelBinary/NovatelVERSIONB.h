// Decodes binary VERSION sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelVERSION.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of components gives ends the process with
/// a failed assertion, after a dump of the sentence on standard error.
class CNovatelVERSIONB : public CNovatelBinaryRecord, public CNovatelVERSION {
public:
    explicit CNovatelVERSIONB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
