#include "platform/PositionAPI.h"
#include "platform/NMEAHandlerAPI.h"
#include "platform/Published.h"
#include "platform/ReferenceManagerAPI.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>

namespace {

using Lines = std::vector<std::string>;
using Solution = Position::SECEFPositionSolutionData;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(PositionAPI, has_the_solution_in_the_services_order) {
    const std::size_t offsets[] = {offsetof(Solution, x),
                                   offsetof(Solution, y),
                                   offsetof(Solution, z),
                                   offsetof(Solution, velocityX),
                                   offsetof(Solution, velocityY),
                                   offsetof(Solution, velocityZ),
                                   offsetof(Solution, standardDeviationX),
                                   offsetof(Solution, standardDeviationY),
                                   offsetof(Solution, standardDeviationZ),
                                   offsetof(Solution, week),
                                   offsetof(Solution, seconds),
                                   offsetof(Solution, hostTime),
                                   offsetof(Solution, positionQuality),
                                   offsetof(Solution, fixQuality),
                                   offsetof(Solution, differentialAge),
                                   offsetof(Solution, satellites),
                                   offsetof(Solution, hdop),
                                   offsetof(Solution, vdop),
                                   offsetof(Solution, solutionClass),
                                   offsetof(Solution, velocityLatency)};
    const std::size_t wanted[] = {0,  8,  16, 24,  32,  40,  48,  56,  64,  72,
                                  80, 88, 96, 100, 104, 112, 128, 136, 144, 152};
    EXPECT_TRUE(std::equal(std::begin(offsets), std::end(offsets), std::begin(wanted)));
    EXPECT_EQ(sizeof(Solution::satellites), 12U);
}

TEST(PositionAPI, tells_a_solution_with_every_field) {
    CPublished published;
    CPositionAPI client;
    client.SetECEFPositionData(
        {1.5, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11.25, 12, 13, 14, 15.5, {16, 17, 18}, 19, 20, -1, kNaN});
    EXPECT_EQ(published.All(),
              (Lines{R"(position.ecef "name":"CPositionAPI","x":1.5,"y":2,"z":3,"vx":4,"vy":5,)"
                     R"("vz":6,"sx":7,"sy":8,"sz":9,"week":10,"seconds":11.25,"hostTime":12,)"
                     R"("positionQuality":13,"fixQuality":14,"differentialAge":15.5,)"
                     R"("satellites":[16,17,18],"hdop":19,"vdop":20,"solutionClass":-1,)"
                     R"("velocityLatency":null )"}));
}

TEST(PositionAPI, tells_the_sky_view_also_when_it_is_empty) {
    CPublished published;
    CPositionAPI client;
    client.SetSkyView({});
    client.SetSkyView({{7, 0, 0, 44.0}, {138, 1, 4294967295U, kInfinity}});
    EXPECT_EQ(published.All(), (Lines{R"(position.sky "name":"CPositionAPI","satellites":[] )",
                                      R"(position.sky "name":"CPositionAPI","satellites":[)"
                                      R"({"prn":7,"word1":0,"word2":0,"cn0":44},)"
                                      R"({"prn":138,"word1":1,"word2":4294967295,"cn0":null}] )"}));
}

TEST(PositionAPI, tells_the_base_position) {
    CPublished published;
    CPositionAPI client;
    client.SetBasePosition(1.25, -2.0, kNaN);
    EXPECT_EQ(published.All(),
              (Lines{R"(position.base "name":"CPositionAPI","x":1.25,"y":-2,"z":null )"}));
}

TEST(ReferenceManagerAPI, tells_each_position_with_its_time) {
    CPublished published;
    ReferenceManagerAPI client;
    client.SetGPSData(Core::GPSTime::FromGPSTime(2300, 345600.05), 1.5, -2.5, kInfinity, 7, 8, 9);
    EXPECT_EQ(published.All(),
              (Lines{R"(reference.gps "name":"ReferenceManagerAPI","week":2300,)"
                     R"("seconds":345600.05,"x":1.5,"y":-2.5,"z":null,"gps":7,"glonass":8,)"
                     R"("other":9 )"}));
}

TEST(NMEAHandlerAPI, tells_each_sentence) {
    CPublished published;
    CNMEAHandlerAPI client;
    client.SetNMEAString("GPGSV", 4294967000UL, "$GPGSV,1,1,00*79");
    EXPECT_EQ(published.All(), (Lines{R"(nmea.sentence "name":"CNMEAHandlerAPI","id":"GPGSV",)"
                                      R"("gpsTime":4294967000,"sentence":"$GPGSV,1,1,00*79" )"}));
}

TEST(NMEAHandlerAPI, tells_the_geoid) {
    CPublished published;
    CNMEAHandlerAPI client;
    client.SetNMEAGeoidalSeparationValue(-29.5);
    client.SetNMEAGeoidalSeparationValue(kNaN);
    EXPECT_EQ(published.All(),
              (Lines{R"(nmea.geoid "name":"CNMEAHandlerAPI","separation":-29.5 )",
                     R"(nmea.geoid "name":"CNMEAHandlerAPI","separation":null )"}));
}
