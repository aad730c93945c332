// Places on the Earth, as the daemon takes them and as people write them (WGS-84).
#pragma once

namespace Ctl {

/// Earth-centred, Earth-fixed; metres.
struct SCartesian {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

struct SGeodetic {
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double height = 0.0;    ///< metres above the ellipsoid
};

SCartesian ToCartesian(const SGeodetic& place);

/// Exact to the rounding of doubles, also at the poles and at any height an antenna may have.
SGeodetic ToGeodetic(const SCartesian& place);

/// Metres.
double DistanceBetween(const SCartesian& a, const SCartesian& b);

} // namespace Ctl
