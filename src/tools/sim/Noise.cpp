#include "Noise.h"

#include "Random.h"

#include "platform/Maths.h"

#include <cmath>

namespace Sim {

namespace {

std::uint64_t Mix(std::uint64_t value) {
    return CRandom(value).Next();
}

} // namespace

CNoise::CNoise(std::uint64_t seed, std::uint64_t sequence) : m_key(Mix(Mix(seed) ^ sequence)) {
}

double CNoise::White(std::int64_t step) const {
    // Three evenly spread numbers from -1 to 1 have a variance of a third each.
    CRandom random(Mix(m_key ^ static_cast<std::uint64_t>(step)));
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        sum += 2.0 * random.Fraction() - 1.0;
    }
    return sum;
}

double CNoise::Wave(std::int64_t milliseconds, std::int64_t period) const {
    // Two sines of height 1 have a variance of a half each.
    CRandom random(m_key);
    double sum = 0.0;
    for (int i = 0; i < 2; ++i) {
        const std::int64_t own =
            period + std::llround(0.5 * random.Fraction() * static_cast<double>(period));
        const double turns =
            static_cast<double>(milliseconds % own) / static_cast<double>(own) + random.Fraction();
        sum += std::sin(2.0 * Core::Maths::Math<double>::kPi * turns);
    }
    return sum;
}

} // namespace Sim
