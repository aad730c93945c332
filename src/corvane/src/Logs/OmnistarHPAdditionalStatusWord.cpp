#include "Logs/OmnistarHPAdditionalStatusWord.h"

#include "Logs/NamedBits.h"

namespace {

constexpr SNamedBit kNamedFlags[] = {
    {0, "SolutionConverged"},
    {1, "SatelliteListAvailable"},
    {2, "HPAuthorised"},
    {3, "XPAuthorised"},
};

} // namespace

bool COmnistarHPAdditionalStatusWord::GetFlag(unsigned bit) const {
    return bit < 8 && IsBitSet(m_word, bit);
}

std::uint16_t COmnistarHPAdditionalStatusWord::GetUpdatingData() const {
    return static_cast<std::uint16_t>(m_word >> 15);
}

std::string COmnistarHPAdditionalStatusWord::AsText() const {
    return "[COmnistarHPAdditionalStatusWord]:," + NamedBitPairs(m_word, kNamedFlags);
}

void COmnistarHPAdditionalStatusWord::Print() const {
    PrintLine(AsText());
}
