// The body of a binary sentence, read by the offsets that the receiver's manual gives.
#pragma once

#include "Bytes/ByteReaders.h"

namespace Novatel {

/// Never reads outside the sentence: what is not wholly inside gives zero, or the empty text.
class CBodyReader {
public:
    /// Offset 0 is the sentence's byte `start`.
    CBodyReader(const Bytes::Sentence& sentence, std::size_t start)
        : m_sentence(sentence), m_start(start) {}

    std::uint8_t UInt8(std::size_t offset) const {
        return Bytes::ReadUInt8(m_sentence, m_start + offset);
    }
    std::uint16_t UInt16(std::size_t offset) const {
        return Bytes::ReadUInt16(m_sentence, m_start + offset);
    }
    std::uint32_t UInt32(std::size_t offset) const {
        return Bytes::ReadUInt32(m_sentence, m_start + offset);
    }
    float Float(std::size_t offset) const { return Bytes::ReadFloat(m_sentence, m_start + offset); }
    double Double(std::size_t offset) const {
        return Bytes::ReadDouble(m_sentence, m_start + offset);
    }
    /// With one zero byte appended as part of it.
    std::string Text(std::size_t offset, std::size_t count) const {
        return Bytes::ReadText(m_sentence, m_start + offset, count);
    }
    /// Exactly `count` bytes, nothing appended.
    std::string Characters(std::size_t offset, std::size_t count) const {
        std::string text = Text(offset, count);
        text.resize(text.empty() ? 0 : count);
        return text;
    }

    /// A part of the body with offsets of its own.
    CBodyReader Block(std::size_t offset) const { return {m_sentence, m_start + offset}; }

private:
    const Bytes::Sentence& m_sentence;
    std::size_t m_start;
};

/// What a sentence measures that has `fixed` bytes besides its header and `count` equal blocks. A
/// count comes from outside, so this must hold for every one: hence 64 bits.
constexpr std::uint64_t SentenceSize(std::uint8_t headerLength, std::uint32_t fixed,
                                     std::uint32_t blockSize, std::uint32_t count) {
    return std::uint64_t{headerLength} + fixed + std::uint64_t{blockSize} * count;
}

} // namespace Novatel
