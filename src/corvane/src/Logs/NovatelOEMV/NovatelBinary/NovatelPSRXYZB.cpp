#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRXYZB.h"

namespace Novatel {

CNovatelPSRXYZB::CNovatelPSRXYZB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryCartesianLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPSRXYZB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeCartesianLog(sentenceData);
}

} // namespace Novatel
