#include "Framing/NMEASentenceConstructor.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

constexpr std::uint8_t kStart = '$';
constexpr std::uint8_t kStar = '*';
constexpr std::size_t kSizeLimit = 1024;
constexpr std::size_t kChecksumSize = 2;
/// The text may be empty.
constexpr std::size_t kShortestSentence = 1 + 1 + kChecksumSize;

} // namespace

CNMEASentenceConstructor::CNMEASentenceConstructor()
    : CTextSentenceConstructor(kStart, kSizeLimit) {
}

bool CNMEASentenceConstructor::IsValid(std::span<const std::uint8_t> sentence) const {
    if (sentence.size() < kShortestSentence) {
        return false;
    }
    const auto text = sentence.begin() + 1;
    const auto star = std::find(text, sentence.end(), kStar);
    const auto after = static_cast<std::size_t>(sentence.end() - star);
    if (after < 1 + kChecksumSize) {
        return false;
    }
    const std::uint8_t checksum =
        star == text ? kStar : std::accumulate(text, star, std::uint8_t{0}, std::bit_xor<>());
    return checksum == (ReadChecksum(sentence.last(after - 1).first(kChecksumSize)) & 0xFF);
}
