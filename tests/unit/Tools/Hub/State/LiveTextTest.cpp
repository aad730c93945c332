#include "StateTesting.h"
#include "hub/state/Presentation.h"

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

// Member for member as docs/hub-json.md has it.
class LiveText : public HubTesting::CStateTesting {
protected:
    json Shown() const { return json::parse(Hub::LiveText(m_state, Now())); }
    void Base(double x, double y, double z) {
        auto base = Message<Hub::SBase>("CPositionAPI");
        base.x = x;
        base.y = y;
        base.z = z;
        m_state.NewMessage(base);
    }
    void Geoid(double separation) {
        auto geoid = Message<Hub::SGeoid>("CNMEAHandlerAPI");
        geoid.separation = separation;
        m_state.NewMessage(geoid);
    }
};

} // namespace

TEST_F(LiveText, shows_null_before_there_is_anything) {
    EXPECT_EQ(
        Shown(),
        (json{{"now", HubTesting::kMoment},
              {"health",
               {{"state", "gone"}, {"words", "The daemon is not connected, and has never been"}}},
              {"solution", nullptr},
              {"base", nullptr},
              {"sky", nullptr},
              {"signals", nullptr}}));
}

TEST_F(LiveText, shows_a_solution_with_all_that_a_navigator_wants) {
    m_state.NewMessage(Fixed());
    Geoid(40.0);
    Advance(0.5);
    const json shown = Shown();
    EXPECT_EQ(shown["now"], HubTesting::kMoment + 0.5);
    EXPECT_EQ(shown["health"], (json{{"state", "live"}, {"words", "Live"}}));
    json solution = shown["solution"];
    EXPECT_NEAR(solution["height"].get<double>(), 100.0, 1e-6);
    EXPECT_NEAR(solution["heightAboveGeoid"].get<double>(), 60.0, 1e-6);
    EXPECT_NEAR(solution["course"].get<double>(), 36.869897646, 1e-6); // of 3 and 4
    solution.erase("height");
    solution.erase("heightAboveGeoid");
    solution.erase("course");
    EXPECT_EQ(solution, (json{{"time", HubTesting::kMoment},
                              {"age", 0.5},
                              {"utc", 1763834800.0},
                              {"week", 2393},
                              {"seconds", 583618.0},
                              {"hasPosition", true},
                              {"latitude", 0.0},
                              {"longitude", 0.0},
                              {"x", 6378237.0},
                              {"y", 0.0},
                              {"z", 0.0},
                              {"speed", 5.0},
                              {"velocityEast", 3.0},
                              {"velocityNorth", 4.0},
                              {"velocityUp", 0.5},
                              {"sigmaEast", 3.0},
                              {"sigmaNorth", 4.0},
                              {"sigmaUp", 0.5},
                              {"sigmaHorizontal", 5.0},
                              {"quality", 3},
                              {"qualityWords", "best"},
                              {"fix", "narrow-lane integer (RTK fixed)"},
                              {"fixIndicator", 4},
                              {"solutionClass", 6},
                              {"differentialAge", 1.5},
                              {"satellitesUsed", 14},
                              {"satellites", {9, 5, 0}},
                              {"velocityLatency", 0.25}}));
}

TEST_F(LiveText, shows_null_for_what_a_solution_without_a_position_does_not_tell) {
    m_state.NewMessage(NoPosition());
    const json solution = Shown()["solution"];
    EXPECT_EQ(solution["hasPosition"], false);
    EXPECT_EQ(solution["qualityWords"], "no position");
    EXPECT_EQ(solution["fix"], "no position");
    EXPECT_EQ(solution["fixIndicator"], 0);
    for (const char* const member :
         {"utc", "latitude", "longitude", "height", "heightAboveGeoid", "speed", "course",
          "velocityEast", "velocityNorth", "velocityUp", "sigmaEast", "sigmaNorth", "sigmaUp",
          "sigmaHorizontal"}) {
        ASSERT_TRUE(solution.contains(member)) << member;
        EXPECT_EQ(solution[member], nullptr) << member;
    }
}

TEST_F(LiveText, shows_null_for_a_number_that_is_none) {
    auto solution = Fixed();
    solution.data.differentialAge = std::numeric_limits<double>::quiet_NaN();
    solution.data.velocityY = std::numeric_limits<double>::quiet_NaN();
    m_state.NewMessage(solution);
    const json shown = Shown()["solution"];
    EXPECT_EQ(shown["differentialAge"], nullptr);
    EXPECT_EQ(shown["speed"], nullptr);
    EXPECT_EQ(shown["course"], nullptr);
    EXPECT_EQ(shown["sigmaNorth"], 4.0);
}

TEST_F(LiveText, shows_no_height_above_a_geoid_that_is_not_known) {
    m_state.NewMessage(Fixed());
    EXPECT_EQ(Shown()["solution"]["heightAboveGeoid"], nullptr);
}

TEST_F(LiveText, shows_the_base_station_and_how_far_it_is) {
    Base(6378137.0 + 100.0, 300.0, 400.0);
    EXPECT_EQ(Shown()["base"]["distance"], nullptr); // from nowhere
    m_state.NewMessage(Fixed());
    Advance(3.0);
    const json base = Shown()["base"];
    EXPECT_EQ(base.size(), 5U);
    EXPECT_EQ(base["age"], 3.0);
    EXPECT_EQ(base["distance"], 500.0);
    // Found by iteration to the last digit, apart from the code.
    EXPECT_NEAR(base["longitude"].get<double>(), 0.0026949036, 1e-9);
    EXPECT_NEAR(base["latitude"].get<double>(), 0.0036174208, 1e-9);
    EXPECT_NEAR(base["height"].get<double>(), 100.0196824, 1e-6);
    m_state.NewMessage(NoPosition());
    EXPECT_EQ(Shown()["base"]["distance"], nullptr);
}

TEST_F(LiveText, shows_the_sky) {
    Sentence("GPGSV,1,1,02,07,64,120,47,22,,,");
    EXPECT_EQ(Shown()["sky"]["mode"], nullptr);
    EXPECT_EQ(Shown()["sky"]["pdop"], nullptr);
    Sentence("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,");
    Advance(0.25);
    const json used = {
        {"prn", 7}, {"elevation", 64}, {"azimuth", 120}, {"cn0", 47}, {"isUsed", true}};
    const json untracked = {{"prn", 22},
                            {"elevation", nullptr},
                            {"azimuth", nullptr},
                            {"cn0", nullptr},
                            {"isUsed", false}};
    EXPECT_EQ(Shown()["sky"], (json{{"age", 0.25},
                                    {"satellites", {used, untracked}},
                                    {"mode", 3},
                                    {"pdop", 1.6},
                                    {"hdop", 0.9},
                                    {"vdop", nullptr}}));
}

TEST_F(LiveText, shows_the_signals_of_each_satellite_together) {
    auto sky = Message<Hub::SSky>("CPositionAPI");
    sky.channels = {{45, 0, 0, 40.0}, {7, 0, 0, 47.0}, {131, 0, 0, std::nullopt}, {7, 0, 0, 38.0}};
    m_state.NewMessage(sky);
    Advance(0.5);
    EXPECT_EQ(Shown()["signals"],
              (json{{"age", 0.5},
                    {"channels",
                     {{{"prn", 7}, {"system", "GPS"}, {"cn0", {47.0, 38.0}}},
                      {{"prn", 45}, {"system", "GLONASS"}, {"cn0", {40.0}}},
                      {{"prn", 131}, {"system", "SBAS"}, {"cn0", json::array({nullptr})}}}}}));
}

TEST_F(LiveText, shows_that_nothing_is_tracked) {
    m_state.NewMessage(Message<Hub::SSky>("CPositionAPI"));
    EXPECT_EQ(Shown()["signals"]["channels"], json::array());
}

TEST_F(LiveText, is_one_line) {
    m_state.NewMessage(Fixed());
    EXPECT_EQ(Hub::LiveText(m_state, Now()).find('\n'), std::string::npos);
}
