#include "Logs/NovatelOEMV/NovatelBinary/NovatelTIMEB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

CNovatelTIMEB::CNovatelTIMEB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelTIMEB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_clockStatus = body.UInt32(0);
    m_clockOffset = body.Double(4);
    m_clockOffsetDeviation = body.Double(12);
    m_utcOffset = body.Double(20);
    m_utcYear = body.UInt32(28);
    m_utcMonth = body.UInt8(32);
    m_utcDay = body.UInt8(33);
    m_utcHour = body.UInt8(34);
    m_utcMinute = body.UInt8(35);
    m_utcMilliseconds = body.UInt32(36);
    m_utcStatus = body.UInt32(40);
}

} // namespace Novatel
