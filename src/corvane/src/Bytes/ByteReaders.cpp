#include "Bytes/ByteReaders.h"

#include <bit>

namespace Bytes {

namespace {

bool IsInside(const Sentence& sentence, std::size_t offset, std::size_t count) {
    return count <= sentence.size() && offset <= sentence.size() - count;
}

std::uint32_t Word(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

} // namespace

std::uint8_t ReadUInt8(const Sentence& sentence, std::size_t offset) {
    return IsInside(sentence, offset, 1) ? sentence[offset] : std::uint8_t{0};
}

std::uint16_t ReadUInt16(const Sentence& sentence, std::size_t offset) {
    if (!IsInside(sentence, offset, 2)) {
        return 0;
    }
    return static_cast<std::uint16_t>(sentence[offset] | sentence[offset + 1] << 8);
}

std::uint32_t ReadUInt32(const Sentence& sentence, std::size_t offset) {
    return IsInside(sentence, offset, 4) ? Word(sentence.data() + offset) : 0;
}

float ReadFloat(const Sentence& sentence, std::size_t offset) {
    return std::bit_cast<float>(ReadUInt32(sentence, offset));
}

double ReadDouble(const Sentence& sentence, std::size_t offset) {
    if (!IsInside(sentence, offset, 8)) {
        return 0.0;
    }
    const std::uint64_t low = Word(sentence.data() + offset);
    const std::uint64_t high = Word(sentence.data() + offset + 4);
    return std::bit_cast<double>(high << 32 | low);
}

std::uint32_t ReadLastUInt32(const Sentence& sentence) {
    return sentence.size() < 4 ? 0 : Word(sentence.data() + sentence.size() - 4);
}

std::string ReadText(const Sentence& sentence, std::size_t offset, std::size_t count) {
    if (count == 0 || !IsInside(sentence, offset, count)) {
        return {};
    }
    const auto begin = sentence.begin() + static_cast<std::ptrdiff_t>(offset);
    std::string text(begin, begin + static_cast<std::ptrdiff_t>(count));
    text.push_back('\0');
    return text;
}

} // namespace Bytes
