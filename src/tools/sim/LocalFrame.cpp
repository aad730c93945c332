#include "LocalFrame.h"

#include <cmath>

namespace Sim {

namespace {

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
