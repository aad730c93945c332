// Gives damaged sentences right checksums, which no fuzzer would ever guess; for both targets.
#pragma once

#include <cstdint>
#include <vector>

/// Walks through the stream and makes the checksum of whatever looks like a sentence right, in
/// place, where there is room for one.
void RepairStream(std::vector<std::uint8_t>& stream);

/// Makes the last four bytes the CRC of those before them.
void RepairCRC(std::vector<std::uint8_t>& sentence);
