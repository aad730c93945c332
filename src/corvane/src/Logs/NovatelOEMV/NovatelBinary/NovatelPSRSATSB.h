// Decodes binary PSRSATS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinarySatsLog.h"

namespace Novatel {

class CNovatelPSRSATSB : public CNovatelBinarySatsLog {
public:
    explicit CNovatelPSRSATSB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
