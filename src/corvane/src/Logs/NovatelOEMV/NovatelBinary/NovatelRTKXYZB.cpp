#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKXYZB.h"

namespace Novatel {

CNovatelRTKXYZB::CNovatelRTKXYZB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryCartesianLog(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelRTKXYZB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    DecodeCartesianLog(sentenceData);
}

} // namespace Novatel
