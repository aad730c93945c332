// Places on the Earth, from Earth-centred Earth-fixed to geodetic coordinates and back (WGS-84).
#pragma once

#include "platform/Maths.h"

#include <cmath>

namespace Core::Maths {

using WGS84 = Math<double>;

/// Along the Earth-centred Earth-fixed axes, or those of a frame of its own.
struct SVector {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend SVector operator+(const SVector& a, const SVector& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend SVector operator-(const SVector& a, const SVector& b) {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend SVector operator*(double factor, const SVector& a) {
        return {factor * a.x, factor * a.y, factor * a.z};
    }
};

struct SGeodetic {
    double latitude = 0.0;  ///< radians
    double longitude = 0.0; ///< radians
    double height = 0.0;    ///< metres above the ellipsoid
};

/// In metres, exact but for rounding.
inline SVector ToECEF(const SGeodetic& place) {
    const double sine = std::sin(place.latitude);
    const double normal = WGS84::WGS_A / std::sqrt(1.0 - WGS84::WGS_E2 * sine * sine);
    const double p = (normal + place.height) * std::cos(place.latitude);
    return {p * std::cos(place.longitude), p * std::sin(place.longitude),
            (normal * (1.0 - WGS84::WGS_E2) + place.height) * sine};
}

/// From metres. By Bowring's method, repeated: exact to the rounding of doubles, also at the poles
/// and at any height that an antenna may have.
inline SGeodetic ToGeodetic(const SVector& place) {
    // Two or three are enough on the Earth, where each makes the error a thousandth.
    constexpr int kIterations = 10;
    const double p = std::hypot(place.x, place.y);
    double reduced = std::atan2(WGS84::WGS_A * place.z, WGS84::WGS_B * p);
    double latitude = 0.0;
    for (int i = 0; i < kIterations; ++i) {
        const double sine = std::sin(reduced);
        const double cosine = std::cos(reduced);
        latitude = std::atan2(place.z + WGS84::WGS_ES2 * WGS84::WGS_B * sine * sine * sine,
                              p - WGS84::WGS_E2 * WGS84::WGS_A * cosine * cosine * cosine);
        reduced = std::atan2((1.0 - WGS84::WGS_F) * std::sin(latitude), std::cos(latitude));
    }
    const double sine = std::sin(latitude);
    // Unlike p / cos(latitude), well defined at the poles as well.
    const double height = p * std::cos(latitude) + place.z * sine -
                          WGS84::WGS_A * std::sqrt(1.0 - WGS84::WGS_E2 * sine * sine);
    return {latitude, std::atan2(place.y, place.x), height};
}

inline double DistanceBetween(const SVector& a, const SVector& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

} // namespace Core::Maths
