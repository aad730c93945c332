#include "Geodesy.h"

#include "platform/Maths.h"

#include <cmath>

namespace Sim {

namespace {

using WGS84 = Core::Maths::Math<double>;

/// One is enough near the surface; two leave nothing but rounding.
constexpr int kIterations = 2;

SVector Squares(const SVector& a) {
    return {a.x * a.x, a.y * a.y, a.z * a.z};
}

} // namespace

double Dot(const SVector& a, const SVector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

double Length(const SVector& a) {
    return std::sqrt(Dot(a, a));
}

SVector ToECEF(const SGeodetic& place) {
    const double sine = std::sin(place.latitude);
    const double normal = WGS84::WGS_A / std::sqrt(1.0 - WGS84::WGS_E2 * sine * sine);
    const double p = (normal + place.height) * std::cos(place.latitude);
    return {p * std::cos(place.longitude), p * std::sin(place.longitude),
            (normal * (1.0 - WGS84::WGS_E2) + place.height) * sine};
}

SGeodetic ToGeodetic(const SVector& place) {
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
    const double height = p * std::cos(latitude) + place.z * sine -
                          WGS84::WGS_A * std::sqrt(1.0 - WGS84::WGS_E2 * sine * sine);
    return {latitude, std::atan2(place.y, place.x), height};
}

CLocalFrame::CLocalFrame(const SGeodetic& origin) {
    const double sineLatitude = std::sin(origin.latitude);
    const double cosineLatitude = std::cos(origin.latitude);
    const double sineLongitude = std::sin(origin.longitude);
    const double cosineLongitude = std::cos(origin.longitude);
    m_east = {-sineLongitude, cosineLongitude, 0.0};
    m_north = {-sineLatitude * cosineLongitude, -sineLatitude * sineLongitude, cosineLatitude};
    m_up = {cosineLatitude * cosineLongitude, cosineLatitude * sineLongitude, sineLatitude};
}

SVector CLocalFrame::ToECEFDirection(const SVector& local) const {
    return local.x * m_east + local.y * m_north + local.z * m_up;
}

SVector CLocalFrame::ToLocalDirection(const SVector& ecef) const {
    return {Dot(ecef, m_east), Dot(ecef, m_north), Dot(ecef, m_up)};
}

SVector CLocalFrame::ToECEFVariances(const SVector& local) const {
    return local.x * Squares(m_east) + local.y * Squares(m_north) + local.z * Squares(m_up);
}

SVector CLocalFrame::ToLocalVariances(const SVector& ecef) const {
    return {Dot(ecef, Squares(m_east)), Dot(ecef, Squares(m_north)), Dot(ecef, Squares(m_up))};
}

} // namespace Sim
