#include "Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::uint32_t kBlockSize = 44;

CNovatelCOMCONFIG::SPort DecodePort(const CBodyReader& block) {
    return {.port = block.UInt32(0),
            .baudRate = block.UInt32(4),
            .parity = block.UInt32(8),
            .dataBits = block.UInt32(12),
            .stopBits = block.UInt32(16),
            .handshaking = block.UInt32(20),
            .echo = block.UInt32(24) == 1,
            .breakDetection = block.UInt32(28) == 1,
            .receiveMode = block.UInt32(32),
            .transmitMode = block.UInt32(36),
            .responses = block.UInt32(40) == 1};
}

[[noreturn]] void FailLengthCheck() {
    DamagedLog::FailAssertion(
        "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB", 26,
        "void Novatel::CNovatelCOMCONFIGB::ParseSentenceData(const "
        "std::vector<unsigned char, std::allocator<unsigned char> >&)",
        "sentenceData.size() == (m_header.m_headerLength + 4 + (m_numberOfPorts * 44) + 4)");
}

} // namespace

CNovatelCOMCONFIGB::CNovatelCOMCONFIGB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelCOMCONFIGB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_numberOfPorts = body.UInt32(0);
    if (sentenceData.size() !=
        SentenceSize(m_header.m_headerLength, 4 + 4, kBlockSize, m_numberOfPorts)) {
        FailLengthCheck();
    }
    m_ports.reserve(m_numberOfPorts);
    for (std::size_t i = 0; i < m_numberOfPorts; ++i) {
        m_ports.push_back(DecodePort(body.Block(4 + kBlockSize * i)));
    }
}

} // namespace Novatel
