#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRSATSB.h"

namespace Novatel {

CNovatelPSRSATSB::CNovatelPSRSATSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinarySatsLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPSRSATSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeSatellites(sentenceData);
}

} // namespace Novatel
