// Little-endian readers: a number at an offset into a sentence, on any machine, never outside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// All of these return 0 (or an empty text) when the range is not wholly inside the vector.
namespace Bytes {

using Sentence = std::vector<std::uint8_t>;

std::uint8_t ReadUInt8(const Sentence& sentence, std::size_t offset);
std::uint16_t ReadUInt16(const Sentence& sentence, std::size_t offset);
std::uint32_t ReadUInt32(const Sentence& sentence, std::size_t offset);
/// IEEE 754, 32 bits.
float ReadFloat(const Sentence& sentence, std::size_t offset);
/// IEEE 754, 64 bits, as two 32-bit words with the low one first.
double ReadDouble(const Sentence& sentence, std::size_t offset);
/// The last four bytes.
std::uint32_t ReadLastUInt32(const Sentence& sentence);

/// `count` bytes as a text, with one zero byte appended as part of it; the empty text when the
/// count is 0 or the range passes the end.
std::string ReadText(const Sentence& sentence, std::size_t offset, std::size_t count);

} // namespace Bytes
