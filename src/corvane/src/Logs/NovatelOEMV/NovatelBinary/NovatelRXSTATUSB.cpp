#include "Logs/NovatelOEMV/NovatelBinary/NovatelRXSTATUSB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"
#include "platform/DebugPrint.h"

#include <sys/types.h>

namespace Novatel {

namespace {

constexpr std::uint32_t kBlockSize = 16;

CNovatelRXSTATUS::SStatus DecodeStatus(const CBodyReader& block) {
    return {.status = block.UInt32(0),
            .priorityMask = block.UInt32(4),
            .eventSetMask = block.UInt32(8),
            .eventClearMask = block.UInt32(12)};
}

[[noreturn]] void EndOverLength(std::size_t size, int headerLength, std::uint32_t count) {
    dprintf("CNovatelRXSTATUSB sentenceData.size() is %zd but expected (%d + 8 + (%d * 16) + 4)\n",
            static_cast<ssize_t>(size), headerLength, static_cast<int>(count));
    DamagedLog::Exit();
}

} // namespace

CNovatelRXSTATUSB::CNovatelRXSTATUSB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelRXSTATUSB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_errorWord = body.UInt32(0);
    const std::uint32_t count = body.UInt32(4);
    if (sentenceData.size() != SentenceSize(m_header.m_headerLength, 8 + 4, kBlockSize, count)) {
        EndOverLength(sentenceData.size(), m_header.m_headerLength, count);
    }
    m_statuses.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        m_statuses.push_back(DecodeStatus(body.Block(8 + kBlockSize * i)));
    }
}

} // namespace Novatel
