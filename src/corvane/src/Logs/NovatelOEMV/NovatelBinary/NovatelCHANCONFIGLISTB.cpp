#include "Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB.h"

#include "Logs/DamagedLog.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::uint32_t kSignalSize = 8;
constexpr std::uint32_t kSmallestSet = 4;

[[noreturn]] void FailLengthCheck() {
    DamagedLog::FailAssertion(
        "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB", 52,
        "Novatel::CNovatelCHANCONFIGLIST::SChannelConfigSet "
        "Novatel::CNovatelCHANCONFIGLISTB::ParseConfigSet(const std::vector<unsigned char, "
        "std::allocator<unsigned char> >&, unsigned int) const",
        "sentenceData.size() >= (set.number_signals * 8) + startIndex + 4");
}

} // namespace

CNovatelCHANCONFIGLISTB::CNovatelCHANCONFIGLISTB(const Bytes::Sentence& sentenceData,
                                                 ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
    ParseSentenceData(sentenceData);
}

void CNovatelCHANCONFIGLISTB::ParseSentenceData(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    m_setInUse = body.UInt32(0);
    const std::uint32_t numberOfSets = body.UInt32(4);
    // With more sets than even empty ones have room for, one of them must fail its own check; it
    // does so here, before memory is taken for an absurd number.
    if (numberOfSets > 0 && SentenceSize(m_header.m_headerLength, 8, kSmallestSet, numberOfSets) >
                                sentenceData.size()) {
        FailLengthCheck();
    }
    m_sets.reserve(numberOfSets);
    unsigned int startIndex = m_header.m_headerLength + 8U;
    for (std::uint32_t i = 0; i < numberOfSets; ++i) {
        m_sets.push_back(ParseConfigSet(sentenceData, startIndex));
        startIndex += 4 + kSignalSize * m_sets.back().number_signals;
    }
}

CNovatelCHANCONFIGLIST::SChannelConfigSet
CNovatelCHANCONFIGLISTB::ParseConfigSet(const Bytes::Sentence& sentenceData,
                                        unsigned int startIndex) const {
    const CBodyReader block(sentenceData, startIndex);
    SChannelConfigSet set;
    set.number_signals = block.UInt32(0);
    if (sentenceData.size() < std::uint64_t{set.number_signals} * kSignalSize + startIndex + 4) {
        FailLengthCheck();
    }
    set.signals.reserve(set.number_signals);
    for (std::size_t k = 0; k < set.number_signals; ++k) {
        const CBodyReader entry = block.Block(4 + kSignalSize * k);
        set.signals.push_back({.numberOfChannels = entry.UInt32(0), .signalType = entry.UInt32(4)});
    }
    return set;
}

} // namespace Novatel
