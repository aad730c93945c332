#include "hub/gpsd/NMEASentences.h"
#include "GPSDTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace GPSDTesting;
using namespace Hub::GPSD;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Munich, 18 km/h to the east by north, RTK fixed with 14 satellites.
SFix Munich() {
    SFix fix = Fix();
    Hub::SNavigation& navigation = *fix.navigation;
    navigation.latitude = 48.0 + 7.038 / 60.0;
    navigation.longitude = 11.0 + 31.0 / 60.0;
    navigation.height = 592.3;
    navigation.heightAboveGeoid = 545.4;
    navigation.speed = 5.0;
    navigation.course = 84.4;
    fix.geoid = 46.9;
    fix.hdop = 0.9;
    return fix;
}

SFix At(double latitude, double longitude) {
    SFix fix = Munich();
    fix.navigation->latitude = latitude;
    fix.navigation->longitude = longitude;
    return fix;
}

SFix Moving(double course) {
    SFix fix = Munich();
    fix.navigation->course = course;
    return fix;
}

SFix AtTime(double utc) {
    SFix fix = Munich();
    fix.navigation->utc = utc;
    return fix;
}

/// With GGA's indicator, by class and quality (docs/published.md).
SFix Found(std::int32_t solutionClass, std::int32_t fixQuality) {
    SFix fix = Munich();
    fix.solution.data.solutionClass = solutionClass;
    fix.solution.data.fixQuality = fixQuality;
    return fix;
}

std::string PlaceIn(const std::string& gga) {
    return gga.substr(17, gga.find(",4,") - 17);
}

} // namespace

// Checksums: the exclusive or of all between "$" and "*", worked out apart from this program.

TEST(NMEASentences, gga_tells_the_fix) {
    EXPECT_EQ(CNMEASentences::GGA(Munich()), "$GPGGA,180640.00,4807.0380000,N,01131.0000000,E,4,14,"
                                             "0.9,545.400,M,46.900,M,1.5,*4D");
}

TEST(NMEASentences, rmc_tells_the_recommended_minimum) {
    EXPECT_EQ(CNMEASentences::RMC(Munich()), "$GPRMC,180640.00,A,4807.0380000,N,01131.0000000,E,"
                                             "9.719,84.40,221125,,,R,V*37");
}

TEST(NMEASentences, vtg_tells_course_and_speed) {
    EXPECT_EQ(CNMEASentences::VTG(Munich()), "$GPVTG,84.40,T,,M,9.719,N,18.000,K,R*29");
}

TEST(NMEASentences, without_a_position_fields_are_empty) {
    for (const SFix& fix : {SFix(), Fix(NoPosition())}) {
        EXPECT_EQ(CNMEASentences::GGA(fix), "$GPGGA,,,,,,0,00,,,M,,M,,*66");
        EXPECT_EQ(CNMEASentences::RMC(fix), "$GPRMC,,V,,,,,,,,,,N,V*29");
        EXPECT_EQ(CNMEASentences::VTG(fix), "$GPVTG,,T,,M,,N,,K,N*2C");
    }
}

TEST(NMEASentences, what_is_not_known_is_empty) {
    SFix fix = Munich();
    fix.navigation->heightAboveGeoid.reset();
    fix.navigation->course.reset();
    fix.geoid.reset();
    fix.hdop.reset();
    EXPECT_THAT(CNMEASentences::GGA(fix), HasSubstr(",E,4,14,,,M,,M,1.5,*"));
    EXPECT_THAT(CNMEASentences::RMC(fix), HasSubstr(",9.719,,221125,"));
    EXPECT_THAT(CNMEASentences::VTG(fix), StartsWith("$GPVTG,,T,,M,9.719,N,"));
}

TEST(NMEASentences, hemispheres_are_told_by_letters) {
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(-33.5, -70.25))), "3330.0000000,S,07015.0000000,W");
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(0.0, 0.0))), "0000.0000000,N,00000.0000000,E");
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(90.0, 180.0))), "9000.0000000,N,18000.0000000,E");
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(-90.0, -180.0))), "9000.0000000,S,18000.0000000,W");
}

TEST(NMEASentences, a_zero_has_no_southern_or_western_sign) {
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(-1e-12, -1e-12))), "0000.0000000,N,00000.0000000,E");
}

TEST(NMEASentences, minutes_carry_into_degrees) {
    const double almost = 59.99999999 / 60.0;
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(52.0 + almost, 179.0 + almost))),
              "5300.0000000,N,18000.0000000,E");
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(-(9.0 + almost), -(99.0 + almost)))),
              "1000.0000000,S,10000.0000000,W");
    const double notQuite = 59.99999992 / 60.0;
    EXPECT_EQ(PlaceIn(CNMEASentences::GGA(At(52.0 + notQuite, 5.0 + notQuite))),
              "5259.9999999,N,00559.9999999,E");
}

TEST(NMEASentences, time_and_date_carry_together) {
    EXPECT_THAT(CNMEASentences::RMC(AtTime(1767225599.996)), StartsWith("$GPRMC,000000.00,A,"));
    EXPECT_THAT(CNMEASentences::RMC(AtTime(1767225599.996)), HasSubstr(",010126,"));
    EXPECT_THAT(CNMEASentences::RMC(AtTime(1767225599.99)), StartsWith("$GPRMC,235959.99,A,"));
    EXPECT_THAT(CNMEASentences::RMC(AtTime(1767225599.99)), HasSubstr(",311225,"));
}

TEST(NMEASentences, a_course_never_reads_360) {
    EXPECT_THAT(CNMEASentences::VTG(Moving(359.994)), StartsWith("$GPVTG,359.99,T,"));
    EXPECT_THAT(CNMEASentences::VTG(Moving(359.996)), StartsWith("$GPVTG,0.00,T,"));
    EXPECT_THAT(CNMEASentences::RMC(Moving(359.996)), HasSubstr(",9.719,0.00,"));
}

TEST(NMEASentences, quality_and_mode_tell_how_the_position_was_found) {
    struct SCase {
        SFix fix;
        const char* gga;
        const char* mode;
    };
    const std::vector<SCase> cases = {
        {Found(4, 1), ",E,1,14,0.9,545.400,M,46.900,M,,*", "A"},
        {Found(4, 2), ",E,2,14,0.9,545.400,M,46.900,M,1.5,*", "D"},
        {Found(6, 4), ",E,4,14,0.9,545.400,M,46.900,M,1.5,*", "R"},
        {Found(5, 1), ",E,5,14,0.9,545.400,M,46.900,M,1.5,*", "F"},
    };
    for (const SCase& each : cases) {
        EXPECT_THAT(CNMEASentences::GGA(each.fix), HasSubstr(each.gga));
        EXPECT_THAT(CNMEASentences::RMC(each.fix),
                    HasSubstr(std::string(",,,") + each.mode + ",V*"));
        EXPECT_THAT(CNMEASentences::VTG(each.fix), HasSubstr(std::string(",K,") + each.mode + "*"));
    }
}

TEST(NMEASentences, what_is_no_number_is_empty) {
    SFix fix = Munich();
    fix.navigation->latitude = std::numeric_limits<double>::quiet_NaN();
    fix.navigation->heightAboveGeoid = 1e300;
    fix.navigation->speed = std::numeric_limits<double>::infinity();
    fix.navigation->utc = -1.0;
    EXPECT_THAT(CNMEASentences::GGA(fix),
                StartsWith("$GPGGA,,,,01131.0000000,E,4,14,0.9,,M,46.900,M,1.5,*"));
    EXPECT_THAT(CNMEASentences::RMC(fix), StartsWith("$GPRMC,,A,,,01131.0000000,E,,84.40,,,,R,V*"));
}

TEST(NMEASentences, satellites_have_two_digits) {
    SFix fix = Munich();
    fix.solution.data.satellites = {4, 0, 0};
    EXPECT_THAT(CNMEASentences::GGA(fix), HasSubstr(",E,4,04,"));
    fix.solution.data.satellites = {2147483647, 2147483647, 0};
    EXPECT_THAT(CNMEASentences::GGA(fix), HasSubstr(",E,4,99,"));
    fix.solution.data.satellites = {-5, 0, 0};
    EXPECT_THAT(CNMEASentences::GGA(fix), HasSubstr(",E,4,00,"));
}

TEST(NMEASentences, all_three_are_made_with_line_ends) {
    EXPECT_EQ(CNMEASentences().Make(SFix()), "$GPGGA,,,,,,0,00,,,M,,M,,*66\r\n"
                                             "$GPRMC,,V,,,,,,,,,,N,V*29\r\n"
                                             "$GPVTG,,T,,M,,N,,K,N*2C\r\n");
}

TEST(NMEASentences, one_that_the_receiver_sends_is_not_made_as_well) {
    CClocks clocks;
    CNMEASentences sentences;
    sentences.Received(Sentence("GPRMC,,V,,,,,,,,,,N"));
    sentences.Received(Sentence("GPGSV,1,1,00"));
    clocks.Advance(9'999);
    EXPECT_EQ(sentences.Make(SFix()),
              "$GPGGA,,,,,,0,00,,,M,,M,,*66\r\n$GPVTG,,T,,M,,N,,K,N*2C\r\n");
    clocks.Advance(1);
    EXPECT_THAT(sentences.Make(SFix()), HasSubstr("$GPRMC,"));
}
