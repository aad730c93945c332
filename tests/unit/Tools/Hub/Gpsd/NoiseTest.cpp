#include "hub/gpsd/Noise.h"
#include "GPSDTesting.h"

#include <gtest/gtest.h>

using namespace GPSDTesting;
using namespace Hub::GPSD;

namespace {

std::string TimeOf(const std::string& field, double about = kMoment) {
    const auto report = NoiseOf(Sentence("GPGST," + field + ",1,,,,,,"), about);
    return report && report->contains("time") ? report->at("time").get<std::string>() : "none";
}

} // namespace

TEST(GST, is_told_from_the_receivers_sentence) {
    const auto report =
        NoiseOf(Sentence("GPGST,180640.25,2.440,1.660,1.120,68.989,1.600,1.200,2.520"), kMoment);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->dump(),
              R"({"class":"GST","device":"corvane","time":"2025-11-22T18:06:40.250Z","rms":2.44,)"
              R"("major":1.66,"minor":1.12,"orient":68.989,"lat":1.6,"lon":1.2,"alt":2.52})");
}

TEST(GST, takes_its_date_from_the_nearest_day) {
    constexpr double kMidnight = 1763769600.0; // 2025-11-22
    EXPECT_EQ(TimeOf("235959.00", kMidnight), "2025-11-21T23:59:59.000Z");
    EXPECT_EQ(TimeOf("000001.00", kMidnight - 2.0), "2025-11-22T00:00:01.000Z");
    EXPECT_EQ(TimeOf("120000", kMidnight + 50000.0), "2025-11-22T12:00:00.000Z");
}

TEST(GST, a_time_that_is_none_is_left_out) {
    for (const char* field : {"", "240000.00", "126000.00", "125961.00", "1234", "x", "-10000.0"}) {
        EXPECT_EQ(TimeOf(field), "none") << field;
    }
}

TEST(GST, fields_that_are_empty_are_left_out) {
    const auto report = NoiseOf(Sentence("GPGST,180640.00,,,,,1.5,,"), kMoment);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->dump(), R"({"class":"GST","device":"corvane",)"
                              R"("time":"2025-11-22T18:06:40.000Z","lat":1.5})");
    EXPECT_FALSE(NoiseOf(Sentence("GPGST,180640.00,,,,,,,"), kMoment)) << "no position";
}

TEST(GST, a_damaged_sentence_tells_nothing) {
    Hub::SSentence sentence = Sentence("GPGST,180640.00,1,1,1,1,1,1,1");
    sentence.sentence[9] = '9';
    EXPECT_FALSE(NoiseOf(sentence, kMoment));
    EXPECT_FALSE(NoiseOf(Sentence("GPGST,180640.00,1,1,1,1,1,1"), kMoment));
    EXPECT_FALSE(NoiseOf(Sentence("GPGST"), kMoment));
}

TEST(GST, is_told_from_the_solutions_standard_deviations_without_a_root_mean_square) {
    const auto report = NoiseOf(Fix());
    ASSERT_TRUE(report);
    EXPECT_EQ(report->at("time"), "2025-11-22T18:06:40.000Z");
    EXPECT_NEAR(report->at("lat"), 0.125, 1e-9);
    EXPECT_NEAR(report->at("lon"), 0.25, 1e-9);
    EXPECT_NEAR(report->at("alt"), 0.5, 1e-9);
    EXPECT_FALSE(report->contains("rms"));
    EXPECT_FALSE(NoiseOf(Fix(NoPosition())));
}
