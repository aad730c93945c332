// The high-precision L-band service's status word, part of the L-band status log.
#pragma once

#include <cstdint>
#include <string>

/// One flag a bit; the bits are those of the receiver's manual (LBANDSTAT, "HP/XP status word").
class COmnistarHPStatusWord {
public:
    constexpr explicit COmnistarHPStatusWord(std::uint32_t word = 0) : m_word(word) {}

    std::uint32_t GetWord() const { return m_word; }
    bool IsSubscriptionExpired() const;
    bool IsOutOfRegion() const;
    bool HasWetError() const;
    bool HasLinkError() const;
    bool HasNoMeasurements() const;
    bool HasNoEphemeris() const;
    bool HasNoInitialPosition() const;
    bool HasNoTimeSet() const;
    bool HasVelocityError() const;
    bool HasNoBaseStations() const;
    bool HasNoMappingMessage() const;
    bool IsInStaticInitialisation() const;
    bool IsUpdatingData() const;

    /// The class name and every flag as a name=value pair.
    std::string AsText() const;
    /// AsText() as a line on standard output.
    void Print() const;

private:
    std::uint32_t m_word;
};
