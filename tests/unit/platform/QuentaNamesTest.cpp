#include "platform/QuentaNames.h"

#include <gmock/gmock.h>
#include <map>

namespace {

const std::map<std::int32_t, std::string_view> kExpected = {
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

} // namespace

TEST(QuentaNames, every_port_has_its_name) {
    EXPECT_EQ(kExpected.size(), kQuentaPortNames.size());
    for (const auto& [number, name] : kExpected) {
        EXPECT_EQ(QuentaPortName(number), name) << number;
    }
}

TEST(QuentaNames, a_number_of_no_port_is_unknown) {
    for (std::int32_t number = -1; number <= 1000; ++number) {
        if (kExpected.count(number) == 0) {
            EXPECT_EQ(QuentaPortName(number), "unknown") << number;
        }
    }
}

TEST(QuentaNames, every_function_has_its_name) {
    EXPECT_THAT(kQuentaFunctionNames,
                testing::ElementsAre("gnss_base", "gnss_rover", "gnss_l1only", "mpi_a", "mpi_b",
                                     "mpi_c", "nmea", "plixor", "oemstar", "oemstar2", "ntrip",
                                     "spray"));
}
