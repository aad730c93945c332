#include "mux/PortNames.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

using Mux::NameOfPort;

TEST(PortNames, are_those_of_the_controller) {
    const std::map<int, std::string> names = {
        {0, "null"},
        {4, "radio"},
        {5, "gps_main"},
        {6, "gps_secondary"},
        {7, "ext1"},
        {8, "relay1"},
        {9, "relay2"},
        {10, "relay_ntrip"},
        {11, "relay_nmea"},
        {22, "ext2"},
        {23, "ext3"},
        {24, "ext4"},
        {36, "gps_secondary2"},
        {37, "gps_secondary_diagnostic"},
        {50, "gps_main_boot"},
        {52, "gps_main_diagnostic"},
        {53, "gps_main_correction"},
    };
    for (int number = -1; number < 100; ++number) {
        const auto found = names.find(number);
        EXPECT_EQ(NameOfPort(number), found == names.end() ? "unknown" : found->second) << number;
    }
}
