// How well the receiver tracks the L-band signal, part of the L-band status log.
#pragma once

#include <cstdint>
#include <string>

/// The bits are those of the receiver's manual (LBANDSTAT, "L-band signal tracking status word").
class CLBandSignalTracking {
public:
    constexpr explicit CLBandSignalTracking(std::uint16_t word = 0) : m_word(word) {}

    std::uint16_t GetWord() const { return m_word; }
    /// 0 searching, 1 pull-in, 2 tracking, 3 idle.
    unsigned GetTrackingState() const { return m_word & 3U; }
    bool IsBitTimingLocked() const;
    bool IsPhaseLocked() const;
    bool IsDCOffsetUnlocked() const;
    bool IsAGCUnlocked() const;
    std::uint8_t GetError() const { return static_cast<std::uint8_t>(m_word >> 15); }

    /// The class name and every value as a name=value pair.
    std::string AsText() const;
    /// AsText() as a line on standard output.
    void Print() const;

private:
    std::uint16_t m_word;
};
