#include "Framing/NovatelASCIISentenceConstructor.h"

#include "Bytes/CRC32.h"

#include <algorithm>

namespace Novatel {

namespace {

constexpr std::uint8_t kStart = '#';
constexpr std::size_t kSizeLimit = 4096;
constexpr std::size_t kChecksumSize = 8;
/// The shortest text that is accepted has two characters.
constexpr std::size_t kStartTextAndStar = 1 + 2 + 1;
constexpr std::size_t kShortestSentence = kStartTextAndStar + kChecksumSize;

} // namespace

CNovatelASCIISentenceConstructor::CNovatelASCIISentenceConstructor()
    : CTextSentenceConstructor(kStart, kSizeLimit) {
}

bool CNovatelASCIISentenceConstructor::IsValid(std::span<const std::uint8_t> sentence) const {
    if (sentence.size() < kShortestSentence) {
        return false;
    }
    const auto star = std::find(sentence.rbegin(), sentence.rend(), std::uint8_t{'*'});
    const auto after = static_cast<std::size_t>(star - sentence.rbegin());
    // Without a star, everything counts as after it.
    if (after < kChecksumSize || sentence.size() < kStartTextAndStar + after) {
        return false;
    }
    const std::size_t textSize = sentence.size() - after - 2;
    return Bytes::CalculateCRC32(sentence.data() + 1, textSize) ==
           ReadChecksum(sentence.last(after).first(kChecksumSize));
}

} // namespace Novatel
