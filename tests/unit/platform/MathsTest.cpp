#include "platform/Maths.h"

#include <cmath>
#include <gtest/gtest.h>

using Maths = Core::Maths::Math<double>;

TEST(Maths, has_pi_and_the_angles_made_of_it) {
    EXPECT_DOUBLE_EQ(Maths::kPi, std::acos(-1.0));
    EXPECT_DOUBLE_EQ(Maths::kDegreesPerRadian * std::acos(-1.0), 180.0);
    EXPECT_DOUBLE_EQ(Maths::kRadiansPerDegree * 180.0, std::acos(-1.0));
}

TEST(Maths, has_the_ellipsoid_with_the_published_figures) {
    // NGA.STND.0036, tables 3.1 and 3.4, where the derived figures are printed.
    EXPECT_DOUBLE_EQ(Maths::kWGS84SemiMajorAxis, 6378137.0);
    EXPECT_DOUBLE_EQ(1.0 / Maths::kWGS84Flattening, 298.257223563);
    EXPECT_NEAR(Maths::kWGS84SemiMinorAxis, 6356752.3142, 5e-5);
    EXPECT_NEAR(Maths::kWGS84EccentricitySquared, 6.694379990141e-3, 1e-15);
}

TEST(Maths, serves_single_precision_too) {
    EXPECT_FLOAT_EQ(Core::Maths::Math<float>::kPi, 3.14159265F);
    EXPECT_FLOAT_EQ(Core::Maths::Math<float>::kWGS84SemiMajorAxis, 6378137.0F);
}
