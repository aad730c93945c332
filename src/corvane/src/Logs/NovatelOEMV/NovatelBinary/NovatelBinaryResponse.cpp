#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryResponse.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::uint16_t kIDLength = 4;

} // namespace

CNovatelBinaryResponse::CNovatelBinaryResponse(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelBinaryResponse::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_responseID = body.UInt32(0);
    if (m_header.m_messageLength > kIDLength) {
        m_responseText = body.Text(kIDLength, m_header.m_messageLength - kIDLength);
    }
}

} // namespace Novatel
