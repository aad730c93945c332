#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKSATSB.h"

namespace Novatel {

CNovatelRTKSATSB::CNovatelRTKSATSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinarySatsLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelRTKSATSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeSatellites(sentenceData);
}

} // namespace Novatel
