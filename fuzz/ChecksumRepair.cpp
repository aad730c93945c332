#include "ChecksumRepair.h"

#include "support/LiteralFraming.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <numeric>

namespace {

using ByteVector = std::vector<std::uint8_t>;
using Iterator = ByteVector::iterator;

void WriteCRC(Iterator begin, Iterator crc) {
    std::uint32_t value = Literal::BitwiseCRC32(&*begin, static_cast<std::size_t>(crc - begin));
    for (int i = 0; i < 4; ++i, ++crc, value >>= 8) {
        *crc = static_cast<std::uint8_t>(value);
    }
}

void WriteDigits(Iterator where, unsigned value, int count) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%0*X", count, value);
    std::copy_n(digits, count, where);
}

/// Returns where to go on.
Iterator RepairBinary(Iterator begin, Iterator end) {
    if (end - begin < 11 || begin[1] != 0x44 || begin[2] != 0x12) {
        return begin + 1;
    }
    const std::ptrdiff_t length = std::max(begin[3] + begin[8] + 256 * begin[9] + 4, 11);
    if (end - begin < length) {
        return begin + 1;
    }
    WriteCRC(begin, begin + length - 4);
    return begin + length;
}

Iterator RepairText(Iterator begin, Iterator end) {
    const Iterator lineEnd = std::find_if(begin + 1, end, [begin](std::uint8_t byte) {
        return byte == 13 || byte == 10 || byte == *begin;
    });
    const Iterator text = begin + 1;
    if (*begin == '$') {
        const Iterator star = std::find(text, lineEnd, std::uint8_t{'*'});
        if (lineEnd - star > 2 && star != text) {
            WriteDigits(star + 1, std::accumulate(text, star, 0U, std::bit_xor<>()), 2);
        }
    } else if (lineEnd - text > 8 && *(lineEnd - 9) == '*') {
        const auto size = static_cast<std::size_t>(lineEnd - 9 - text);
        WriteDigits(lineEnd - 8, Literal::BitwiseCRC32(&*text, size), 8);
    }
    return lineEnd;
}

} // namespace

void RepairStream(ByteVector& stream) {
    for (Iterator at = stream.begin(); at != stream.end();) {
        if (*at == 0xAA) {
            at = RepairBinary(at, stream.end());
        } else if (*at == '#' || *at == '$') {
            at = RepairText(at, stream.end());
        } else {
            ++at;
        }
    }
}

void RepairCRC(ByteVector& sentence) {
    if (sentence.size() >= 4) {
        WriteCRC(sentence.begin(), sentence.end() - 4);
    }
}
