#include "platform/Geodesy.h"

#include <gtest/gtest.h>

using Core::Maths::Degrees;
using Core::Maths::DistanceBetween;
using Core::Maths::Radians;
using Core::Maths::SGeodetic;
using Core::Maths::SVector;
using Core::Maths::ToGeodetic;

namespace {

constexpr double kEquatorRadius = 6378137.0;
constexpr double kPoleRadius = 6356752.314245; // NGA.STND.0036
constexpr double kMillimetre = 0.001;
constexpr double kTenthOfMillimetreInDegrees = 1e-9;

SVector ToECEF(double latitudeInDegrees, double longitudeInDegrees, double height) {
    return Core::Maths::ToECEF({Radians(latitudeInDegrees), Radians(longitudeInDegrees), height});
}

void ExpectNear(const SGeodetic& place, double latitude, double longitude, double height) {
    EXPECT_NEAR(Degrees(place.latitude), latitude, kTenthOfMillimetreInDegrees);
    EXPECT_NEAR(Degrees(place.longitude), longitude, kTenthOfMillimetreInDegrees);
    EXPECT_NEAR(place.height, height, kMillimetre);
}

void ExpectNear(const SVector& place, double x, double y, double z) {
    EXPECT_NEAR(place.x, x, kMillimetre);
    EXPECT_NEAR(place.y, y, kMillimetre);
    EXPECT_NEAR(place.z, z, kMillimetre);
}

} // namespace

TEST(Geodesy, knows_the_ends_of_the_axes) {
    ExpectNear(ToECEF(0.0, 0.0, 0.0), kEquatorRadius, 0.0, 0.0);
    ExpectNear(ToECEF(0.0, 90.0, 10.0), 0.0, kEquatorRadius + 10.0, 0.0);
    ExpectNear(ToECEF(90.0, 0.0, 0.0), 0.0, 0.0, kPoleRadius);
    ExpectNear(ToECEF(-90.0, 0.0, 5.0), 0.0, 0.0, -kPoleRadius - 5.0);
    ExpectNear(ToGeodetic({kEquatorRadius, 0.0, 0.0}), 0.0, 0.0, 0.0);
    ExpectNear(ToGeodetic({0.0, -kEquatorRadius - 7.0, 0.0}), 0.0, -90.0, 7.0);
}

TEST(Geodesy, gives_a_height_at_the_poles) {
    ExpectNear(ToGeodetic({0.0, 0.0, kPoleRadius + 2800.0}), 90.0, 0.0, 2800.0);
    ExpectNear(ToGeodetic({0.0, 0.0, -kPoleRadius}), -90.0, 0.0, 0.0);
}

// By hand: sin and cos of 45 degrees are 1/sqrt(2), so that N = a / sqrt(1 - e2/2) with
// e2 = 0.00669437999014 is 6388838.2901 m, X = Y = N/2, Z = N (1 - e2) / sqrt(2).
TEST(Geodesy, agrees_with_a_place_worked_out_by_hand) {
    ExpectNear(ToECEF(45.0, 45.0, 0.0), 3194419.1451, 3194419.1451, 4487348.4089);
    ExpectNear(ToGeodetic({3194419.1451, 3194419.1451, 4487348.4089}), 45.0, 45.0, 0.0);
}

TEST(Geodesy, comes_back_to_where_it_began) {
    for (const double latitude : {-89.99, -60.0, -1e-6, 0.0, 30.0, 47.123456789, 89.999}) {
        for (const double longitude : {-179.9, -8.5678, 0.0, 120.0}) {
            for (const double height : {-400.0, 0.0, 8848.0, 100'000.0}) {
                ExpectNear(ToGeodetic(ToECEF(latitude, longitude, height)), latitude, longitude,
                           height);
            }
        }
    }
}

TEST(Geodesy, measures_distances_in_a_straight_line) {
    EXPECT_DOUBLE_EQ(DistanceBetween({1.0, 2.0, 3.0}, {3.0, 5.0, 9.0}), 7.0);
}
