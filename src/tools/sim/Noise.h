// Deterministic noise: a pure function of a seed, of what it is for and of the moment.
#pragma once

#include <cstdint>

namespace Sim {

/// One sequence of noise; sequences of different seeds or numbers have nothing in common.
class CNoise {
public:
    CNoise(std::uint64_t seed, std::uint64_t sequence);

    /// Independent from one step to the next: mean 0, standard deviation 1, never beyond 3.
    double White(std::int64_t step) const;

    /// Smooth: mean 0, standard deviation 1 over a long time, never beyond 2. Its waves last about
    /// `period`, in milliseconds as is the moment.
    double Wave(std::int64_t milliseconds, std::int64_t period) const;

private:
    std::uint64_t m_key;
};

} // namespace Sim
