#include "SatelliteSignals.h"

#include "Noise.h"
#include "Orbits.h"

#include "platform/Maths.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Sim {

namespace {

using Core::Maths::Degrees;

/// The receiver's channels of each system.
constexpr std::size_t kGPSChannels = 14;
constexpr std::size_t kGLONASSChannels = 12;
constexpr std::size_t kSBASChannels = 2;

/// What shines in from the side under a bridge: too few for a position.
constexpr std::size_t kSeenUnderBridge = 3;

std::size_t ChannelsOf(ESystem system) {
    switch (system) {
    case ESystem::gps:
        return kGPSChannels;
    case ESystem::glonass:
        return kGLONASSChannels;
    case ESystem::sbas:
        return kSBASChannels;
    }
    return 0;
}

double Elevation(const SVector& direction, const CLocalFrame& frame) {
    return Degrees(std::asin(std::clamp(Dot(direction, frame.Up()), -1.0, 1.0)));
}

double Azimuth(const SVector& direction, const CLocalFrame& frame) {
    const double angle =
        Degrees(std::atan2(Dot(direction, frame.East()), Dot(direction, frame.North())));
    return angle < 0.0 ? angle + 360.0 : angle;
}

/// Which of the satellites the receiver tracks, by their index.
std::vector<bool> Tracked(const std::vector<SSatellite>& satellites, bool isUnderBridge) {
    std::vector<std::size_t> order(satellites.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        return satellites[a].elevation > satellites[b].elevation;
    });
    std::vector<bool> tracked(satellites.size());
    for (const ESystem system : {ESystem::gps, ESystem::glonass, ESystem::sbas}) {
        std::vector<std::size_t> candidates;
        std::ranges::copy_if(order, std::back_inserter(candidates), [&](std::size_t i) {
            return satellites[i].system == system && satellites[i].elevation >= kElevationMask;
        });
        std::size_t limit = ChannelsOf(system);
        if (isUnderBridge) {
            std::ranges::reverse(candidates);
            limit = system == ESystem::gps ? kSeenUnderBridge : 0;
        }
        candidates.resize(std::min(candidates.size(), limit));
        for (const std::size_t i : candidates) {
            tracked[i] = true;
        }
    }
    return tracked;
}

void SetStrength(SSatellite& satellite, const CNoise& noise, std::int64_t milliseconds) {
    const double sine = std::sin(Core::Maths::Radians(satellite.elevation));
    const double fading = 0.5 * noise.White(milliseconds / 1000);
    if (satellite.system == ESystem::sbas) {
        satellite.cn0L1 = static_cast<float>(35.0 + 10.0 * sine + fading);
        return;
    }
    satellite.cn0L1 = static_cast<float>(37.0 + 13.0 * sine + fading);
    satellite.cn0L2 = static_cast<float>(31.0 + 13.0 * sine + fading);
}

/// Seconds since the satellite rose above the mask, or since the sky last opened or closed.
double LockTime(const SOrbit& orbit, std::int64_t milliseconds, const SReceiverMotion& receiver,
                const CLocalFrame& frame, std::int64_t sinceChange) {
    const auto isUpAt = [&](std::int64_t ago) {
        const SSight sight = SightOf(orbit, milliseconds - ago, receiver.position, {});
        return Elevation(sight.direction, frame) >= kElevationMask;
    };
    std::int64_t locked = 0;
    std::int64_t unlocked = sinceChange;
    if (isUpAt(sinceChange)) {
        locked = sinceChange;
    } else {
        while (unlocked - locked > 1) {
            const std::int64_t middle = std::midpoint(locked, unlocked);
            (isUpAt(middle) ? locked : unlocked) = middle;
        }
    }
    return static_cast<double>(locked) / 1000.0;
}

} // namespace

std::vector<SSatellite> SatellitesAt(std::uint64_t seed, std::int64_t milliseconds,
                                     const SReceiverMotion& receiver, const Track::SSky& sky) {
    const CLocalFrame frame(Core::Maths::ToGeodetic(receiver.position));
    std::vector<SSatellite> satellites;
    std::vector<const SOrbit*> orbits;
    for (const SOrbit& orbit : Constellation()) {
        const SSight sight = SightOf(orbit, milliseconds, receiver.position, receiver.velocity);
        const double elevation = Elevation(sight.direction, frame);
        if (elevation <= 0.0) {
            continue;
        }
        orbits.push_back(&orbit);
        satellites.push_back({.system = orbit.system,
                              .prn = orbit.prn,
                              .glonassFrequency = orbit.glonassFrequency,
                              .azimuth = Azimuth(sight.direction, frame),
                              .elevation = elevation,
                              .range = sight.range,
                              .rangeRate = sight.rangeRate});
    }
    const std::vector<bool> tracked = Tracked(satellites, sky.isUnderBridge);
    for (std::size_t i = 0; i < satellites.size(); ++i) {
        SSatellite& satellite = satellites[i];
        if (tracked[i]) {
            SetStrength(satellite, CNoise(seed, satellite.prn), milliseconds);
            satellite.isUsed = satellite.system != ESystem::sbas && !sky.isUnderBridge;
            satellite.lockTime = static_cast<float>(
                LockTime(*orbits[i], milliseconds, receiver, frame, sky.sinceChange));
        }
    }
    return satellites;
}

} // namespace Sim
