// Vectors, and the axes east, north and up of a place, for the simulated world and its logs.
#pragma once

#include "platform/Geodesy.h"

namespace Sim {

using Core::Maths::SGeodetic;
using Core::Maths::SVector;

double Dot(const SVector& a, const SVector& b);
double Length(const SVector& a);

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
