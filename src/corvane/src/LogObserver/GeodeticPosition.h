// From Earth-centred Earth-fixed to geodetic coordinates.
#pragma once

/// On the WGS-84 ellipsoid.
struct SGeodeticPosition {
    double latitude = 0.0;  ///< radians, -pi/2 to pi/2
    double longitude = 0.0; ///< radians, -pi to pi
    double height = 0.0;    ///< metres above the ellipsoid

    /// By Bowring's method in a single step ("Transformation from spatial to geographical
    /// coordinates", Survey Review 181, 1976); metres. Its errors are given in
    /// docs/published.md. Coordinates that are no numbers give results that are none.
    static SGeodeticPosition FromECEF(double x, double y, double z);
};
