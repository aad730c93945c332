#include "LogObserver/GeodeticPosition.h"

#include "platform/Geodesy.h"

#include <cmath>

SGeodeticPosition SGeodeticPosition::FromECEF(double x, double y, double z) {
    using Core::Maths::WGS84;
    const double p = std::sqrt(x * x + y * y);
    const double theta = std::atan2(WGS84::WGS_A * z, p * WGS84::WGS_B);
    const double sine = std::sin(theta);
    const double cosine = std::cos(theta);

    SGeodeticPosition position;
    position.latitude = std::atan2(z + WGS84::WGS_ES2 * WGS84::WGS_B * sine * sine * sine,
                                   p - WGS84::WGS_E2 * WGS84::WGS_A * cosine * cosine * cosine);
    position.longitude = std::atan2(y, x);
    const double sineOfLatitude = std::sin(position.latitude);
    const double square = 1.0 - WGS84::WGS_E2 * sineOfLatitude * sineOfLatitude;
    if (square > 0.0) {
        position.height = p / std::cos(position.latitude) - WGS84::WGS_A / std::sqrt(square);
    }
    return position;
}
