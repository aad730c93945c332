#include "Logs/NovatelOEMV/NovatelBinary/NovatelREFSTATIONB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::size_t kStationIDLength = 5;

} // namespace

CNovatelREFSTATIONB::CNovatelREFSTATIONB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelREFSTATIONB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_x = body.Double(4);
    m_y = body.Double(12);
    m_z = body.Double(20);
    m_stationType = body.UInt32(32);
    for (std::size_t i = 0; i < kStationIDLength && body.UInt8(36 + i) != 0; ++i) {
        m_stationID.push_back(static_cast<char>(body.UInt8(36 + i)));
    }
}

} // namespace Novatel
