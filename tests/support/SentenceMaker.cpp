#include "support/SentenceMaker.h"

#include "support/LiteralFraming.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace SentenceMaker {

ByteVector Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

ByteVector FromHex(std::string_view digits) {
    ByteVector bytes;
    std::string pair;
    for (const char digit : digits) {
        if (std::isxdigit(static_cast<unsigned char>(digit)) != 0) {
            pair += digit;
        }
        if (pair.size() == 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::strtoul(pair.c_str(), nullptr, 16)));
            pair.clear();
        }
    }
    return bytes;
}

ByteVector WithCRC(ByteVector head) {
    std::uint32_t crc = Literal::BitwiseCRC32(head.data(), head.size());
    for (int i = 0; i < 4; ++i, crc >>= 8) {
        head.push_back(static_cast<std::uint8_t>(crc));
    }
    return head;
}

ByteVector Binary(std::uint16_t identifier, const ByteVector& message, std::uint8_t headerLength) {
    ByteVector sentence(std::max<std::size_t>(headerLength, 10));
    constexpr std::array<std::uint8_t, 3> kSync = {0xAA, 0x44, 0x12};
    std::copy(kSync.begin(), kSync.end(), sentence.begin());
    sentence[3] = headerLength;
    sentence[4] = static_cast<std::uint8_t>(identifier);
    sentence[5] = static_cast<std::uint8_t>(identifier >> 8);
    sentence[8] = static_cast<std::uint8_t>(message.size());
    sentence[9] = static_cast<std::uint8_t>(message.size() >> 8);
    sentence.insert(sentence.end(), message.begin(), message.end());
    return WithCRC(std::move(sentence));
}

std::string ASCII(std::string_view text) {
    const ByteVector bytes = Bytes(text);
    std::array<char, 9> crc{};
    std::snprintf(crc.data(), crc.size(), "%08x",
                  static_cast<unsigned>(Literal::BitwiseCRC32(bytes.data(), bytes.size())));
    return std::string("#").append(text).append("*").append(crc.data());
}

std::string NMEA(std::string_view text) {
    unsigned checksum = 0;
    for (const char character : text) {
        checksum ^= static_cast<unsigned char>(character);
    }
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", checksum);
    return std::string("$").append(text).append("*").append(digits.data());
}

} // namespace SentenceMaker
