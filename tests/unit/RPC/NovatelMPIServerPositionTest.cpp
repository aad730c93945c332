// The reference position: Earth-centred coordinates on the wire, geodetic ones in the settings.

#include "RPC/NovatelMPIServerTesting.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

struct SPlace {
    double latitude; ///< degrees
    double longitude;
    double height;
    double x;
    double y;
    double z;
};

// By N = a / sqrt(1 - e^2 sin^2(latitude)) and so on in 40 digits.
constexpr SPlace kPlaces[] = {
    {47.1, 8.5, 400.0, 4302043.7454024757, 642944.7455981522, 4649632.6065013469},
    {-33.8568, 151.2153, -25.5, -4646950.0779414157, 2553066.7235040731, -3533252.9209522866},
    {64.8401, -147.72, 136.25, -2298912.0883625603, -1452188.9669545279, 5750276.4122317824},
};
/// Half of the last digit of the height in the settings, and what a double loses.
constexpr double kMetres = 0.0001;

std::string ListOf(double x, double y, double z) {
    char text[128];
    std::snprintf(text, sizeof text, "[%.17g,%.17g,%.17g]", x, y, z);
    return text;
}

class NovatelMPIServerPosition : public CNovatelMPIServerTesting {
protected:
    void ExpectPosition(double x, double y, double z) {
        const auto position = nlohmann::json::parse(Call("novatel_GetReferencePosition"));
        ASSERT_EQ(position.size(), 3U);
        EXPECT_NEAR(position[0].get<double>(), x, kMetres);
        EXPECT_NEAR(position[1].get<double>(), y, kMetres);
        EXPECT_NEAR(position[2].get<double>(), z, kMetres);
    }
};

} // namespace

TEST_F(NovatelMPIServerPosition, is_zero_while_there_is_none) {
    EXPECT_EQ(Call("novatel_GetReferencePosition"), "[0,0,0]");
}

TEST_F(NovatelMPIServerPosition, is_stored_in_degrees_and_comes_back) {
    for (const SPlace& place : kPlaces) {
        EXPECT_EQ(Call("novatel_SetReferencePosition", ListOf(place.x, place.y, place.z)), "[1]");
        double latitude = 0.0;
        double longitude = 0.0;
        double height = 0.0;
        const std::string settings = SettingsFile();
        ASSERT_EQ(std::sscanf(settings.c_str(), "[Corvane]\nreference_position = %lf,%lf,%lf\n",
                              &latitude, &longitude, &height),
                  3)
            << settings;
        EXPECT_NEAR(latitude, place.latitude, 1e-9);
        EXPECT_NEAR(longitude, place.longitude, 1e-9);
        EXPECT_NEAR(height, place.height, kMetres);
        ExpectPosition(place.x, place.y, place.z);
        ExpectReplayed("unlogall thisport");
    }
}

TEST_F(NovatelMPIServerPosition, is_exact_on_the_equator) {
    EXPECT_EQ(Call("novatel_SetReferencePosition", "[6378137,0,0.0]"), "[1]");
    EXPECT_EQ(SettingsFile(),
              "[Corvane]\nreference_position = 0.000000000000,0.000000000000,0.0000\n");
    EXPECT_EQ(Call("novatel_GetReferencePosition"), "[6378137,0,0]");
}

TEST_F(NovatelMPIServerPosition, is_converted_from_the_settings) {
    WriteSettings("[Corvane]\nreference_position = 47.1,8.5,400\n");
    m_commands.BuildConfiguration();
    ExpectPosition(kPlaces[0].x, kPlaces[0].y, kPlaces[0].z);
}

TEST_F(NovatelMPIServerPosition, is_removed) {
    WriteSettings("[Corvane]\nsbas_prn = 0\n");
    Call("novatel_SetReferencePosition", "[6378137,0,0]");
    TakePending();
    EXPECT_EQ(Call("novatel_UnsetReferencePosition"), "[1]");
    EXPECT_EQ(Call("novatel_GetReferencePosition"), "[0,0,0]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\nsbas_prn = 0\n");
    ExpectReplayed("unlogall thisport");
}

TEST_F(NovatelMPIServerPosition, is_removed_also_where_nothing_can_be_sent) {
    m_commands.SetByteSource(nullptr);
    Call("novatel_SetReferencePosition", "[6378137,0,0]");
    EXPECT_EQ(Call("novatel_UnsetReferencePosition"), "[1]");
    EXPECT_EQ(Call("novatel_GetReferencePosition"), "[0,0,0]");
}

TEST_F(NovatelMPIServerPosition, is_refused_where_nothing_can_be) {
    for (const char* coordinates : {"[1000000001,0,0]", "[0,-1000000000.1,0]", "[0,0,1e300]"}) {
        EXPECT_EQ(Call("novatel_SetReferencePosition", coordinates),
                  "error -32602 the coordinates must be within 1e9 m")
            << coordinates;
    }
    ExpectNothingDone();
    EXPECT_EQ(Call("novatel_SetReferencePosition", "[1e9,-1e9,1e9]"), "[1]");
}
