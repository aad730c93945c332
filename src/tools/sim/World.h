// The simulated truth: where the vehicle is, which satellites it sees, how well they fix it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Sim {

/// GPS time: week without roll-over and milliseconds of week.
struct STime {
    std::uint32_t week = 0;
    std::uint32_t milliseconds = 0;
};

enum class ESystem { gps, glonass, sbas };

/// A satellite above the horizon.
struct SSatellite {
    ESystem system = ESystem::gps;
    /// As the receiver numbers them: GPS 1 to 32, GLONASS 38 to 61 (slot + 37), SBAS 120 to 138.
    std::uint16_t prn = 0;
    std::int8_t glonassFrequency = 0; ///< frequency number, -7 to 6
    double azimuth = 0.0;             ///< degrees, 0 to below 360, from north over east
    double elevation = 0.0;           ///< degrees
    double range = 0.0;               ///< metres, geometric
    double rangeRate = 0.0;           ///< metres per second
    float cn0L1 = 0.0F;               ///< dB-Hz; 0 where it is not tracked
    float cn0L2 = 0.0F;
    bool isUsed = false;   ///< in the solution
    float lockTime = 0.0F; ///< seconds of uninterrupted tracking
};

/// What the receiver computes. The numbers are the receiver's own enumerations.
struct SSolution {
    std::uint32_t status = 0; ///< 0 computed, 1 insufficient observations
    std::uint32_t type = 0;   ///< 16 single, 17 differential, 18 SBAS, 34 and 50 narrow-lane, ...
    double x = 0.0;           ///< metres ECEF
    double y = 0.0;
    double z = 0.0;
    double velocityX = 0.0; ///< metres per second
    double velocityY = 0.0;
    double velocityZ = 0.0;
    float deviationX = 0.0F; ///< metres
    float deviationY = 0.0F;
    float deviationZ = 0.0F;
    float velocityDeviation = 0.0F; ///< metres per second, of each axis
    float velocityLatency = 0.0F;   ///< seconds
    float differentialAge = 0.0F;   ///< seconds
    float solutionAge = 0.0F;       ///< seconds
    std::uint8_t satellitesTracked = 0;
    std::uint8_t satellitesUsed = 0;
};

/// Everything at one moment.
struct SState {
    STime time;
    double x = 0.0; ///< the vehicle itself, metres ECEF
    double y = 0.0;
    double z = 0.0;
    double velocityX = 0.0;
    double velocityY = 0.0;
    double velocityZ = 0.0;
    double heading = 0.0; ///< degrees over ground
    bool isUnderBridge = false;
    std::vector<SSatellite> satellites;
    SSolution pseudorange; ///< PSRPOS, PSRXYZ
    SSolution rtk;         ///< RTKPOS, RTKXYZ
    SSolution pdp;         ///< PDPPOS, PDPXYZ
    double baseX = 0.0;    ///< the reference station, metres ECEF
    double baseY = 0.0;
    double baseZ = 0.0;
    float undulation = 0.0F;  ///< geoid above the ellipsoid, metres
    double clockOffset = 0.0; ///< seconds by which the receiver's clock is ahead
};

/// A pure function of the seed and of time: the same seed gives the same world, and a moment is the
/// same however one comes to it.
class CWorld {
public:
    explicit CWorld(std::uint64_t seed);

    SState At(STime time) const;

private:
    std::uint64_t m_seed;
};

} // namespace Sim
