// What a navigator wants to know, worked out from the Earth-centred solution.
#pragma once

#include "hub/Messages.h"

#include <optional>
#include <string_view>

namespace Hub {

/// Metres, metres per second, degrees. What the solution does not tell has no value.
struct SNavigation {
    double utc = 0.0;       ///< of the solution, seconds since the Unix epoch
    double latitude = 0.0;  ///< geodetic, WGS-84, north positive
    double longitude = 0.0; ///< east positive
    double height = 0.0;    ///< above the ellipsoid
    std::optional<double> heightAboveGeoid;
    double velocityEast = 0.0;
    double velocityNorth = 0.0;
    double velocityUp = 0.0;
    double speed = 0.0; ///< over ground
    /// Clockwise from true north, from 0 to below 360; not below 0.1 m/s, where it is noise.
    std::optional<double> course;
    /// Standard deviations. The solution tells those of X, Y and Z but not how they hang together,
    /// which is left out.
    double sigmaEast = 0.0;
    double sigmaNorth = 0.0;
    double sigmaUp = 0.0;
    /// The root of the sum of the squares of the first two.
    double sigmaHorizontal = 0.0;
};

/// Nothing for a solution without a position, or with a coordinate that is no number.
std::optional<SNavigation> Navigate(const SSolution& solution, std::optional<double> geoid);

/// How good the position is, in words: "no position", "usable", "good", "best".
std::string_view QualityWords(std::int32_t positionQuality);

/// How the position was found, in words, such as "narrow-lane integer (RTK fixed)".
std::string_view FixWords(const SSolution& solution);

/// The same as GGA's quality indicator (NMEA 0183): 0 none, 1 single, 2 differential,
/// 4 RTK integer, 5 RTK float.
int FixIndicator(const SSolution& solution);

/// Where a point lies from another one: metres.
struct SEastNorthUp {
    double east = 0.0;
    double north = 0.0;
    double up = 0.0;
};
SEastNorthUp Between(const SNavigation& from, const SNavigation& to);

} // namespace Hub
