#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

[[noreturn]] void FailLengthCheck() {
    DamagedLog::FailAssertion(
        "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB", 34,
        "void Novatel::CNovatelPSRDOPB::ParseSentenceData(const "
        "std::vector<unsigned char, std::allocator<unsigned char> >&)",
        "sentenceData.size() == (m_header.m_headerLength + 28 + (numberPRNs * 4) + 4)");
}

} // namespace

CNovatelPSRDOPB::CNovatelPSRDOPB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelPSRDOPB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_gdop = static_cast<float>(body.UInt32(0));
    m_pdop = static_cast<float>(body.UInt32(4));
    m_hdop = static_cast<float>(body.UInt32(8));
    m_htdop = static_cast<float>(body.UInt32(12));
    m_tdop = static_cast<float>(body.UInt32(16));
    m_elevationCutOff = static_cast<float>(body.UInt32(20));

    const std::uint32_t numberPRNs = body.UInt32(24);
    if (sentenceData.size() != SentenceSize(m_header.m_headerLength, 28 + 4, 4, numberPRNs)) {
        FailLengthCheck();
    }
    m_prns.resize(numberPRNs);
    for (std::size_t i = 0; i < m_prns.size(); ++i) {
        m_prns[i] = body.UInt32(28 + 4 * i);
    }
}

} // namespace Novatel
