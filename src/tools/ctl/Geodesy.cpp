#include "Geodesy.h"

#include "platform/Maths.h"

#include <cmath>

namespace Ctl {

namespace {

using WGS84 = Core::Maths::Math<double>;

/// Two or three are enough on the Earth, where each makes the error a thousandth.
constexpr int kIterations = 10;

} // namespace

SCartesian ToCartesian(const SGeodetic& place) {
    const double latitude = Core::Maths::Radians(place.latitude);
    const double longitude = Core::Maths::Radians(place.longitude);
    const double sine = std::sin(latitude);
    const double normal = WGS84::WGS_A / std::sqrt(1.0 - WGS84::WGS_E2 * sine * sine);
    const double p = (normal + place.height) * std::cos(latitude);
    return {p * std::cos(longitude), p * std::sin(longitude),
            (normal * (1.0 - WGS84::WGS_E2) + place.height) * sine};
}

SGeodetic ToGeodetic(const SCartesian& place) {
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
    return {Core::Maths::Degrees(latitude), Core::Maths::Degrees(std::atan2(place.y, place.x)),
            height};
}

double DistanceBetween(const SCartesian& a, const SCartesian& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

} // namespace Ctl
