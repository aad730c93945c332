// The high-precision L-band service's additional status word, part of the L-band status log.
#pragma once

#include <cstdint>
#include <string>

/// The low eight bits are flags of their own; only the first four have published names, whose
/// positions the receiver's documents do not settle beyond doubt.
class COmnistarHPAdditionalStatusWord {
public:
    constexpr explicit COmnistarHPAdditionalStatusWord(std::uint16_t word = 0) : m_word(word) {}

    std::uint16_t GetWord() const { return m_word; }
    /// `bit` from 0 to 7; false outside.
    bool GetFlag(unsigned bit) const;
    bool IsSolutionConverged() const { return GetFlag(0); }
    bool IsSatelliteListAvailable() const { return GetFlag(1); }
    bool IsHPAuthorised() const { return GetFlag(2); }
    bool IsXPAuthorised() const { return GetFlag(3); }
    /// What stands from bit 15 on: 1 while data is being updated.
    std::uint16_t GetUpdatingData() const;

    /// The class name and the named flags as name=value pairs.
    std::string AsText() const;
    /// AsText() as a line on standard output.
    void Print() const;

private:
    std::uint16_t m_word;
};
