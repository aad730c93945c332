// The receiver's CRC-32, which closes every binary and ASCII log.
#pragma once

#include "Bytes/ByteReaders.h"

namespace Bytes {

/// Reflected polynomial 0xEDB88320, start value 0, no final inversion (the receiver's manual,
/// "32-bit CRC"). A length of 0 gives 0.
std::uint32_t CalculateCRC32(const std::uint8_t* bytes, std::size_t length);

/// The CRC of a whole sentence, or of all of it but its last four bytes; a sentence of fewer than
/// four bytes has nothing to exclude them from and gives 0.
std::uint32_t SentenceCRC32(const Sentence& sentence, bool excludeLastFour);

/// Whether the last four bytes, read little-endian, are the CRC of those before them. Never for a
/// sentence of fewer than four bytes.
bool HasValidCRC32(const Sentence& sentence);

} // namespace Bytes
