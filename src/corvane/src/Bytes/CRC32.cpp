#include "Bytes/CRC32.h"

#include <array>

namespace Bytes {

namespace {

constexpr std::uint32_t kPolynomial = 0xEDB88320U;
constexpr std::size_t kStep = 16;

using Table = std::array<std::uint32_t, 256>;

/// Table k holds the CRC of each byte followed by k zero bytes, so that kStep bytes are folded in
/// by kStep independent look-ups instead of a chain of them.
constexpr std::array<Table, kStep> MakeTables() {
    std::array<Table, kStep> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? kPolynomial : 0);
        }
        tables[0][byte] = crc;
    }
    for (std::size_t k = 1; k < kStep; ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t previous = tables[k - 1][byte];
            tables[k][byte] = (previous >> 8) ^ tables[0][previous & 0xFF];
        }
    }
    return tables;
}

constexpr std::array<Table, kStep> kTables = MakeTables();

} // namespace

std::uint32_t CalculateCRC32(const std::uint8_t* bytes, std::size_t length) {
    std::uint32_t crc = 0;
    for (; length >= kStep; bytes += kStep, length -= kStep) {
        std::uint32_t next = kTables[kStep - 1][(bytes[0] ^ crc) & 0xFF] ^
                             kTables[kStep - 2][(bytes[1] ^ (crc >> 8)) & 0xFF] ^
                             kTables[kStep - 3][(bytes[2] ^ (crc >> 16)) & 0xFF] ^
                             kTables[kStep - 4][bytes[3] ^ (crc >> 24)];
        for (std::size_t i = 4; i < kStep; ++i) {
            next ^= kTables[kStep - 1 - i][bytes[i]];
        }
        crc = next;
    }
    for (; length > 0; ++bytes, --length) {
        crc = (crc >> 8) ^ kTables[0][(crc ^ *bytes) & 0xFF];
    }
    return crc;
}

std::uint32_t SentenceCRC32(const Sentence& sentence, bool excludeLastFour) {
    const std::size_t excluded = excludeLastFour ? 4 : 0;
    return sentence.size() < excluded ? 0
                                      : CalculateCRC32(sentence.data(), sentence.size() - excluded);
}

bool HasValidCRC32(const Sentence& sentence) {
    return sentence.size() >= 4 && SentenceCRC32(sentence, true) == ReadLastUInt32(sentence);
}

} // namespace Bytes
