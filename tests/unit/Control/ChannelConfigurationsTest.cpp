#include "Control/ChannelConfigurations.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>

TEST(SignalTypeName, is_the_receivers_name_or_the_number_of_a_type_without_one) {
    const std::map<std::uint32_t, std::string> names = {
        {0, "GPSL1"},
        {1, "GPSL1L2"},
        {4, "SBASL1"},
        {5, "GPSL5"},
        {6, "GPSL1L2C"},
        {7, "GPSL2L2AUTO"},
        {8, "GLOL1L2"},
        {10, "GLOL1"},
        {11, "GALE1"},
        {12, "GALE5A"},
        {13, "GALE5B"},
        {14, "GALALTBOC"},
        {16, "GPSL1L2PL2C"},
        {17, "GPSL1L5"},
        {18, "SBASL1L5"},
        {19, "GPSL1L2PL2CL5"},
        {20, "GPSL1L2PL5"},
        {21, "GALE1E5AE5B"},
        {22, "GALE1E5AE5BALTBOC"},
        {23, "GALE1E5A"},
        {24, "GLOL1L2C"},
        {25, "GLOL1L2PL2C"},
    };
    for (std::uint32_t number = 0; number < 300; ++number) {
        const auto known = names.find(number);
        EXPECT_EQ(SignalTypeName(number),
                  known != names.end() ? known->second : "UNKNOWN " + std::to_string(number));
    }
    EXPECT_EQ(SignalTypeName(0xFFFFFFFF), "UNKNOWN 4294967295");
}

TEST(ChannelConfigurations, share_the_fourteen_channels) {
    struct SRow {
        std::int32_t configuration;
        std::int32_t gps;
        std::int32_t glonass;
        std::int32_t sbas;
    };
    for (const SRow& row : {SRow{1, 14, 0, 0}, SRow{2, 12, 0, 2}, SRow{3, 10, 4, 0},
                            SRow{4, 8, 6, 0}, SRow{5, 8, 4, 2}, SRow{6, 10, 2, 2}}) {
        EXPECT_EQ(GPSChannels(row.configuration), row.gps) << row.configuration;
        EXPECT_EQ(GlonassChannels(row.configuration), row.glonass) << row.configuration;
        EXPECT_EQ(SBASChannels(row.configuration), row.sbas) << row.configuration;
    }
}

TEST(ChannelConfigurations, of_any_other_number_have_no_channels) {
    for (const std::int32_t number : {0, 7, -1, std::numeric_limits<std::int32_t>::max(),
                                      std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_EQ(GPSChannels(number), 0) << number;
        EXPECT_EQ(GlonassChannels(number), 0) << number;
        EXPECT_EQ(SBASChannels(number), 0) << number;
    }
}
