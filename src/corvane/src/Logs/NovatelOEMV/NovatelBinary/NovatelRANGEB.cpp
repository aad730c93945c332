#include "Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"
#include "platform/DebugPrint.h"

#include <sys/types.h>

namespace Novatel {

namespace {

constexpr std::uint32_t kBlockSize = 44;

CNovatelRANGE::SObservation DecodeObservation(const CBodyReader& block) {
    return {.prn = block.UInt16(0),
            .glonassFrequency = block.UInt16(2),
            .pseudorange = block.Double(4),
            .pseudorangeDeviation = block.Float(12),
            .carrierPhase = block.Double(16),
            .carrierPhaseDeviation = block.Float(24),
            .doppler = block.Float(28),
            .carrierToNoise = block.Float(32),
            .lockTime = block.Float(36),
            .trackingStatus = block.UInt32(40)};
}

// The text says 16 where 4 is checked: it is known by this wording.
[[noreturn]] void FailLengthCheck(std::size_t size, int headerLength, std::uint32_t count) {
    dprintf("CNovatelRANGEB sentenceData.size() is %zd but expected (%d + 16 + (%d * 44) + 4)\n",
            static_cast<ssize_t>(size), headerLength, static_cast<int>(count));
    DamagedLog::FailAssertion("src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB", 35,
                              "void Novatel::CNovatelRANGEB::ParseSentenceData(const "
                              "std::vector<unsigned char, std::allocator<unsigned char> >&)",
                              "0");
}

} // namespace

CNovatelRANGEB::CNovatelRANGEB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelRANGEB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_numberOfObservations = body.UInt32(0);
    if (sentenceData.size() !=
        SentenceSize(m_header.m_headerLength, 4 + 4, kBlockSize, m_numberOfObservations)) {
        FailLengthCheck(sentenceData.size(), m_header.m_headerLength, m_numberOfObservations);
    }
    m_observations.reserve(m_numberOfObservations);
    for (std::size_t i = 0; i < m_numberOfObservations; ++i) {
        m_observations.push_back(DecodeObservation(body.Block(4 + kBlockSize * i)));
    }
}

} // namespace Novatel
