#include "ctl/ConfigKeys.h"

#include <gmock/gmock.h>
#include <set>
#include <string_view>

using namespace Ctl;
using testing::Contains;

namespace {

const SConfigKey& Key(const char* section, const char* key) {
    const SConfigKey* const found = FindConfigKey(section, key);
    EXPECT_NE(found, nullptr) << key;
    return *found;
}

const SConfigKey& Key(const char* key) {
    return Key("Corvane", key);
}

} // namespace

TEST(ConfigKeys, are_found_by_section_and_name_in_their_exact_letters) {
    EXPECT_STREQ(Key("baud_rate").key, "baud_rate");
    EXPECT_EQ(FindConfigKey("corvane", "baud_rate"), nullptr);
    EXPECT_EQ(FindConfigKey("Corvane", "Baud_rate"), nullptr);
    EXPECT_EQ(FindConfigKey("glide", "baud_rate"), nullptr);
    EXPECT_EQ(FindConfigKey("Corvane", ""), nullptr);
}

TEST(ConfigKeys, of_regions_hold_for_every_region_with_a_name) {
    EXPECT_STREQ(Key("region:atlantis", "sbas").key, "sbas");
    EXPECT_EQ(FindConfigKey("region:", "sbas"), nullptr);
    EXPECT_EQ(FindConfigKey("region", "sbas"), nullptr);
}

TEST(ConfigKeys, are_each_there_once_with_a_meaning_and_a_default_of_their_kind) {
    std::set<std::pair<std::string, std::string>> seen;
    for (const SConfigKey& key : ConfigKeys()) {
        EXPECT_TRUE(seen.emplace(key.section, key.key).second) << key.key;
        EXPECT_FALSE(std::string_view(key.meaning).empty()) << key.key;
        const bool hasDefault = !std::string_view(key.defaultValue).empty();
        if (hasDefault) {
            EXPECT_EQ(StoredValue(key, key.defaultValue), key.defaultValue) << key.key;
        }
        if (key.defaultKey != nullptr) {
            EXPECT_NE(FindConfigKey(key.section, key.defaultKey), nullptr) << key.key;
            EXPECT_FALSE(hasDefault) << key.key;
        }
    }
}

TEST(ConfigKeys, are_named_by_section) {
    EXPECT_EQ(ConfigKeyNames("platform"), std::vector<std::string>{"rpc_listen"});
    EXPECT_THAT(ConfigKeyNames(""), Contains("rpc_listen"));
    EXPECT_THAT(ConfigKeyNames(""), Contains("baud_rate"));
}

TEST(ConfigKeys, of_whole_numbers_take_those_in_range) {
    for (const char* const good : {"0", "3"}) {
        EXPECT_EQ(StoredValue(Key("io_type"), good), good);
    }
    for (const char* const bad : {"", "4", "-1", "1.0", "one", "3\r"}) {
        EXPECT_EQ(StoredValue(Key("io_type"), bad), std::nullopt) << bad;
    }
    EXPECT_EQ(StoredValue(Key("baud_rate"), "0"), std::nullopt);
    EXPECT_EQ(StoredValue(Key("baud_rate"), "460800"), "460800");
}

TEST(ConfigKeys, of_numbers_take_those_in_range_as_they_are_written) {
    EXPECT_EQ(StoredValue(Key("position_update"), "0.20"), "0.20");
    EXPECT_EQ(StoredValue(Key("position_update"), "0"), std::nullopt);
    EXPECT_EQ(StoredValue(Key("idle_delay_threshold"), "-0.1"), std::nullopt);
}

// The daemon reads some of them as numbers, to which "on" is nothing.
TEST(ConfigKeys, of_flags_store_one_or_zero) {
    EXPECT_EQ(StoredValue(Key("rtk_extra_safe"), "on"), "1");
    EXPECT_EQ(StoredValue(Key("special_logs"), "False"), "0");
    EXPECT_EQ(StoredValue(Key("special_logs"), "2"), std::nullopt);
}

TEST(ConfigKeys, of_choices_take_one_of_them) {
    EXPECT_EQ(StoredValue(Key("reference_format"), "RTCM3"), "RTCM3");
    for (const char* const bad : {"", "rtcm3", "RTCM", "VARN1|CMR"}) {
        EXPECT_EQ(StoredValue(Key("reference_format"), bad), std::nullopt) << bad;
    }
}

TEST(ConfigKeys, of_addresses_take_ipv4_in_numbers) {
    EXPECT_EQ(StoredValue(Key("platform", "rpc_listen"), "0.0.0.0"), "0.0.0.0");
    for (const char* const bad : {"", "localhost", "::1", "1.2.3", "1.2.3.256"}) {
        EXPECT_EQ(StoredValue(Key("platform", "rpc_listen"), bad), std::nullopt) << bad;
    }
}

TEST(ConfigKeys, of_places_take_latitude_longitude_and_height) {
    const SConfigKey& key = Key("reference_position");
    EXPECT_EQ(StoredValue(key, "47.5,-8.5,431"), "47.5,-8.5,431");
    for (const char* const bad :
         {"", "47.5,-8.5", "91,0,0", "0,361,0", "a,b,c", "1,2,3,4", "1,2,"}) {
        EXPECT_EQ(StoredValue(key, bad), std::nullopt) << bad;
    }
}

TEST(ConfigKeys, say_what_they_take) {
    EXPECT_EQ(KindText(Key("io_type")), "whole number 0 to 3");
    EXPECT_EQ(KindText(Key("baud_rate")), "whole number, 1 or more");
    EXPECT_EQ(KindText(Key("psr_diff_source")), "none|auto");
    EXPECT_EQ(KindText(Key("input_filename")), "text");
}
