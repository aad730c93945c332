#include "Framing/TextSentenceConstructor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint8_t kCR = 13;
constexpr std::uint8_t kLF = 10;

/// Several bytes that are looked at in one step, the first one lowest.
using Word = std::uint64_t;

constexpr Word Repeat(std::uint8_t byte) {
    return ~Word{0} / 0xFF * byte;
}

/// A word of fewer bytes is filled up with zeros, which mean nothing to a text framer.
Word ReadWord(const std::uint8_t* bytes, std::size_t count) {
    Word word = 0;
    if (count == sizeof word) {
        std::memcpy(&word, bytes, sizeof word);
        return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
    }
    while (count > 0) {
        word = word << 8 | bytes[--count];
    }
    return word;
}

/// Marks, with its top bit, each byte of the word that equals `byte`.
Word Mark(Word word, std::uint8_t byte) {
    constexpr Word kLowBits = Repeat(0x7F);
    const Word difference = word ^ Repeat(byte);
    return ~(((difference & kLowBits) + kLowBits) | difference | kLowBits);
}

/// Everything below the first mark, or the whole word when there is none.
Word Before(Word marks) {
    return (marks - 1) & ~marks;
}

std::size_t FirstMarked(Word marks) {
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

std::size_t LastMarked(Word marks) {
    return sizeof(Word) - 1 - static_cast<std::size_t>(std::countl_zero(marks)) / 8;
}

} // namespace

CTextSentenceConstructor::SScan CTextSentenceConstructor::Scan() const {
    const std::span<const std::uint8_t> unread = Unread();
    std::size_t begin = 0;
    std::size_t index = m_scanned;
    while (true) {
        const std::size_t reach = std::min(unread.size(), begin + m_longest + 1);
        if (index == reach) {
            return {begin, index - begin, false};
        }
        const std::size_t count = std::min(reach - index, sizeof(Word));
        const Word word = ReadWord(unread.data() + index, count);
        const Word ends = Mark(word, kCR) | Mark(word, kLF);
        const Word starts = Mark(word, m_start) & Before(ends);
        if (starts != 0) {
            begin = index + LastMarked(starts);
        }
        if (ends != 0) {
            return {begin, index + FirstMarked(ends) - begin, true};
        }
        index += count;
    }
}

int CTextSentenceConstructor::ConstructSentence() {
    if (!HuntFor(m_start)) {
        return kExhausted;
    }
    const SScan scan = Scan();
    Drop(scan.begin);
    m_scanned = kStartSize;
    if (scan.hasEnd) {
        return IsValid(Unread().first(scan.length)) ? Complete(scan.length, scan.length + 1)
                                                    : Reject(scan.length + 1);
    }
    if (scan.length > m_longest) {
        return Reject(scan.length);
    }
    m_scanned = scan.length;
    return kExhausted;
}

std::uint32_t CTextSentenceConstructor::ReadChecksum(std::span<const std::uint8_t> characters) {
    std::array<char, 9> text{};
    std::copy_n(characters.begin(), std::min(characters.size(), text.size() - 1), text.begin());
    return static_cast<std::uint32_t>(std::strtoul(text.data(), nullptr, 16));
}
