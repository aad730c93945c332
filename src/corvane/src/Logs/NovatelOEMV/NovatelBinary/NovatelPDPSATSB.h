// Decodes binary PDPSATS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinarySatsLog.h"

namespace Novatel {

class CNovatelPDPSATSB : public CNovatelBinarySatsLog {
public:
    explicit CNovatelPDPSATSB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
