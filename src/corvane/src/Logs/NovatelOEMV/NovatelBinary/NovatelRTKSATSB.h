// Decodes binary RTKSATS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinarySatsLog.h"

namespace Novatel {

class CNovatelRTKSATSB : public CNovatelBinarySatsLog {
public:
    explicit CNovatelRTKSATSB(const Bytes::Sentence& sentenceData,
                              ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
