// Mathematical and geodetic constants.
#pragma once

namespace Core::Maths {

template <typename T>
struct Math {
    static constexpr T kPi = static_cast<T>(3.14159265358979323846264338327950288L);
    static constexpr T kDegreesPerRadian = static_cast<T>(180) / kPi;
    static constexpr T kRadiansPerDegree = kPi / static_cast<T>(180);

    /// WGS-84 ellipsoid (NGA.STND.0036): semi-major axis in metres and flattening are its defining
    /// figures; the others follow from them (in double: a long double of the PowerPC's kind cannot
    /// be divided in a constant).
    static constexpr T kWGS84SemiMajorAxis = static_cast<T>(6378137.0);
    static constexpr T kWGS84Flattening = static_cast<T>(1.0 / 298.257223563);
    static constexpr T kWGS84SemiMinorAxis =
        static_cast<T>(6378137.0 * (1.0 - 1.0 / 298.257223563));
    /// First eccentricity squared, f (2 - f).
    static constexpr T kWGS84EccentricitySquared =
        static_cast<T>((1.0 / 298.257223563) * (2.0 - 1.0 / 298.257223563));
};

} // namespace Core::Maths
