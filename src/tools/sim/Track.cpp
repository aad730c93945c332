#include "Track.h"

#include "platform/Maths.h"

#include <array>
#include <cmath>

namespace Sim::Track {

namespace {

constexpr double kPi = Core::Maths::Math<double>::kPi;
constexpr double kSpeed = 3.0; ///< over ground, metres per second
constexpr double kLength = kSpeed * static_cast<double>(kLap) / 1000.0;

constexpr double kRadius = 6.0;
/// The outer rows reach further, so that the headland passes clear of the turn between the inner.
constexpr double kOvershoot = 18.0;
constexpr double kHeadland = 4.0 * kRadius;
constexpr double kTurns = 4.0 * kPi * kRadius; ///< three half and two quarter circles
constexpr double kRow = (kLength - kTurns - kHeadland - 2.0 * kOvershoot) / 4.0;

/// A straight, or an arc to the left (curvature above 0) or right.
struct SPiece {
    double length;
    double curvature;
};

constexpr double kHalfTurn = kPi * kRadius;
constexpr double kLeft = 1.0 / kRadius;
constexpr double kRight = -kLeft;

constexpr std::array<SPiece, 10> kPieces = {{
    {kRow + kOvershoot, 0.0},
    {kHalfTurn, kLeft},
    {kRow, 0.0},
    {kHalfTurn, kRight},
    {kRow, 0.0},
    {kHalfTurn, kLeft},
    {kRow + kOvershoot, 0.0},
    {kHalfTurn / 2.0, kLeft},
    {kHeadland, 0.0},
    {kHalfTurn / 2.0, kLeft},
}};

/// The road above the headland, in milliseconds of the lap.
constexpr auto kBridgeEnd =
    static_cast<std::int64_t>((kLength - kHalfTurn / 2.0) / kSpeed * 1000.0);
constexpr auto kBridgeBegin = kBridgeEnd - static_cast<std::int64_t>(kHeadland / kSpeed * 1000.0);

struct SPose {
    double east = -kOvershoot;
    double north = 0.0;
    double direction = 0.0; ///< radians from east over north

    SPose After(double length, double curvature) const {
        if (curvature == 0.0) {
            return {east + length * std::cos(direction), north + length * std::sin(direction),
                    direction};
        }
        const double end = direction + curvature * length;
        return {east + (std::sin(end) - std::sin(direction)) / curvature,
                north - (std::cos(end) - std::cos(direction)) / curvature, end};
    }
};

SPose PoseAt(double distance) {
    SPose pose;
    for (const SPiece& piece : kPieces) {
        if (distance <= piece.length) {
            return pose.After(distance, piece.curvature);
        }
        pose = pose.After(piece.length, piece.curvature);
        distance -= piece.length;
    }
    return pose;
}

/// The ground rises and falls gently from west to east.
constexpr double kHillHeight = 0.8;
constexpr double kHillWaveNumber = 2.0 * kPi / 150.0;

} // namespace

SPoint At(std::int64_t milliseconds) {
    const SPose pose = PoseAt(kSpeed * static_cast<double>(milliseconds % kLap) / 1000.0);
    const double eastward = kSpeed * std::cos(pose.direction);
    const double hill = kHillWaveNumber * pose.east;
    return {
        .position = {pose.east, pose.north, kHillHeight * std::sin(hill)},
        .velocity = {eastward, kSpeed * std::sin(pose.direction),
                     kHillHeight * kHillWaveNumber * std::cos(hill) * eastward},
    };
}

SSky SkyAt(std::int64_t milliseconds) {
    const std::int64_t ofLap = milliseconds % kLap;
    if (ofLap >= kBridgeBegin && ofLap < kBridgeEnd) {
        return {true, ofLap - kBridgeBegin};
    }
    return {false, (ofLap - kBridgeEnd + kLap) % kLap};
}

} // namespace Sim::Track
