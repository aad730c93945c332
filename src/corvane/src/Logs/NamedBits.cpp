#include "Logs/NamedBits.h"

#include <cstdio>

std::string NamedBitPairs(std::uint32_t word, std::span<const SNamedBit> bits) {
    std::string text;
    for (const SNamedBit& row : bits) {
        if (!text.empty()) {
            text += ',';
        }
        text += row.name;
        text += IsBitSet(word, row.bit) ? "=1" : "=0";
    }
    return text;
}

void PrintLine(const std::string& text) {
    std::fputs((text + '\n').c_str(), stdout);
}
