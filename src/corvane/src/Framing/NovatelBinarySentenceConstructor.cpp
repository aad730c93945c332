#include "Framing/NovatelBinarySentenceConstructor.h"

#include "Bytes/CRC32.h"

#include <algorithm>

namespace Novatel {

namespace {

using ByteSpan = std::span<const std::uint8_t>;

constexpr std::uint8_t kSync1 = 0xAA;
constexpr std::uint8_t kSync2 = 0x44;
constexpr std::uint8_t kSync3 = 0x12;
constexpr std::size_t kHeaderLengthOffset = 3;
constexpr std::size_t kMessageLengthOffset = 8;
constexpr std::size_t kLengthsEnd = kMessageLengthOffset + 2;
constexpr std::size_t kCRCSize = 4;

/// The end is looked for with each byte after the lengths, so there is at least one.
std::size_t ExpectedLength(ByteSpan sentence) {
    const std::size_t header = sentence[kHeaderLengthOffset];
    const std::size_t message =
        sentence[kMessageLengthOffset] + std::size_t{256} * sentence[kMessageLengthOffset + 1];
    return std::max(header + message + kCRCSize, kLengthsEnd + 1);
}

bool HasRightCRC(ByteSpan sentence) {
    const ByteSpan crc = sentence.last<kCRCSize>();
    return Bytes::CalculateCRC32(sentence.data(), sentence.size() - kCRCSize) ==
           Bytes::ToUInt32(crc.data());
}

} // namespace

int CNovatelBinarySentenceConstructor::ConstructSentence() {
    while (HuntFor(kSync1)) {
        const ByteSpan unread = Unread();
        // No sentence ends before its lengths, so nothing is missed by waiting for them.
        if (unread.size() < kLengthsEnd) {
            return kExhausted;
        }
        if (unread[1] != kSync2) {
            Drop(1);
            continue;
        }
        if (unread[2] != kSync3) {
            Drop(3);
            continue;
        }
        const std::size_t length = ExpectedLength(unread);
        if (unread.size() < length) {
            return kExhausted;
        }
        return HasRightCRC(unread.first(length)) ? Complete(length, length) : Reject(length);
    }
    return kExhausted;
}

} // namespace Novatel
