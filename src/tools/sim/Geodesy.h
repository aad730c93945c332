// Vectors and places on the Earth (WGS-84), for the simulated world and its logs.
#pragma once

namespace Sim {

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

double Dot(const SVector& a, const SVector& b);
double Length(const SVector& a);

/// Radians, and metres above the ellipsoid.
struct SGeodetic {
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;
};

/// Earth-centred Earth-fixed, metres.
SVector ToECEF(const SGeodetic& place);
/// Exact to the rounding of doubles near the Earth's surface.
SGeodetic ToGeodetic(const SVector& place);

/// The directions east (x), north (y) and up (z) at a place.
class CLocalFrame {
public:
    explicit CLocalFrame(const SGeodetic& origin);

    SVector ToECEFDirection(const SVector& local) const;
    SVector ToLocalDirection(const SVector& ecef) const;
    /// Variances of independent errors along the axes of one frame, along those of the other.
    SVector ToECEFVariances(const SVector& local) const;
    SVector ToLocalVariances(const SVector& ecef) const;
    const SVector& East() const { return m_east; }
    const SVector& North() const { return m_north; }
    const SVector& Up() const { return m_up; }

private:
    SVector m_east;
    SVector m_north;
    SVector m_up;
};

} // namespace Sim
