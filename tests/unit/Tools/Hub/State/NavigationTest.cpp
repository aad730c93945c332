#include "hub/state/Navigation.h"

#include "hub/state/Satellites.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Hub::Navigate;
using Hub::SNavigation;
using Hub::SSolution;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct SPlace {
    const char* name;
    double latitude, longitude, height;
    double x, y, z;
    double east, north, up; ///< of the velocity
    double vx, vy, vz;
    double sx, sy, sz;
    double sigmaEast, sigmaNorth, sigmaUp, sigmaHorizontal;
    double speed, course;
};

/// Worked out apart from the code: from the places to Earth-centred coordinates in closed form, the
/// axes as cross products, to the digits that are written here.
constexpr SPlace kPlaces[] = {
    {"Netherlands", 52.1,        5.2,  48.9,        3910057.7277, 355843.1291,
     5009684.6374,  3,           4,    -1,          -4.027000905, 2.645912037,
     1.668056716,   0.03,        0.01, 0.02,        0.010323343,  0.026593893,
     0.024211432,   0.028527295, 5.0,  36.869897646},
    {"SouthWest",
     -33.9,
     -151.2,
     -20.5,
     -4643931.1168,
     -2553022.7359,
     -3537233.9141,
     -0.5,
     2,
     0.25,
     -1.400224694,
     -0.199203538,
     1.520588293,
     1,
     2,
     3,
     1.817619375,
     2.593830252,
     1.992060349,
     3.167285205,
     2.061552813,
     345.963756532},
    {"DateLine", 0.001, 179.9999,   4000,        -6382136.999, 11.1389, 110.6441, 0,
     -7.5,       0,     -0.0001309, 0.0,         -7.499999999, 0.5,     0.25,     0.125,
     0.25,       0.125, 0.5,        0.279508497, 7.5,          180.0},
};

SSolution At(const SPlace& place) {
    SSolution solution;
    Position::SECEFPositionSolutionData& data = solution.data;
    data.x = place.x;
    data.y = place.y;
    data.z = place.z;
    data.velocityX = place.vx;
    data.velocityY = place.vy;
    data.velocityZ = place.vz;
    data.standardDeviationX = place.sx;
    data.standardDeviationY = place.sy;
    data.standardDeviationZ = place.sz;
    data.week = 2393;
    data.seconds = 583618.0;
    data.positionQuality = 1;
    return solution;
}

/// On the equator at longitude 0, where up is X, east is Y and north is Z.
SSolution Moving(double east, double north) {
    SSolution solution;
    solution.data.x = 6378137.0;
    solution.data.velocityY = east;
    solution.data.velocityZ = north;
    solution.data.positionQuality = 1;
    return solution;
}

SSolution Kind(std::int32_t solutionClass, std::int32_t fixQuality, std::int32_t positionQuality) {
    SSolution solution;
    solution.data.solutionClass = solutionClass;
    solution.data.fixQuality = fixQuality;
    solution.data.positionQuality = positionQuality;
    return solution;
}

class NavigationAt : public testing::TestWithParam<SPlace> {};

} // namespace

TEST_P(NavigationAt, finds_the_place) {
    const auto navigation = Navigate(At(GetParam()), std::nullopt);
    ASSERT_TRUE(navigation);
    EXPECT_NEAR(navigation->latitude, GetParam().latitude, 1e-9); // 0.1 mm
    EXPECT_NEAR(navigation->longitude, GetParam().longitude, 2e-9);
    EXPECT_NEAR(navigation->height, GetParam().height, 1e-4);
}

TEST_P(NavigationAt, turns_the_velocity_to_east_north_and_up) {
    const auto navigation = Navigate(At(GetParam()), std::nullopt);
    EXPECT_NEAR(navigation->velocityEast, GetParam().east, 1e-7);
    EXPECT_NEAR(navigation->velocityNorth, GetParam().north, 1e-7);
    EXPECT_NEAR(navigation->velocityUp, GetParam().up, 1e-7);
    EXPECT_NEAR(navigation->speed, GetParam().speed, 1e-7);
    ASSERT_TRUE(navigation->course);
    EXPECT_NEAR(*navigation->course, GetParam().course, 1e-5);
}

TEST_P(NavigationAt, turns_the_standard_deviations) {
    const auto navigation = Navigate(At(GetParam()), std::nullopt);
    EXPECT_NEAR(navigation->sigmaEast, GetParam().sigmaEast, 1e-7);
    EXPECT_NEAR(navigation->sigmaNorth, GetParam().sigmaNorth, 1e-7);
    EXPECT_NEAR(navigation->sigmaUp, GetParam().sigmaUp, 1e-7);
    EXPECT_NEAR(navigation->sigmaHorizontal, GetParam().sigmaHorizontal, 1e-7);
}

INSTANTIATE_TEST_SUITE_P(Places, NavigationAt, testing::ValuesIn(kPlaces),
                         [](const testing::TestParamInfo<SPlace>& place) {
                             return std::string(place.param.name);
                         });

TEST(Navigation, tells_the_moment_of_the_solution_in_UTC) {
    // 315964800 + 2393 * 604800 + 583618 - 18 leap seconds.
    EXPECT_EQ(Navigate(At(kPlaces[0]), std::nullopt)->utc, 1763834800.0);
    SSolution solution = At(kPlaces[0]);
    solution.data.week = 1800; // July 2014, when there were 16
    solution.data.seconds = 345600.5;
    EXPECT_EQ(Navigate(solution, std::nullopt)->utc, 1404950384.5);
}

TEST(Navigation, tells_the_height_above_the_geoid_when_that_is_known) {
    EXPECT_FALSE(Navigate(At(kPlaces[0]), std::nullopt)->heightAboveGeoid);
    EXPECT_NEAR(*Navigate(At(kPlaces[0]), 43.75)->heightAboveGeoid, 5.15, 1e-4);
    EXPECT_NEAR(*Navigate(At(kPlaces[0]), -10.0)->heightAboveGeoid, 58.9, 1e-4);
}

TEST(Navigation, finds_its_way_at_the_poles) {
    SSolution solution;
    solution.data.positionQuality = 1;
    solution.data.z = -6356752.3142 - 10.0;
    solution.data.velocityZ = -3.0; // away from the Earth
    const auto navigation = Navigate(solution, std::nullopt);
    EXPECT_NEAR(navigation->latitude, -90.0, 1e-9);
    EXPECT_NEAR(navigation->height, 10.0, 1e-3);
    EXPECT_NEAR(navigation->velocityUp, 3.0, 1e-9);
    EXPECT_FALSE(navigation->course);
}

TEST(Navigation, counts_the_course_clockwise_from_north) {
    struct SCourse {
        double east, north, course;
    };
    for (const SCourse& each :
         {SCourse{0, 1, 0}, SCourse{1, 1, 45}, SCourse{1, 0, 90}, SCourse{1, -1, 135},
          SCourse{0, -1, 180}, SCourse{-1, -1, 225}, SCourse{-1, 0, 270}, SCourse{-1, 1, 315}}) {
        EXPECT_NEAR(*Navigate(Moving(each.east, each.north), std::nullopt)->course, each.course,
                    1e-9);
    }
}

TEST(Navigation, has_a_course_below_360_degrees_however_it_is_rounded) {
    for (const double east : {-0.0, -1e-300, -1e-16, -1e-14}) {
        const double course = *Navigate(Moving(east, 1.0), std::nullopt)->course;
        EXPECT_GE(course, 0.0);
        EXPECT_LT(course, 360.0);
    }
}

TEST(Navigation, has_no_course_while_the_speed_is_noise) {
    EXPECT_FALSE(Navigate(Moving(0.0, 0.0), std::nullopt)->course);
    EXPECT_FALSE(Navigate(Moving(0.0999, 0.0), std::nullopt)->course);
    EXPECT_TRUE(Navigate(Moving(0.1, 0.0), std::nullopt)->course);
    EXPECT_FALSE(Navigate(Moving(kNaN, 1.0), std::nullopt)->course);
}

TEST(Navigation, is_none_without_a_position) {
    SSolution solution = At(kPlaces[0]);
    solution.data.positionQuality = 0;
    EXPECT_FALSE(Navigate(solution, 1.0));
    for (double Position::SECEFPositionSolutionData::*const member :
         {&Position::SECEFPositionSolutionData::x, &Position::SECEFPositionSolutionData::y,
          &Position::SECEFPositionSolutionData::z}) {
        solution = At(kPlaces[0]);
        solution.data.*member = kNaN;
        EXPECT_FALSE(Navigate(solution, 1.0));
    }
}

TEST(Navigation, has_words_for_each_quality) {
    EXPECT_EQ(Hub::QualityWords(0), "no position");
    EXPECT_EQ(Hub::QualityWords(1), "usable");
    EXPECT_EQ(Hub::QualityWords(2), "good");
    EXPECT_EQ(Hub::QualityWords(3), "best");
    EXPECT_EQ(Hub::QualityWords(4), "no position");
}

// The rows of the table of solutions in docs/published.md.
TEST(Navigation, has_words_for_each_kind_of_solution) {
    EXPECT_EQ(Hub::FixWords(Kind(4, 1, 1)), "single");
    EXPECT_EQ(Hub::FixWords(Kind(4, 1, 2)), "single");
    EXPECT_EQ(Hub::FixWords(Kind(4, 2, 1)), "differential (SBAS or pseudorange)");
    EXPECT_EQ(Hub::FixWords(Kind(5, 1, 1)), "carrier phase float");
    EXPECT_EQ(Hub::FixWords(Kind(5, 2, 1)), "CDGPS differential");
    EXPECT_EQ(Hub::FixWords(Kind(6, 2, 2)), "narrow-lane float or wide-lane integer (RTK)");
    EXPECT_EQ(Hub::FixWords(Kind(6, 4, 3)), "narrow-lane integer (RTK fixed)");
    EXPECT_EQ(Hub::FixWords(Kind(2, 2, 3)), "OmniSTAR HP");
    EXPECT_EQ(Hub::FixWords(Kind(2, 2, 2)), "OmniSTAR XP");
    EXPECT_EQ(Hub::FixWords(Kind(-1, 0, 0)), "no position");
    EXPECT_EQ(Hub::FixWords(Kind(6, 4, 0)), "no position");
    EXPECT_EQ(Hub::FixWords(Kind(3, 1, 1)), "of no known kind");
}

// Before the first PDPSTAT both qualities are 1, whatever the position type.
TEST(Navigation, claims_no_kind_of_solution_that_is_not_told) {
    EXPECT_EQ(Hub::FixWords(Kind(6, 1, 1)), "RTK of a kind that is not told");
    EXPECT_EQ(Hub::FixWords(Kind(2, 1, 1)), "OmniSTAR HP or XP");
}

TEST(Navigation, has_the_indicator_of_GGA_for_each_kind_of_solution) {
    EXPECT_EQ(Hub::FixIndicator(Kind(-1, 0, 0)), 0);
    EXPECT_EQ(Hub::FixIndicator(Kind(6, 4, 0)), 0);
    EXPECT_EQ(Hub::FixIndicator(Kind(4, 1, 2)), 1);
    EXPECT_EQ(Hub::FixIndicator(Kind(4, 2, 1)), 2);
    EXPECT_EQ(Hub::FixIndicator(Kind(5, 1, 1)), 5);
    EXPECT_EQ(Hub::FixIndicator(Kind(5, 2, 1)), 2);
    EXPECT_EQ(Hub::FixIndicator(Kind(6, 2, 2)), 5);
    EXPECT_EQ(Hub::FixIndicator(Kind(6, 4, 3)), 4);
    EXPECT_EQ(Hub::FixIndicator(Kind(6, 1, 1)), 5);
    EXPECT_EQ(Hub::FixIndicator(Kind(2, 2, 3)), 5);
    EXPECT_EQ(Hub::FixIndicator(Kind(2, 2, 2)), 5);
}

TEST(Navigation, tells_where_a_place_lies_from_another) {
    SNavigation from;
    SNavigation to;
    to.height = 10.0;
    const Hub::SEastNorthUp above = Hub::Between(from, to);
    EXPECT_NEAR(above.east, 0.0, 1e-9);
    EXPECT_NEAR(above.north, 0.0, 1e-9);
    EXPECT_NEAR(above.up, 10.0, 1e-8);
    // A thousandth of a degree along the equator: 6378137 m * pi / 180000, less what it curves.
    to = SNavigation();
    to.longitude = 0.001;
    EXPECT_NEAR(Hub::Between(from, to).east, 111.31949, 1e-4);
    EXPECT_NEAR(Hub::Between(from, to).up, -0.00097, 1e-4);
    EXPECT_NEAR(Hub::Between(to, from).east, -111.31949, 1e-4);
    // And along the meridian at the equator, where its radius is 6335439.3273 m.
    to = SNavigation();
    to.latitude = 0.001;
    EXPECT_NEAR(Hub::Between(from, to).north, 110.57428, 1e-4);
}

TEST(SatelliteNumbers, belong_to_the_systems_of_the_receivers_numbering) {
    for (const int prn : {1, 32}) {
        EXPECT_EQ(Hub::SystemName(prn), "GPS");
    }
    for (const int prn : {38, 61}) {
        EXPECT_EQ(Hub::SystemName(prn), "GLONASS");
    }
    for (const int prn : {120, 138}) {
        EXPECT_EQ(Hub::SystemName(prn), "SBAS");
    }
    for (const int prn : {-1, 0, 33, 37, 62, 119, 139, 255}) {
        EXPECT_EQ(Hub::SystemName(prn), "unknown");
    }
}

TEST(SatelliteNumbers, used_are_those_of_all_systems_together) {
    SSolution solution;
    solution.data.satellites = {9, 5, 0};
    EXPECT_EQ(Hub::SatellitesUsed(solution), 14);
    solution.data.satellites = {14, 0, 0};
    EXPECT_EQ(Hub::SatellitesUsed(solution), 14);
}
