// Decodes binary OMNIHPPOS sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryGeodeticLog.h"
#include "Logs/NovatelOEMV/NovatelOMNIHPPOS.h"

namespace Novatel {

/// Never fails: what a short sentence lacks is zero.
class CNovatelOMNIHPPOSB : public CNovatelBinaryGeodeticLog, public CNovatelOMNIHPPOS {
public:
    explicit CNovatelOMNIHPPOSB(const Bytes::Sentence& sentenceData,
                                ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
