#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPXYZB.h"

namespace Novatel {

CNovatelPDPXYZB::CNovatelPDPXYZB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryCartesianLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPDPXYZB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeCartesianLog(sentenceData);
}

} // namespace Novatel
