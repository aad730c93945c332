#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDSTATB.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

/// Body offsets of the fields whose place depends on the generation.
struct SLayout {
    std::size_t signalTracking;
    std::size_t vbsStatus;
    std::size_t vbsBytes;
    std::size_t goodDGPSUpdates;
    std::size_t badDataUpdates;
    std::size_t hpAdditionalStatus;
    std::size_t hpBytes;
    std::size_t hpStatus;
};

constexpr SLayout kPacked{.signalTracking = 16,
                          .vbsStatus = 18,
                          .vbsBytes = 20,
                          .goodDGPSUpdates = 24,
                          .badDataUpdates = 28,
                          .hpAdditionalStatus = 34,
                          .hpBytes = 36,
                          .hpStatus = 40};
constexpr SLayout kSlotted{.signalTracking = 16,
                           .vbsStatus = 20,
                           .vbsBytes = 24,
                           .goodDGPSUpdates = 28,
                           .badDataUpdates = 32,
                           .hpAdditionalStatus = 40,
                           .hpBytes = 44,
                           .hpStatus = 48};
constexpr std::uint16_t kSlottedLength = 56;

} // namespace

CNovatelLBANDSTATB::CNovatelLBANDSTATB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelLBANDSTATB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    const SLayout& layout = m_header.m_messageLength == kSlottedLength ? kSlotted : kPacked;
    m_frequency = body.UInt32(0);
    m_carrierToNoise = body.Float(4);
    m_lockTime = body.Float(8);
    m_signalTracking = CLBandSignalTracking(body.UInt16(layout.signalTracking));
    m_vbsStatus = COmnistarVBSStatusWord(body.UInt16(layout.vbsStatus));
    m_vbsBytes = body.UInt32(layout.vbsBytes);
    m_goodDGPSUpdates = body.UInt32(layout.goodDGPSUpdates);
    m_badDataUpdates = body.UInt32(layout.badDataUpdates);
    m_hpAdditionalStatus = COmnistarHPAdditionalStatusWord(body.UInt16(layout.hpAdditionalStatus));
    m_hpBytes = body.UInt32(layout.hpBytes);
    m_hpStatus = COmnistarHPStatusWord(body.UInt32(layout.hpStatus));
}

} // namespace Novatel
