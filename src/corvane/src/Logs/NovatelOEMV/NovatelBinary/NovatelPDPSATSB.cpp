#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSATSB.h"

namespace Novatel {

CNovatelPDPSATSB::CNovatelPDPSATSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinarySatsLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPDPSATSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeSatellites(sentenceData);
}

} // namespace Novatel
