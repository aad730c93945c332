#include "World.h"

#include "LocalFrame.h"
#include "Moment.h"
#include "Noise.h"
#include "SatelliteSignals.h"
#include "Solutions.h"
#include "Track.h"

#include "platform/Maths.h"

#include <cmath>

namespace Sim {

namespace {

using Core::Maths::Radians;

/// Farmland south-west of Paris, where EGNOS is received.
constexpr double kLatitude = 48.15;
constexpr double kLongitude = 1.75;
constexpr double kHeight = 184.0;
constexpr float kUndulation = 45.0F;

/// East, north and up of the field, metres.
constexpr SVector kBase = {2400.0, 1800.0, 12.0};

/// Seconds: a steered clock stays within some tens of nanoseconds.
constexpr double kClockError = 20e-9;
constexpr std::int64_t kClockPeriod = 1'800'000;
constexpr std::uint64_t kClockNoise = 6000;

struct SField {
    SGeodetic origin = {Radians(kLatitude), Radians(kLongitude), kHeight};
    CLocalFrame frame{origin};

    SVector Place(const SVector& local) const {
        return Core::Maths::ToECEF(origin) + frame.ToECEFDirection(local);
    }
};

} // namespace

CWorld::CWorld(std::uint64_t seed) : m_seed(seed) {
}

SState CWorld::At(STime time) const {
    const Milliseconds milliseconds = SinceGPSEpoch(time);
    const SField field;
    const Track::SPoint point = Track::At(milliseconds);
    const Track::SSky sky = Track::SkyAt(milliseconds);
    const SReceiverMotion vehicle = {field.Place(point.position),
                                     field.frame.ToECEFDirection(point.velocity)};
    const SVector base = field.Place(kBase);
    const double heading = Core::Maths::Degrees(std::atan2(point.velocity.x, point.velocity.y));

    SState state;
    state.time = AsTime(milliseconds);
    state.x = vehicle.position.x;
    state.y = vehicle.position.y;
    state.z = vehicle.position.z;
    state.velocityX = vehicle.velocity.x;
    state.velocityY = vehicle.velocity.y;
    state.velocityZ = vehicle.velocity.z;
    state.heading = heading < 0.0 ? heading + 360.0 : heading;
    state.isUnderBridge = sky.isUnderBridge;
    state.satellites = SatellitesAt(m_seed, milliseconds, vehicle, sky);
    state.baseX = base.x;
    state.baseY = base.y;
    state.baseZ = base.z;
    state.undulation = kUndulation;
    state.clockOffset = kClockError * CNoise(m_seed, kClockNoise).Wave(milliseconds, kClockPeriod);
    SetSolutions(state, m_seed, milliseconds, field.frame, sky);
    return state;
}

} // namespace Sim
