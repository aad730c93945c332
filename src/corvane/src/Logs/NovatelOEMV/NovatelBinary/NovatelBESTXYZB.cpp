#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTXYZB.h"

namespace Novatel {

CNovatelBESTXYZB::CNovatelBESTXYZB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryCartesianLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelBESTXYZB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeCartesianLog(sentenceData);
}

} // namespace Novatel
