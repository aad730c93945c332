#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDINFOB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::uint64_t kHertzPerKilohertz = 1000;

CNovatelLBANDINFO::SSubscription DecodeSubscription(const CBodyReader& block) {
    return {
        .state = block.UInt32(0), .expiryWeek = block.UInt32(4), .expirySeconds = block.UInt32(8)};
}

} // namespace

CNovatelLBANDINFOB::CNovatelLBANDINFOB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelLBANDINFOB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_frequency = std::uint64_t{body.UInt32(0)} * kHertzPerKilohertz;
    m_baudRate = body.UInt32(4);
    m_serviceID = body.UInt16(8);
    m_reserved = body.UInt16(10);
    m_serialNumber = body.UInt32(12);
    m_vbsSubscription = DecodeSubscription(body.Block(16));
    m_hpSubscription = DecodeSubscription(body.Block(28));
    m_hpMode = body.UInt32(40);
}

} // namespace Novatel
