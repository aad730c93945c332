#include "LogObserver/GeodeticPosition.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <vector>

namespace {

// WGS-84, NGA.STND.0036.
constexpr double kSemiMajorAxis = 6378137.0;
constexpr double kFlattening = 1.0 / 298.257223563;
constexpr double kE2 = kFlattening * (2.0 - kFlattening);
constexpr double kSemiMinorAxis = kSemiMajorAxis * (1.0 - kFlattening);
constexpr double kHalfTurn = std::numbers::pi;

struct SPoint {
    double x, y, z;
};

/// The closed formulas of the opposite way.
SPoint ECEFOf(double latitude, double longitude, double height) {
    const double sine = std::sin(latitude);
    const double radius = kSemiMajorAxis / std::sqrt(1.0 - kE2 * sine * sine);
    const double across = (radius + height) * std::cos(latitude);
    return {across * std::cos(longitude), across * std::sin(longitude),
            (radius * (1.0 - kE2) + height) * sine};
}

/// The height of a point along the vertical of a latitude, which also works on the axis.
double HeightOf(const SPoint& point, double latitude) {
    const double sine = std::sin(latitude);
    const double radius = kSemiMajorAxis / std::sqrt(1.0 - kE2 * sine * sine);
    return std::hypot(point.x, point.y) * std::cos(latitude) + point.z * sine -
           radius * (1.0 - kE2 * sine * sine);
}

/// Iterates until nothing changes: the latitude of a point is that of its vertical, whose foot
/// moves with the latitude.
SGeodeticPosition Iterated(const SPoint& point) {
    const double p = std::hypot(point.x, point.y);
    double latitude = std::atan2(point.z, p * (1.0 - kE2));
    for (int i = 0; i < 40; ++i) {
        const double sine = std::sin(latitude);
        const double radius = kSemiMajorAxis / std::sqrt(1.0 - kE2 * sine * sine);
        const double next = std::atan2(point.z + kE2 * radius * sine, p);
        if (next == latitude) {
            break;
        }
        latitude = next;
    }
    return {latitude, std::atan2(point.y, point.x), HeightOf(point, latitude)};
}

/// Bowring's step, done so many times.
SGeodeticPosition Stepped(const SPoint& point, int steps) {
    const double p = std::hypot(point.x, point.y);
    double theta = std::atan2(kSemiMajorAxis * point.z, kSemiMinorAxis * p);
    double latitude = 0.0;
    for (int i = 0; i < steps; ++i) {
        latitude = std::atan2(point.z + kE2 / (1.0 - kE2) * kSemiMinorAxis *
                                            std::pow(std::sin(theta), 3.0),
                              p - kE2 * kSemiMajorAxis * std::pow(std::cos(theta), 3.0));
        theta =
            std::atan2(kSemiMinorAxis * std::sin(latitude), kSemiMajorAxis * std::cos(latitude));
    }
    return {latitude, std::atan2(point.y, point.x), HeightOf(point, latitude)};
}

struct SErrors {
    double latitude = 0.0; ///< metres along the meridian at the point's height
    double longitude = 0.0;
    double height = 0.0;

    void Take(const SGeodeticPosition& left, const SGeodeticPosition& right) {
        const double radius = kSemiMajorAxis + right.height;
        latitude = std::max(latitude, std::fabs(left.latitude - right.latitude) * radius);
        longitude = std::max(longitude, std::fabs(left.longitude - right.longitude) * radius);
        height = std::max(height, std::fabs(left.height - right.height));
    }
};

/// From pole to pole and from date line to date line.
std::vector<SPoint> PointsOverTheGlobe(const std::vector<double>& heights) {
    std::vector<SPoint> points;
    for (int latitude = -180; latitude <= 180; ++latitude) {
        for (const double longitude : {-180.0, -179.9999999, -77.3, 0.0, 90.0, 180.0}) {
            for (const double height : heights) {
                points.push_back(
                    ECEFOf(latitude / 360.0 * kHalfTurn, longitude / 180.0 * kHalfTurn, height));
            }
        }
    }
    return points;
}

template <class TConversion>
SErrors LargestErrors(const std::vector<double>& heights, TConversion reference) {
    SErrors errors;
    for (const SPoint& point : PointsOverTheGlobe(heights)) {
        errors.Take(SGeodeticPosition::FromECEF(point.x, point.y, point.z), reference(point));
    }
    return errors;
}

const std::vector<double> kNearGround = {-500.0, 0.0, 100.0, 8849.0, 20e3};
const std::vector<double> kUpToSatellites = {1e5, 4e5, 2e6, 6.4e6, 1e7, 2e7};

} // namespace

TEST(GeodeticPosition, is_right_to_five_micrometres_up_to_twenty_kilometres) {
    const SErrors errors = LargestErrors(kNearGround, Iterated);
    EXPECT_LT(errors.latitude, 4e-6);
    EXPECT_LT(errors.height, 5e-6);
    EXPECT_EQ(errors.longitude, 0.0);
}

TEST(GeodeticPosition, is_right_to_a_quarter_of_a_metre_up_to_twenty_thousand_kilometres) {
    const SErrors errors = LargestErrors(kUpToSatellites, Iterated);
    EXPECT_LT(errors.latitude, 0.21);
    EXPECT_LT(errors.height, 0.25);
    EXPECT_EQ(errors.longitude, 0.0);
    // Larger than 0.1 m: the figures above are those of the method and not a test without effect.
    EXPECT_GT(errors.latitude, 0.1);
}

TEST(GeodeticPosition, has_no_error_but_that_of_stopping_after_one_step) {
    // The arithmetic is not to blame: two more of the same steps leave nothing of it.
    SErrors errors;
    for (const SPoint& point : PointsOverTheGlobe(kUpToSatellites)) {
        errors.Take(Stepped(point, 3), Iterated(point));
    }
    EXPECT_LT(errors.latitude, 5e-8);
    EXPECT_LT(errors.height, 5e-8);
    const SErrors ofArithmetic =
        LargestErrors(kUpToSatellites, [](const SPoint& point) { return Stepped(point, 1); });
    EXPECT_LT(ofArithmetic.latitude, 5e-8);
}

TEST(GeodeticPosition, of_the_ways_back_gives_what_went_there) {
    const SPoint point = ECEFOf(0.6, -2.1, 1234.5);
    const auto back = SGeodeticPosition::FromECEF(point.x, point.y, point.z);
    EXPECT_NEAR(back.latitude, 0.6, 1e-12);
    EXPECT_NEAR(back.longitude, -2.1, 1e-15);
    EXPECT_NEAR(back.height, 1234.5, 1e-6);
}

TEST(GeodeticPosition, is_exact_on_the_equator_and_the_date_line) {
    const auto east = SGeodeticPosition::FromECEF(-kSemiMajorAxis - 20.0, 0.0, 0.0);
    EXPECT_EQ(east.latitude, 0.0);
    EXPECT_EQ(east.longitude, kHalfTurn);
    EXPECT_EQ(east.height, 20.0);
    const auto west = SGeodeticPosition::FromECEF(-kSemiMajorAxis, -0.0, 0.0);
    EXPECT_EQ(west.longitude, -kHalfTurn);
    EXPECT_EQ(west.height, 0.0);
}

TEST(GeodeticPosition, finds_the_poles_as_near_to_the_axis_as_a_double_can_be) {
    for (const double distance : {1.0, 1e-3, 1e-9}) {
        const auto north = SGeodeticPosition::FromECEF(distance, 0.0, kSemiMinorAxis + 50.0);
        EXPECT_NEAR(north.latitude, kHalfTurn / 2.0, 2e-7);
        const auto south = SGeodeticPosition::FromECEF(distance, 0.0, -kSemiMinorAxis - 50.0);
        EXPECT_NEAR(south.latitude, -kHalfTurn / 2.0, 2e-7);
    }
    const auto near = SGeodeticPosition::FromECEF(1.0, 0.0, kSemiMinorAxis + 50.0);
    EXPECT_NEAR(near.height, 50.0, 1e-2);
}

TEST(GeodeticPosition, knows_no_height_on_the_axis_itself) {
    // p / cos(latitude) is 0 there whatever the height: what remains is the radius of curvature.
    const auto pole = SGeodeticPosition::FromECEF(0.0, 0.0, kSemiMinorAxis + 50.0);
    EXPECT_NEAR(pole.latitude, kHalfTurn / 2.0, 1e-15);
    EXPECT_NEAR(pole.height, -6399593.626, 1e-3);
}

TEST(GeodeticPosition, of_no_numbers_is_no_number) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(SGeodeticPosition::FromECEF(kNaN, 0.0, 0.0).latitude));
    EXPECT_TRUE(std::isnan(SGeodeticPosition::FromECEF(0.0, kNaN, 1.0).longitude));
    // Nothing of the square is known either: the height falls back to 0.
    EXPECT_EQ(SGeodeticPosition::FromECEF(1.0, 1.0, kNaN).height, 0.0);
    EXPECT_TRUE(std::isinf(SGeodeticPosition::FromECEF(kInfinity, 0.0, 0.0).height));
}
