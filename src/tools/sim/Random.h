// Chance that is the same on every machine for the same seed.
#pragma once

#include <cstdint>

namespace Sim {

/// SplitMix64 (Steele, Lea and Flood 2014): small, and good enough for faults and noise.
class CRandom {
public:
    explicit CRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t Next() {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    /// From 0 to below `count`, which is not 0.
    std::uint64_t Below(std::uint64_t count) { return Next() % count; }

    /// From 0 to below 1.
    double Fraction() { return static_cast<double>(Next() >> 11U) * 0x1p-53; }

    bool Happens(double probability) { return probability > 0.0 && Fraction() < probability; }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Next() >> 56U); }

private:
    std::uint64_t m_state;
};

} // namespace Sim
