// The methods that show and change a setting: their replies, the settings' file, the receiver.

#include "RPC/NovatelMPIServerTesting.h"

namespace {

class NovatelMPIServer : public CNovatelMPIServerTesting {};

} // namespace

TEST_F(NovatelMPIServer, has_a_method_that_does_nothing) {
    EXPECT_EQ(Call("DummyFunction"), "[]");
    EXPECT_EQ(Call("DummyFunction", R"([1,"x"])"), "[]");
    ExpectNothingDone();
}

TEST_F(NovatelMPIServer, knows_no_other_method) {
    EXPECT_EQ(Call("novatel_DummyFunction"), "error -32601 unknown method: novatel_DummyFunction");
    EXPECT_EQ(Call("RequestNmea"), "error -32601 unknown method: RequestNmea");
}

TEST_F(NovatelMPIServer, forces_sbas_on_and_off) {
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
    EXPECT_EQ(Call("novatel_SetSBASEnabled", "[1]"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[1]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\nforce_sbas_state = 1\nforce_sbas_on = 1\n");
    ExpectReplayed("unlogall thisport");
    EXPECT_EQ(Call("novatel_SetSBASEnabled", "[0]"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\nforce_sbas_state = 1\nforce_sbas_on = 0\n");
    ExpectReplayed("unlogall thisport");
}

TEST_F(NovatelMPIServer, takes_any_number_but_0_for_on) {
    for (const char* on : {"-3", "2147483647", "1.0"}) {
        const std::string argument = "[" + std::string(on) + "]";
        EXPECT_EQ(Call("novatel_SetSBASEnabled", argument), "[]");
        EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[1]") << on;
        EXPECT_EQ(Call("novatel_SetGlonassCorrectionsEnabled", argument), "[]");
        EXPECT_EQ(Call("novatel_GetGlonassCorrectionsEnabled"), "[1]") << on;
        EXPECT_EQ(Call("novatel_SetGPSLoggingEnabled", argument), "[]");
        EXPECT_EQ(Call("novatel_GetGPSLoggingEnabled"), "[1]") << on;
        Call("novatel_SetSBASEnabled", "[0.0]");
        Call("novatel_SetGlonassCorrectionsEnabled", "[0]");
        Call("novatel_SetGPSLoggingEnabled", "[0]");
        EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
        EXPECT_EQ(Call("novatel_GetGlonassCorrectionsEnabled"), "[0]");
        EXPECT_EQ(Call("novatel_GetGPSLoggingEnabled"), "[0]");
    }
}

TEST_F(NovatelMPIServer, traces_two_of_its_getters) {
    const std::string path = m_folder.Path("trace");
    Trace(path.c_str());
    Call("novatel_GetSBASEnabled");
    Call("novatel_GetGPSLoggingEnabled");
    Trace("off");
    EXPECT_EQ(FileText(path), "CNovatelMPIServer::api_GetSBASEnable\n"
                              "CNovatelMPIServer::api_GetGPSLoggingEnabled\n");
}

TEST_F(NovatelMPIServer, sets_the_sbas_prn) {
    EXPECT_EQ(Call("novatel_GetSBASPRN"), "[0]");
    EXPECT_EQ(Call("novatel_SetSBASPRN", "[133]"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASPRN"), "[133]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\nsbas_prn = 133\n");
    ExpectReplayed("unlogall thisport");
}

TEST_F(NovatelMPIServer, sets_the_reference_format) {
    EXPECT_EQ(Call("novatel_GetReferenceFormat"), R"(["VARN1"])");
    EXPECT_EQ(Call("novatel_SetReferenceFormat", R"(["RTCM3"])"), "[]");
    EXPECT_EQ(Call("novatel_GetReferenceFormat"), R"(["RTCM3"])");
    EXPECT_EQ(SettingsFile(), "[Corvane]\nreference_format_real = RTCM3\n");
    ExpectReplayed("interfacemode usb3 RTCMV3 none");
}

TEST_F(NovatelMPIServer, acknowledges_a_reference_format_that_it_does_not_know) {
    for (const char* name : {"NONE", "rtcm3", ""}) {
        EXPECT_EQ(Call("novatel_SetReferenceFormat", "[\"" + std::string(name) + "\"]"), "[]");
    }
    EXPECT_EQ(Call("novatel_GetReferenceFormat"), R"(["VARN1"])");
    ExpectNothingDone();
}

TEST_F(NovatelMPIServer, gives_the_empty_text_for_a_reference_format_that_is_none) {
    WriteSettings("[Corvane]\nreference_format_real =\n");
    m_commands.BuildConfiguration();
    EXPECT_EQ(Call("novatel_GetReferenceFormat"), R"([""])");
}

TEST_F(NovatelMPIServer, sets_glonass_corrections_for_the_next_build) {
    EXPECT_EQ(Call("novatel_GetGlonassCorrectionsEnabled"), "[1]");
    EXPECT_EQ(Call("novatel_SetGlonassCorrectionsEnabled", "[0]"), "[]");
    EXPECT_EQ(Call("novatel_GetGlonassCorrectionsEnabled"), "[0]");
    ExpectNothingDone("[Corvane]\nglonass_corrections = 0\n");
}

TEST_F(NovatelMPIServer, switches_gps_logging) {
    EXPECT_EQ(Call("novatel_GetGPSLoggingEnabled"), "[0]");
    EXPECT_EQ(Call("novatel_SetGPSLoggingEnabled", "[1]"), "[]");
    EXPECT_EQ(Call("novatel_GetGPSLoggingEnabled"), "[1]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\ngps_logging_enabled = 1\n");
    ExpectReplayed("LOG PSRXYZB ONTIME 1", kUsualCount + kRecordingCount);
    EXPECT_EQ(Call("novatel_SetGPSLoggingEnabled", "[0]"), "[]");
    EXPECT_EQ(Call("novatel_GetGPSLoggingEnabled"), "[0]");
    EXPECT_EQ(SettingsFile(), "[Corvane]\ngps_logging_enabled = 0\n");
    ExpectReplayed("unlogall thisport");
}

TEST_F(NovatelMPIServer, does_nothing_for_a_setting_that_is_as_it_was) {
    for (const auto& [method, argument] : {std::pair("novatel_SetSBASPRN", "[0]"),
                                           {"novatel_SetReferenceFormat", R"(["VARN1"])"},
                                           {"novatel_SetGPSLoggingEnabled", "[0]"}}) {
        EXPECT_EQ(Call(method, argument), "[]") << method;
    }
    EXPECT_EQ(Call("novatel_SetIonosphereMode", "[0]"), "[1]");
    ExpectNothingDone();
}

TEST_F(NovatelMPIServer, sets_the_ionosphere_mode) {
    EXPECT_EQ(Call("novatel_GetIonosphereMode"), "[0]");
    constexpr const char* kTypes[] = {"auto", "klobuchar", "grid", "auto"};
    for (const int mode : {1, 2, 3, 0}) {
        const std::string list = "[" + std::to_string(mode) + "]";
        EXPECT_EQ(Call("novatel_SetIonosphereMode", list), "[1]");
        EXPECT_EQ(Call("novatel_GetIonosphereMode"), list);
        EXPECT_EQ(SettingsFile(), "[Corvane]\nionosphere_mode = " + std::to_string(mode) + "\n");
        ExpectReplayed(std::string("setionotype ") + kTypes[mode]);
    }
}

TEST_F(NovatelMPIServer, returns_nothing_for_an_ionosphere_mode_that_does_not_exist_or_is_missing) {
    for (const char* arguments :
         {"[4]", "[7]", "[7.0]", "[-1]", "[2147483647]", "[-2147483648]", "[]"}) {
        EXPECT_EQ(Call("novatel_SetIonosphereMode", arguments), "null") << arguments;
    }
    EXPECT_EQ(Call("novatel_GetIonosphereMode"), "[0]");
    ExpectNothingDone();
}

TEST_F(NovatelMPIServer, takes_over_what_the_region_presets) {
    WriteSettings("[Corvane]\nforce_sbas_state = 0\n[localisation]\nregion = none\n");
    CConstellationManager constellation;
    m_commands.SetConstellationManager(&constellation);
    EXPECT_EQ(Call("novatel_RefreshRegionSettings"), "[1]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
    TakePending();
    WriteSettings("[Corvane]\nforce_sbas_state = 0\n[localisation]\nregion = north_america\n");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]") << "not before it is told";
    EXPECT_EQ(Call("novatel_RefreshRegionSettings"), "[1]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[1]");
    ExpectReplayed("unlogall thisport");
}

TEST_F(NovatelMPIServer, accepts_a_reference_output_bandwidth_and_ignores_it) {
    for (const char* arguments : {"[]", "[100]", R"(["x",{},null])"}) {
        EXPECT_EQ(Call("novatel_SetReferenceOutputBandwidth", arguments), "null");
    }
    ExpectNothingDone();
}
