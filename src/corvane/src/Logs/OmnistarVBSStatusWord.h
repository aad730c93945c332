// The virtual-base-station L-band service's status word, part of the L-band status log.
#pragma once

#include <cstdint>
#include <string>

/// The bits are those of the receiver's manual (LBANDSTAT, "VBS status word").
class COmnistarVBSStatusWord {
public:
    constexpr explicit COmnistarVBSStatusWord(std::uint16_t word = 0) : m_word(word) {}

    std::uint16_t GetWord() const { return m_word; }
    /// 1 while the link to the service is in error, otherwise 0: the word has no finer state.
    unsigned GetSignalState() const;
    bool IsSubscriptionExpired() const;
    bool IsOutOfRegion() const;
    bool HasWetError() const;
    bool HasNoRemoteSites() const;
    bool HasNoAlmanac() const;
    bool HasNoPosition() const;
    bool HasNoTime() const;
    bool IsUpdatingData() const;

    /// The class name and every flag as a name=value pair.
    std::string AsText() const;
    /// AsText() as a line on standard output.
    void Print() const;

private:
    std::uint16_t m_word;
};
