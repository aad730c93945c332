#include "Tools/Sim/EncoderTesting.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>

using namespace SimTesting;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

using Sentence = std::vector<std::string>; ///< fields, without `$` and checksum

std::vector<Sentence> All(std::string_view name, const Sim::SState& state = State()) {
    std::vector<Sentence> sentences;
    const std::string text = Sim::EncodeNMEA(name, state).value();
    EXPECT_TRUE(text.ends_with("\r\n"));
    for (const auto& sentence : Framed<CNMEASentenceConstructor>(text)) {
        EXPECT_LE(sentence.size() + 2, 82U);
        sentences.push_back(Fields(std::string(sentence.begin() + 1, sentence.end() - 3)));
    }
    return sentences;
}

Sentence One(std::string_view name, const Sim::SState& state = State()) {
    const auto sentences = All(name, state);
    EXPECT_THAT(sentences, SizeIs(1));
    return sentences.at(0);
}

/// On the equator, a minute of arc east of Greenwich: up is X, east is Y, north is Z.
Sim::SState EquatorialState() {
    Sim::SState state = State();
    const double minute = std::acos(-1.0) / 180.0 / 60.0;
    state.rtk.x = (6378137.0 + 94.75) * std::cos(1.5 * minute);
    state.rtk.y = (6378137.0 + 94.75) * std::sin(1.5 * minute);
    state.rtk.z = 0.0;
    state.rtk.velocityX = 0.0;
    state.rtk.velocityY = 3.0;
    state.rtk.velocityZ = 4.0;
    return state;
}

Sim::SState StateWithoutSolution() {
    Sim::SState state = State();
    state.rtk = {};
    state.rtk.status = 1;
    state.pseudorange = state.rtk;
    return state;
}

} // namespace

TEST(EncoderNMEA, gpgga_tells_time_place_quality_and_height) {
    Sim::SState state = EquatorialState();
    state.satellites.clear();
    using enum Sim::ESystem;
    state.satellites.push_back({.system = gps, .prn = 3, .elevation = 90.0, .isUsed = true});
    state.satellites.push_back({.system = gps, .prn = 7, .azimuth = 0.0, .isUsed = true});
    state.satellites.push_back({.system = gps, .prn = 11, .azimuth = 120.0, .isUsed = true});
    state.satellites.push_back({.system = gps, .prn = 14, .azimuth = 240.0, .isUsed = true});
    EXPECT_THAT(One("GPGGA", state),
                ElementsAre("GPGGA", "123456.25", "0000.0000", "N", "00001.5000", "E", "4", "17",
                            "1.2", "50.25", "M", "44.50", "M", "01", "0001"));
}

TEST(EncoderNMEA, south_and_west_are_named) {
    Sim::SState state = EquatorialState();
    state.rtk.x = 0.0;
    state.rtk.y = -4510731.0;
    state.rtk.z = -4510731.0;
    const Sentence fields = One("GPGGA", state);
    EXPECT_EQ(fields.at(3), "S");
    EXPECT_EQ(fields.at(4), "09000.0000");
    EXPECT_EQ(fields.at(5), "W");
    // The geodetic latitude where z equals p lies 0.19 degrees beyond 45.
    EXPECT_EQ(fields.at(2).substr(0, 4), "4511");
}

TEST(EncoderNMEA, minutes_never_reach_sixty) {
    Sim::SState state = EquatorialState();
    const double degree = std::acos(-1.0) / 180.0;
    const double longitude = (1.0 - 1e-9) * degree; // 0.00006 of a ten-thousandth minute short of 1
    state.rtk.x = 6378137.0 * std::cos(longitude);
    state.rtk.y = 6378137.0 * std::sin(longitude);
    EXPECT_EQ(One("GPGGA", state).at(4), "00100.0000");
}

TEST(EncoderNMEA, the_quality_follows_the_kind_of_solution) {
    const std::pair<std::uint32_t, const char*> qualities[] = {
        {16, "1"}, {17, "2"}, {18, "2"}, {50, "4"}, {34, "5"}};
    const std::map<std::string, std::string> modes = {
        {"1", "A"}, {"2", "D"}, {"4", "R"}, {"5", "F"}};
    for (const auto& [type, quality] : qualities) {
        Sim::SState state = State();
        state.rtk.type = type;
        EXPECT_EQ(One("GPGGA", state).at(6), quality);
        EXPECT_EQ(One("GPRMC", state).at(12), modes.at(quality));
        EXPECT_EQ(One("GPVTG", state).at(9), modes.at(quality));
    }
}

TEST(EncoderNMEA, gprmc_tells_speed_course_and_date) {
    // 5 m/s are 9.719 knots, three parts east and four north are 36.870 degrees.
    EXPECT_THAT(One("GPRMC", EquatorialState()),
                ElementsAre("GPRMC", "123456.25", "A", "0000.0000", "N", "00001.5000", "E", "9.719",
                            "36.870", "230115", "", "", "R"));
}

TEST(EncoderNMEA, gpvtg_tells_the_course_and_the_speed_twice) {
    EXPECT_THAT(One("GPVTG", EquatorialState()),
                ElementsAre("GPVTG", "36.870", "T", "", "M", "9.719", "N", "18.000", "K", "R"));
}

TEST(EncoderNMEA, gpgsv_tells_every_satellite_above_the_horizon) {
    const auto sentences = All("GPGSV");
    ASSERT_THAT(sentences, SizeIs(2));
    EXPECT_THAT(sentences[0],
                ElementsAre("GPGSV", "2", "1", "05", "05", "45", "121", "46", "09", "04", "010", "",
                            "32", "75", "000", "49", "74", "30", "200", "43"));
    EXPECT_THAT(sentences[1], ElementsAre("GPGSV", "2", "2", "05", "37", "32", "154", "40"));
}

TEST(EncoderNMEA, gpgsv_without_satellites_says_so) {
    Sim::SState state = State();
    state.satellites.clear();
    EXPECT_THAT(All("GPGSV", state), ElementsAre(ElementsAre("GPGSV", "1", "1", "00")));
}

TEST(EncoderNMEA, gpgsa_tells_twelve_of_the_used_satellites) {
    const Sentence fields = One("GPGSA");
    ASSERT_THAT(fields, SizeIs(18));
    EXPECT_EQ(fields[2], "3");
    EXPECT_THAT(std::vector(fields.begin() + 3, fields.begin() + 7),
                ElementsAre("05", "32", "74", ""));
    Sim::SState state = State();
    state.satellites.assign(20, state.satellites[0]);
    const Sentence full = One("GPGSA", state);
    ASSERT_THAT(full, SizeIs(18));
    EXPECT_THAT(std::vector(full.begin() + 3, full.begin() + 15), Each("05"));
}

TEST(EncoderNMEA, gpgst_tells_the_deviations_and_the_ellipse) {
    Sim::SState state = EquatorialState();
    state.rtk.y = 0.0;
    state.rtk.x = 6378137.0;
    state.rtk.deviationX = 3.0F;  // up
    state.rtk.deviationY = 0.5F;  // east
    state.rtk.deviationZ = 1.25F; // north
    const Sentence fields = One("GPGST", state);
    EXPECT_EQ(fields.at(1), "123456.25");
    EXPECT_EQ(fields.at(3), "1.250");
    EXPECT_EQ(fields.at(4), "0.500");
    EXPECT_EQ(fields.at(5), "0.0");
    EXPECT_EQ(fields.at(6), "1.250");
    EXPECT_EQ(fields.at(7), "0.500");
    EXPECT_EQ(fields.at(8), "3.000");
    std::swap(state.rtk.deviationY, state.rtk.deviationZ);
    EXPECT_EQ(One("GPGST", state).at(5), "90.0");
}

TEST(EncoderNMEA, gpzda_tells_the_date) {
    EXPECT_THAT(One("GPZDA"), ElementsAre("GPZDA", "123456.25", "23", "01", "2015", "", ""));
}

TEST(EncoderNMEA, without_a_solution_the_fields_are_empty) {
    const Sim::SState state = StateWithoutSolution();
    EXPECT_THAT(One("GPGGA", state), ElementsAre("GPGGA", "123456.25", "", "", "", "", "0", "00",
                                                 "", "", "M", "", "M", "", ""));
    EXPECT_THAT(One("GPRMC", state), ElementsAre("GPRMC", "123456.25", "V", "", "", "", "", "", "",
                                                 "230115", "", "", "N"));
    EXPECT_THAT(One("GPVTG", state), ElementsAre("GPVTG", "", "T", "", "M", "", "N", "", "K", "N"));
    EXPECT_THAT(One("GPGST", state), ElementsAre("GPGST", "123456.25", "", "", "", "", "", "", ""));
    const Sentence gsa = One("GPGSA", state);
    ASSERT_THAT(gsa, SizeIs(18));
    EXPECT_EQ(gsa[2], "1");
    EXPECT_THAT(std::vector(gsa.begin() + 3, gsa.end()), Each(""));
}
