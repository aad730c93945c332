// Bits of a status word with their names, and the name=value texts made of them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

struct SNamedBit {
    unsigned bit; ///< 0 is the lowest
    const char* name;
};

constexpr bool IsBitSet(std::uint32_t word, unsigned bit) {
    return ((word >> bit) & 1U) != 0;
}

/// "name=1,name=0": one pair per table row, in the table's order.
std::string NamedBitPairs(std::uint32_t word, std::span<const SNamedBit> bits);

/// Writes the text and a line end to standard output.
void PrintLine(const std::string& text);
