#include "Logs/NovatelOEMV/NovatelBinary/NovatelOMNIHPPOSB.h"

namespace Novatel {

CNovatelOMNIHPPOSB::CNovatelOMNIHPPOSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryGeodeticLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelOMNIHPPOSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeGeodeticLog(sentenceData);
}

} // namespace Novatel
