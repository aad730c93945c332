#include "Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"
#include "platform/DebugPrint.h"

#include <algorithm>
#include <cstdio>
#include <sys/types.h>

namespace Novatel {

namespace {

constexpr std::uint32_t kBlockSize = 108;

CNovatelVERSION::SComponent DecodeComponent(const CBodyReader& block) {
    return {.type = block.UInt32(0),
            .model = block.Text(4, 16),
            .serialNumber = block.Text(20, 16),
            .hardwareVersion = block.Text(36, 16),
            .softwareVersion = block.Text(52, 16),
            .bootVersion = block.Text(68, 16),
            .compileDate = block.Text(84, 12),
            .compileTime = block.Text(96, 12)};
}

constexpr std::size_t kBytesPerLine = 16;

std::string HexBytes(const Bytes::Sentence& sentenceData, std::size_t begin, std::size_t end) {
    std::string text;
    for (std::size_t i = begin; i < end; ++i) {
        char byte[sizeof "0xFF "];
        std::snprintf(byte, sizeof byte, "0x%02X ", static_cast<unsigned>(sentenceData[i]));
        text += byte;
    }
    return text;
}

/// Lines of 16 bytes; a last byte that would stand alone stays on the line before it. Whole lines
/// go out at once, so that what cannot be written any more is lost by the line.
void Dump(const Bytes::Sentence& sentenceData) {
    deprintf("Sentence Data is as follows:%s", sentenceData.size() == 1 ? "" : "\n");
    std::size_t begin = 0;
    while (begin < sentenceData.size()) {
        const std::size_t left = sentenceData.size() - begin;
        const std::size_t count = left == kBytesPerLine + 1 ? left : std::min(left, kBytesPerLine);
        deprintf("%s\n", HexBytes(sentenceData, begin, begin + count).c_str());
        begin += count;
    }
}

[[noreturn]] void FailLengthCheck(const Bytes::Sentence& sentenceData, std::uint64_t expected,
                                  std::uint32_t count) {
    deprintf("NovatelVERSIONB: Unexpected length. Got %zd, expected %d from %d components\n",
             static_cast<ssize_t>(sentenceData.size()), static_cast<int>(expected),
             static_cast<int>(count));
    Dump(sentenceData);
    DamagedLog::FailAssertion("src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB", 41,
                              "void Novatel::CNovatelVERSIONB::ParseSentenceData(const "
                              "std::vector<unsigned char, std::allocator<unsigned char> >&)",
                              "0");
}

} // namespace

CNovatelVERSIONB::CNovatelVERSIONB(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelVERSIONB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_numberOfComponents = body.UInt32(0);
    const std::uint64_t expected =
        SentenceSize(m_header.m_headerLength, 4 + 4, kBlockSize, m_numberOfComponents);
    if (sentenceData.size() != expected) {
        FailLengthCheck(sentenceData, expected, m_numberOfComponents);
    }
    m_components.reserve(m_numberOfComponents);
    for (std::size_t i = 0; i < m_numberOfComponents; ++i) {
        m_components.push_back(DecodeComponent(body.Block(4 + kBlockSize * i)));
    }
}

} // namespace Novatel
