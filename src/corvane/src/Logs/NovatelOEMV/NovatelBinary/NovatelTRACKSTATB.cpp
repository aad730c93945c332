#include "Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"
#include "platform/DebugPrint.h"

#include <sys/types.h>

namespace Novatel {

namespace {

constexpr std::uint32_t kBlockSize = 40;

CNovatelTRACKSTAT::SChannel DecodeChannel(const CBodyReader& block) {
    return {.prn = block.UInt16(0),
            .glonassFrequency = block.UInt16(2),
            .trackingStatus = block.UInt32(4),
            .pseudorange = block.Double(8),
            .doppler = block.Float(16),
            .carrierToNoise = block.Float(20),
            .lockTime = block.Float(24),
            .pseudorangeResidual = block.Float(28),
            .rejectCode = block.UInt32(32),
            .pseudorangeWeight = block.Float(36)};
}

[[noreturn]] void FailLengthCheck(std::size_t size, int headerLength, std::uint32_t count) {
    dprintf(
        "CNovatelTRACKSTATB sentenceData.size() is %zd but expected (%d + 16 + (%d * 40) + 4)\n",
        static_cast<ssize_t>(size), headerLength, static_cast<int>(count));
    DamagedLog::FailAssertion("src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB",
                              38,
                              "void Novatel::CNovatelTRACKSTATB::ParseSentenceData(const "
                              "std::vector<unsigned char, std::allocator<unsigned char> >&)",
                              "0");
}

} // namespace

CNovatelTRACKSTATB::CNovatelTRACKSTATB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelTRACKSTATB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_solutionStatus = body.UInt32(0);
    m_positionType = body.UInt32(4);
    m_elevationCutOff = body.Float(8);
    m_numberOfChannels = body.UInt32(12);
    if (sentenceData.size() !=
        SentenceSize(m_header.m_headerLength, 16 + 4, kBlockSize, m_numberOfChannels)) {
        FailLengthCheck(sentenceData.size(), m_header.m_headerLength, m_numberOfChannels);
    }
    m_channels.reserve(m_numberOfChannels);
    for (std::size_t i = 0; i < m_numberOfChannels; ++i) {
        m_channels.push_back(DecodeChannel(body.Block(16 + kBlockSize * i)));
    }
}

} // namespace Novatel
