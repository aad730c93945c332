#include "LogObserver/InterfaceModeName.h"

#include <gtest/gtest.h>

TEST(InterfaceModeName, is_known_for_each_mode_in_use) {
    const char* const kNames[] = {
        "NONE",    "NOVATEL",      "RTCM",     "RTCA",          "CMR",          "OMNISTAR",
        "ZQ2",     "IMU",          "RTCMNOCR", "CDGPS",         "TCOM1",        "UNKNOWN (11)",
        "TCOM2",   "TAUX",         "RTCMV3",   "NOVATELBINARY", "UNKNOWN (16)", "UNKNOWN (17)",
        "GENERIC", "UNKNOWN (19)", "MRTCA",    "UNKNOWN (21)",  "UNKNOWN (22)",
    };
    std::uint32_t mode = 0;
    for (const char* const name : kNames) {
        EXPECT_EQ(InterfaceModeName(mode), name);
        ++mode;
    }
    EXPECT_EQ(mode, 23U);
}

TEST(InterfaceModeName, tells_large_numbers_as_signed_ones) {
    EXPECT_EQ(InterfaceModeName(256), "UNKNOWN (256)");
    EXPECT_EQ(InterfaceModeName(2147483647U), "UNKNOWN (2147483647)");
    EXPECT_EQ(InterfaceModeName(4294967295U), "UNKNOWN (-1)");
}
