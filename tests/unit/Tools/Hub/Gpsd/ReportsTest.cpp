#include "GPSDTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace GPSDTesting;
using namespace Hub::GPSD;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TReport With(const std::function<void(Position::SECEFPositionSolutionData&)>& change) {
    Hub::SSolution solution = Solution();
    change(solution.data);
    return PositionReport(Fix(solution));
}

/// Status of a solution by its class and quality (docs/published.md).
TReport StatusWith(std::int32_t solutionClass, std::int32_t fixQuality) {
    return With([&](auto& data) {
        data.solutionClass = solutionClass;
        data.fixQuality = fixQuality;
    })["status"];
}

} // namespace

TEST(TPV, tells_where_and_when) {
    const TReport report = PositionReport(Fix());
    EXPECT_EQ(report.at("class"), "TPV");
    EXPECT_EQ(report.at("device"), "corvane");
    EXPECT_EQ(report.at("mode"), 3);
    EXPECT_EQ(report.at("time"), "2025-11-22T18:06:40.000Z");
    EXPECT_EQ(report.at("leapseconds"), 18);
    EXPECT_NEAR(report.at("lat"), 0.0, 1e-12);
    EXPECT_NEAR(report.at("lon"), 0.0, 1e-12);
    EXPECT_NEAR(report.at("altHAE"), 100.0, 1e-6);
}

TEST(TPV, tells_a_place_east_and_south) {
    const TReport report = With([](auto& data) {
        data.x = 0.0;
        data.y = 6378137.0;
        data.z = -1e-3;
    });
    EXPECT_NEAR(report.at("lon"), 90.0, 1e-12);
    // A millimetre on the meridian's radius of curvature at the equator, a (1 - e2) = 6335439 m.
    EXPECT_NEAR(report.at("lat"), -1e-3 / 6335439.0 * 57.29577951308232, 1e-14);
}

TEST(TPV, tells_heights_above_the_geoid_once_the_geoid_is_known) {
    const TReport without = PositionReport(Fix());
    for (const char* key : {"altMSL", "alt", "geoidSep"}) {
        EXPECT_FALSE(without.contains(key)) << key;
    }
    const TReport with = PositionReport(Fix(Solution(), 43.5));
    EXPECT_NEAR(with.at("altHAE"), 100.0, 1e-6);
    EXPECT_NEAR(with.at("altMSL"), 56.5, 1e-6);
    EXPECT_NEAR(with.at("alt"), 56.5, 1e-6);
    EXPECT_EQ(with.at("geoidSep"), 43.5);
}

TEST(TPV, tells_errors_of_95_percent) {
    const TReport report = PositionReport(Fix());
    EXPECT_NEAR(report.at("epx"), 0.49, 1e-9);             // 1.96 * 0.25
    EXPECT_NEAR(report.at("epy"), 0.245, 1e-9);            // 1.96 * 0.125
    EXPECT_NEAR(report.at("epv"), 0.98, 1e-9);             // 1.96 * 0.5
    EXPECT_NEAR(report.at("eph"), 0.559016994, 1e-9);      // 2 * sqrt(0.25^2 + 0.125^2)
    EXPECT_NEAR(report.at("sep"), 1.145643924, 1e-9);      // and with 0.5^2
    EXPECT_NEAR(report.at("ecefpAcc"), 1.145643924, 1e-9); // the same, whatever the axes
}

TEST(TPV, tells_the_movement) {
    const TReport report = PositionReport(Fix());
    EXPECT_NEAR(report.at("speed"), 5.0, 1e-9);          // 3 east, 4 north
    EXPECT_NEAR(report.at("track"), 36.869897646, 1e-9); // atan(3 / 4)
    EXPECT_NEAR(report.at("climb"), 0.5, 1e-9);
    EXPECT_NEAR(report.at("velN"), 4.0, 1e-9);
    EXPECT_NEAR(report.at("velE"), 3.0, 1e-9);
    EXPECT_NEAR(report.at("velD"), -0.5, 1e-9);
}

TEST(TPV, tells_no_track_while_standing) {
    const TReport report = With([](auto& data) {
        data.velocityY = 0.05;
        data.velocityZ = 0.05;
    });
    EXPECT_FALSE(report.contains("track"));
    EXPECT_NEAR(report.at("speed"), 0.070710678, 1e-9);
}

TEST(TPV, tells_earth_centred_coordinates_as_they_came) {
    const TReport report = With([](auto& data) {
        data.y = 1.0 / 3.0;
        data.z = -2.5;
    });
    EXPECT_EQ(report.at("ecefx"), 6378237.0);
    EXPECT_EQ(report.at("ecefy"), 1.0 / 3.0);
    EXPECT_EQ(report.at("ecefz"), -2.5);
    EXPECT_EQ(report.at("ecefvx"), 0.5);
    EXPECT_EQ(report.at("ecefvy"), 3.0);
    EXPECT_EQ(report.at("ecefvz"), 4.0);
}

TEST(TPV, status_tells_how_the_position_was_found) {
    EXPECT_EQ(StatusWith(4, 1), 1); // single
    EXPECT_EQ(StatusWith(4, 2), 2); // differential
    EXPECT_EQ(StatusWith(6, 4), 3); // RTK fixed
    EXPECT_EQ(StatusWith(5, 1), 4); // carrier phase float
    EXPECT_EQ(StatusWith(6, 2), 4); // narrow-lane float
}

TEST(TPV, tells_the_age_of_corrections_that_were_used) {
    EXPECT_EQ(PositionReport(Fix()).at("dgpsAge"), 1.5);
    EXPECT_FALSE(With([](auto& data) {
                     data.solutionClass = 4;
                     data.fixQuality = 1;
                 }).contains("dgpsAge"));
}

TEST(TPV, without_a_position_tells_that_alone) {
    EXPECT_EQ(PositionReport(Fix(NoPosition())).dump(),
              R"({"class":"TPV","device":"corvane","mode":1})");
    EXPECT_EQ(NoPositionReport().dump(), R"({"class":"TPV","device":"corvane","mode":1})");
}

TEST(TPV, what_is_no_number_is_left_out) {
    const TReport report = With([](auto& data) {
        data.velocityY = kNaN;
        data.standardDeviationX = kNaN;
        data.differentialAge = std::numeric_limits<double>::infinity();
    });
    for (const char* key :
         {"track", "speed", "velE", "ecefvy", "epv", "sep", "ecefpAcc", "dgpsAge"}) {
        EXPECT_FALSE(report.contains(key)) << key;
    }
    EXPECT_EQ(report.at("ecefvz"), 4.0);
    EXPECT_EQ(LineOf(report).find("null"), std::string::npos);
}

TEST(TPV, a_gps_time_that_is_none_leaves_out_the_leap_seconds) {
    EXPECT_FALSE(With([](auto& data) { data.week = -5; }).contains("leapseconds"));
    EXPECT_FALSE(With([](auto& data) { data.seconds = kNaN; }).contains("leapseconds"));
    EXPECT_FALSE(With([](auto& data) { data.week = 2147483647; }).contains("leapseconds"));
}

TEST(TPV, never_tells_the_solutions_dilutions) {
    const std::string line = LineOf(PositionReport(Fix()));
    EXPECT_EQ(line.find("dop"), std::string::npos);
    EXPECT_EQ(line.find("77"), std::string::npos);
}

TEST(Reports, doubles_read_back_the_same) {
    const TReport report = With([](auto& data) { data.y = 0.1 + 0.2; });
    EXPECT_THAT(LineOf(report), testing::HasSubstr("\"ecefy\":0.30000000000000004,"));
}

TEST(Reports, a_line_ends_as_in_the_protocol) {
    EXPECT_EQ(LineOf(ErrorReport("a\"b")), "{\"class\":\"ERROR\",\"message\":\"a\\\"b\"}\r\n");
    EXPECT_EQ(LineOf(ErrorReport("\xFF")),
              "{\"class\":\"ERROR\",\"message\":\"\xEF\xBF\xBD\"}\r\n");
}

TEST(Reports, the_version_is_the_protocols) {
    const TReport report = VersionReport();
    EXPECT_EQ(report.at("class"), "VERSION");
    EXPECT_EQ(report.at("release"), "3.22");
    EXPECT_EQ(report.at("rev"), "corvane " CORVANE_VERSION);
    EXPECT_EQ(report.at("proto_major"), 3);
    EXPECT_EQ(report.at("proto_minor"), 14);
}

TEST(Reports, a_device_is_listed_while_it_is_there) {
    EXPECT_EQ(DevicesReport(std::nullopt).dump(), R"({"class":"DEVICES","devices":[]})");
    EXPECT_EQ(DevicesReport(kMoment).dump(),
              R"({"class":"DEVICES","devices":[{"class":"DEVICE","path":"corvane",)"
              R"("driver":"corvane","activated":"2025-11-22T18:06:40.000Z","flags":1}]})");
    EXPECT_EQ(DeviceReport(std::nullopt).dump(),
              R"({"class":"DEVICE","path":"corvane","activated":0})");
}

TEST(Reports, a_policy_is_told_whole) {
    SPolicy policy;
    policy.isEnabled = true;
    policy.wantsJSON = true;
    policy.raw = 2;
    EXPECT_EQ(WatchReport(policy).dump(),
              R"({"class":"WATCH","enable":true,"json":true,"nmea":false,"raw":2,"scaled":false,)"
              R"("timing":false,"split24":false,"pps":false})");
    policy.device = "corvane";
    EXPECT_EQ(WatchReport(policy).at("device"), "corvane");
}
