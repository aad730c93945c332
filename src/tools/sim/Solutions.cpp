#include "Solutions.h"

#include "Noise.h"

#include "Logs/NovatelOEMV/PositionType.h"

#include <algorithm>
#include <cmath>

namespace Sim {

namespace {

using namespace Novatel::PositionType;

constexpr std::uint32_t kInsufficientObservations = 1;

/// Milliseconds. A whole number of these makes a week.
constexpr std::int64_t kCorrectionCycle = 600'000;
constexpr std::int64_t kOutage = 30'000;
constexpr std::int64_t kFloatAfterOutage = 30'000;
constexpr std::int64_t kSingleAfterBridge = 5'000;
constexpr std::int64_t kFloatAfterBridge = 20'000;

/// Sequences of noise; those of the satellites are their numbers, up to 138.
enum ESequence : std::uint64_t {
    kPseudorangeNoise = 1000,
    kFloatNoise = 2000,
    kIntegerNoise = 3000,
    kPDPNoise = 4000,
    kScaleNoise = 5000,
};

/// How far a kind of solution errs.
struct SErrors {
    ESequence sequence;
    double horizontal;   ///< metres, of each axis
    double vertical;     ///< metres
    double velocity;     ///< metres per second, of each axis
    std::int64_t period; ///< of the position's waves, milliseconds
    double latency;      ///< of the velocity, seconds
};

constexpr SErrors kPseudorangeErrors = {kPseudorangeNoise, 0.9, 1.6, 0.03, 90'000, 0.15};
constexpr SErrors kFloatErrors = {kFloatNoise, 0.15, 0.25, 0.02, 40'000, 0.05};
/// All three together: below 1 cm, and so errors, of twice that at most, below 2 cm.
constexpr SErrors kIntegerErrors = {kIntegerNoise, 0.005, 0.007, 0.01, 60'000, 0.05};
constexpr SErrors kPDPErrors = {kPDPNoise, 0.6, 1.0, 0.02, 1'200'000, 0.15};

std::uint32_t RTKType(std::int64_t milliseconds, const Track::SSky& sky) {
    const std::int64_t sinceOutage = milliseconds % kCorrectionCycle - kOutage;
    if (sinceOutage < 0 || sky.sinceChange < kSingleAfterBridge) {
        return kSingle;
    }
    const bool isFloat =
        sinceOutage < kFloatAfterOutage || sky.sinceChange < kSingleAfterBridge + kFloatAfterBridge;
    return isFloat ? kNarrowFloat : kNarrowInteger;
}

class CSolver {
public:
    CSolver(const SState& state, std::uint64_t seed, std::int64_t milliseconds,
            const CLocalFrame& frame)
        : m_state(state), m_seed(seed), m_milliseconds(milliseconds), m_frame(frame) {
        for (const SSatellite& satellite : state.satellites) {
            m_tracked = static_cast<std::uint8_t>(m_tracked + (satellite.cn0L1 > 0.0F ? 1 : 0));
            m_used = static_cast<std::uint8_t>(m_used + (satellite.isUsed ? 1 : 0));
        }
    }

    SSolution None() const {
        SSolution solution;
        solution.status = kInsufficientObservations;
        solution.satellitesTracked = m_tracked;
        return solution;
    }

    SSolution Of(std::uint32_t type, const SErrors& errors) const {
        SSolution solution;
        solution.type = type;
        SetPosition(solution, errors);
        solution.velocityX = m_state.velocityX + errors.velocity * White(errors, 3);
        solution.velocityY = m_state.velocityY + errors.velocity * White(errors, 4);
        solution.velocityZ = m_state.velocityZ + errors.velocity * White(errors, 5);
        solution.velocityDeviation = static_cast<float>(errors.velocity);
        solution.velocityLatency = static_cast<float>(errors.latency);
        solution.satellitesTracked = m_tracked;
        solution.satellitesUsed = m_used;
        return solution;
    }

private:
    CNoise Sequence(const SErrors& errors, std::uint64_t axis) const {
        return {m_seed, errors.sequence + axis};
    }
    double Wave(const SErrors& errors, std::uint64_t axis) const {
        return Sequence(errors, axis).Wave(m_milliseconds, errors.period);
    }
    double White(const SErrors& errors, std::uint64_t axis) const {
        return Sequence(errors, axis).White(m_milliseconds);
    }

    void SetPosition(SSolution& solution, const SErrors& errors) const {
        // Between 0.8 and 1: the geometry is better at some times than at others.
        const double scale = 0.9 + 0.05 * CNoise(m_seed, kScaleNoise).Wave(m_milliseconds, 900'000);
        const double horizontal = scale * scale * errors.horizontal * errors.horizontal;
        const double vertical = scale * scale * errors.vertical * errors.vertical;
        const SVector variances = m_frame.ToECEFVariances({horizontal, horizontal, vertical});
        solution.deviationX = static_cast<float>(std::sqrt(variances.x));
        solution.deviationY = static_cast<float>(std::sqrt(variances.y));
        solution.deviationZ = static_cast<float>(std::sqrt(variances.z));
        solution.x = m_state.x + std::sqrt(variances.x) * Wave(errors, 0);
        solution.y = m_state.y + std::sqrt(variances.y) * Wave(errors, 1);
        solution.z = m_state.z + std::sqrt(variances.z) * Wave(errors, 2);
    }

    const SState& m_state;
    std::uint64_t m_seed;
    std::int64_t m_milliseconds;
    const CLocalFrame& m_frame;
    std::uint8_t m_tracked = 0;
    std::uint8_t m_used = 0;
};

/// Corrections come once a second and are half a second on their way.
float DifferentialAge(std::int64_t milliseconds) {
    constexpr std::int64_t kDelay = 500;
    return static_cast<float>(kDelay + (milliseconds - kDelay) % 1000) / 1000.0F;
}

SSolution RTKSolution(const CSolver& solver, std::int64_t milliseconds, const Track::SSky& sky) {
    const std::uint32_t type = RTKType(milliseconds, sky);
    if (type == kSingle) {
        return solver.Of(type, kPseudorangeErrors);
    }
    SSolution solution = solver.Of(type, type == kNarrowInteger ? kIntegerErrors : kFloatErrors);
    solution.differentialAge = DifferentialAge(milliseconds);
    return solution;
}

} // namespace

void SetSolutions(SState& state, std::uint64_t seed, std::int64_t milliseconds,
                  const CLocalFrame& frame, const Track::SSky& sky) {
    const CSolver solver(state, seed, milliseconds, frame);
    if (sky.isUnderBridge) {
        state.pseudorange = solver.None();
        state.rtk = solver.None();
        state.pdp = solver.Of(kPropagated, kPDPErrors);
        state.pdp.solutionAge = static_cast<float>(sky.sinceChange) / 1000.0F;
        return;
    }
    state.pseudorange = solver.Of(kSingle, kPseudorangeErrors);
    state.rtk = RTKSolution(solver, milliseconds, sky);
    state.pdp = solver.Of(kSingle, kPDPErrors);
}

} // namespace Sim
