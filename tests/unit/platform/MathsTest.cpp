#include "platform/Maths.h"

#include <cmath>
#include <gtest/gtest.h>

using Maths = Core::Maths::Math<double>;

TEST(Maths, has_pi_and_degrees) {
    EXPECT_DOUBLE_EQ(Maths::kPi, std::acos(-1.0));
    EXPECT_DOUBLE_EQ(Core::Maths::Degrees(std::acos(-1.0)), 180.0);
    EXPECT_DOUBLE_EQ(Core::Maths::Degrees(-std::acos(-1.0) / 4.0), -45.0);
}

TEST(Maths, has_radians) {
    EXPECT_DOUBLE_EQ(Core::Maths::Radians(180.0), std::acos(-1.0));
    EXPECT_DOUBLE_EQ(Core::Maths::Radians(-45.0), -std::acos(-1.0) / 4.0);
    EXPECT_EQ(Core::Maths::Radians(0.0), 0.0);
    EXPECT_DOUBLE_EQ(Core::Maths::Radians(51.5), 0.89884456477707963);
    EXPECT_FLOAT_EQ(Core::Maths::Radians(90.0F), 1.57079633F);
}

TEST(Maths, has_the_ellipsoid_with_the_published_figures) {
    // NGA.STND.0036, tables 3.1 and 3.4, where the derived figures are printed.
    EXPECT_DOUBLE_EQ(Maths::WGS_A, 6378137.0);
    EXPECT_DOUBLE_EQ(1.0 / Maths::WGS_F, 298.257223563);
    EXPECT_NEAR(Maths::WGS_B, 6356752.3142, 5e-5);
    EXPECT_NEAR(Maths::WGS_E2, 6.694379990141e-3, 1e-15);
    EXPECT_NEAR(Maths::WGS_ES2, 6.739496742276e-3, 1e-15);
}

TEST(Maths, serves_single_precision_too) {
    EXPECT_FLOAT_EQ(Core::Maths::Math<float>::kPi, 3.14159265F);
    EXPECT_FLOAT_EQ(Core::Maths::Math<float>::WGS_A, 6378137.0F);
}
