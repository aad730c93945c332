#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSTATB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

CNovatelPDPSTATB::CNovatelPDPSTATB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPDPSTATB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    for (std::size_t i = 0; i < m_integers.size(); ++i) {
        m_integers[i] = body.UInt32(4 * i);
    }
    for (std::size_t i = 0; i < m_reals.size(); ++i) {
        m_reals[i] = body.Double(20 + 8 * i);
    }
}

} // namespace Novatel
