#include "hub/gpsd/Policy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace Hub::GPSD;
using testing::HasSubstr;

namespace {

SPolicy Changed(std::string_view argument, SPolicy policy = {}) {
    EXPECT_EQ(Change(policy, argument), "") << argument;
    return policy;
}

} // namespace

TEST(GPSDPolicy, an_argument_enables_watching_unless_it_says_otherwise) {
    EXPECT_TRUE(Changed("{}").isEnabled);
    EXPECT_TRUE(Changed(R"({"enable":true})").isEnabled);
    SPolicy enabled;
    enabled.isEnabled = true;
    EXPECT_FALSE(Changed(R"({"enable":false})", enabled).isEnabled);
}

TEST(GPSDPolicy, every_attribute_is_taken) {
    const SPolicy policy = Changed(R"({"class":"WATCH","json":true,"nmea":true,"raw":2,
        "scaled":true,"timing":true,"split24":true,"pps":true,"device":"corvane"})");
    EXPECT_TRUE(policy.wantsJSON);
    EXPECT_TRUE(policy.wantsNMEA);
    EXPECT_EQ(policy.raw, 2);
    EXPECT_TRUE(policy.isScaled);
    EXPECT_TRUE(policy.wantsTiming);
    EXPECT_TRUE(policy.splits24);
    EXPECT_TRUE(policy.wantsPPS);
    EXPECT_EQ(policy.device, "corvane");
}

TEST(GPSDPolicy, what_is_not_named_stays) {
    const SPolicy policy = Changed(R"({"nmea":true})", Changed(R"({"json":true,"raw":1})"));
    EXPECT_TRUE(policy.wantsJSON);
    EXPECT_TRUE(policy.wantsNMEA);
    EXPECT_EQ(policy.raw, 1);
}

TEST(GPSDPolicy, nothing_is_watched_while_it_is_not_enabled) {
    const SPolicy policy = Changed(R"({"enable":false,"json":true,"nmea":true,"raw":1})");
    EXPECT_FALSE(policy.WatchesJSON());
    EXPECT_FALSE(policy.WatchesNMEA());
    EXPECT_EQ(policy.WatchesRaw(), 0);
}

TEST(GPSDPolicy, a_wrong_argument_changes_nothing_and_says_why) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"", "not a JSON object"},
        {"5", "not a JSON object"},
        {"{\"json\":true", "not a JSON object"},
        {"{\"json\":\"\xFF\"}", "not a JSON object"},
        {R"({"json":1})", "'json' must be true or false"},
        {R"({"enable":null})", "'enable' must be true or false"},
        {R"({"raw":true})", "'raw' must be 0, 1 or 2"},
        {R"({"raw":3})", "'raw' must be 0, 1 or 2"},
        {R"({"raw":-1})", "'raw' must be 0, 1 or 2"},
        {R"({"raw":99999999999999999999})", "'raw' must be 0, 1 or 2"},
        {R"({"device":5})", "'device' must be a text"},
        {R"({"device":"/dev/ttyUSB0"})", "there is no such device"},
        {R"({"class":"POLL"})", "'class' must be \"WATCH\""},
        {R"({"jsno":true})", "unknown attribute 'jsno'"},
    };
    for (const auto& [argument, why] : cases) {
        SPolicy policy;
        const std::string whole = argument;
        EXPECT_THAT(Change(policy, whole), HasSubstr(why)) << argument;
        EXPECT_FALSE(policy.isEnabled) << argument;
    }
    SPolicy policy;
    EXPECT_NE(Change(policy, R"({"json":true,"raw":7})"), "");
    EXPECT_FALSE(policy.wantsJSON) << "not even what was right before what was wrong";
}
