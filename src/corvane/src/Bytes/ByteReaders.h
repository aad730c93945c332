// Little-endian readers: a number at an offset into a sentence, on any machine, never outside it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// All of these return 0 (or an empty text) when the range is not wholly inside the vector. They
/// are inline because a measurement log takes hundreds of them.
namespace Bytes {

using Sentence = std::vector<std::uint8_t>;

inline bool IsInside(const Sentence& sentence, std::size_t offset, std::size_t count) {
    return count <= sentence.size() && offset <= sentence.size() - count;
}

/// Four bytes that are known to be there.
inline std::uint32_t ToUInt32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

inline std::uint8_t ReadUInt8(const Sentence& sentence, std::size_t offset) {
    return IsInside(sentence, offset, 1) ? sentence[offset] : std::uint8_t{0};
}

inline std::uint16_t ReadUInt16(const Sentence& sentence, std::size_t offset) {
    if (!IsInside(sentence, offset, 2)) {
        return 0;
    }
    return static_cast<std::uint16_t>(sentence[offset] | sentence[offset + 1] << 8);
}

inline std::uint32_t ReadUInt32(const Sentence& sentence, std::size_t offset) {
    return IsInside(sentence, offset, 4) ? ToUInt32(sentence.data() + offset) : 0;
}

/// IEEE 754, 32 bits.
inline float ReadFloat(const Sentence& sentence, std::size_t offset) {
    return std::bit_cast<float>(ReadUInt32(sentence, offset));
}

/// IEEE 754, 64 bits, as two 32-bit words with the low one first.
inline double ReadDouble(const Sentence& sentence, std::size_t offset) {
    if (!IsInside(sentence, offset, 8)) {
        return 0.0;
    }
    const std::uint64_t low = ToUInt32(sentence.data() + offset);
    const std::uint64_t high = ToUInt32(sentence.data() + offset + 4);
    return std::bit_cast<double>(high << 32 | low);
}

/// The last four bytes.
inline std::uint32_t ReadLastUInt32(const Sentence& sentence) {
    return sentence.size() < 4 ? 0 : ToUInt32(sentence.data() + sentence.size() - 4);
}

/// `count` bytes as a text, with one zero byte appended as part of it; the empty text when the
/// count is 0 or the range passes the end.
std::string ReadText(const Sentence& sentence, std::size_t offset, std::size_t count);

} // namespace Bytes
