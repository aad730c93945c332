// Mathematical and geodetic constants.
#pragma once

namespace Core::Maths {

template <typename T>
struct Math {
    static constexpr T kPi = static_cast<T>(3.14159265358979323846264338327950288L);

    /// WGS-84 ellipsoid (NGA.STND.0036): semi-major axis in metres and flattening are its defining
    /// figures; the others follow from them (in double: a long double of the PowerPC's kind cannot
    /// be divided in a constant).
    static constexpr T WGS_A = static_cast<T>(6378137.0);
    static constexpr T WGS_F = static_cast<T>(1.0 / 298.257223563);
    /// Semi-minor axis in metres.
    static constexpr T WGS_B = static_cast<T>(6378137.0 * (1.0 - 1.0 / 298.257223563));
    /// First eccentricity squared, f (2 - f).
    static constexpr T WGS_E2 = static_cast<T>((1.0 / 298.257223563) * (2.0 - 1.0 / 298.257223563));
    /// Second eccentricity squared, e2 / (1 - e2).
    static constexpr T WGS_ES2 =
        static_cast<T>((1.0 / 298.257223563) * (2.0 - 1.0 / 298.257223563) /
                       ((1.0 - 1.0 / 298.257223563) * (1.0 - 1.0 / 298.257223563)));
};

/// An angle given in radians.
template <typename T>
constexpr T Degrees(T radians) {
    return radians * (static_cast<T>(180) / Math<T>::kPi);
}

/// An angle given in degrees.
template <typename T>
constexpr T Radians(T degrees) {
    return degrees * (Math<T>::kPi / static_cast<T>(180));
}

} // namespace Core::Maths
