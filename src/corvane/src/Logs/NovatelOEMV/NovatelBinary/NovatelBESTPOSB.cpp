#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTPOSB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

CNovatelBESTPOSB::CNovatelBESTPOSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelBESTPOSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_undulation = static_cast<double>(body.Float(32));
    m_extendedSolutionStatus = body.UInt8(69);
    m_gpsGLONASSMask = body.UInt8(71);
}

} // namespace Novatel
