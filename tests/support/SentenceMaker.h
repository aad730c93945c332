// Sentences with right checksums, for tests that need some; the checksums are the literal model's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace SentenceMaker {

using ByteVector = std::vector<std::uint8_t>;

ByteVector Bytes(std::string_view text);

/// Pairs of hexadecimal digits, blanks between them or not.
ByteVector FromHex(std::string_view digits);

/// `head` and its CRC-32 behind it, whatever `head` is.
ByteVector WithCRC(ByteVector head);

/// A binary sentence: sync bytes, header (of which only the lengths and the identifier mean
/// something), message, CRC. The header has at least 10 bytes whatever length it claims.
ByteVector Binary(std::uint16_t identifier, const ByteVector& message,
                  std::uint8_t headerLength = 28);

/// `#text*crc`, without an end of line.
std::string ASCII(std::string_view text);

/// `$text*checksum`, without an end of line.
std::string NMEA(std::string_view text);

} // namespace SentenceMaker
