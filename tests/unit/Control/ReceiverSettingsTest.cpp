#include "Control/ReceiverSettings.h"

#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;

constexpr double kRadians47_1 = 0.8220500776893293;
constexpr double kRadians8_5 = 0.14835298641951802;
constexpr double kRadiansMinus33_25 = -0.5803219762881145;
constexpr double kRadians151_2 = 2.638937829015426;

using Rows = std::vector<std::pair<std::string, std::string>>;

class ReceiverSettings : public testing::Test {
protected:
    /// The settings after those of a section "Corvane" with these lines.
    const SReceiverSettings& Read(const std::string& lines) {
        CConfig config(m_folder.Write("corvane.conf", "[Corvane]\n" + lines));
        testing::internal::CaptureStderr();
        ReadReceiverSettings(config, m_settings);
        m_errors = testing::internal::GetCapturedStderr();
        return m_settings;
    }
    const SReceiverSettings& Read(const std::string& key, const std::string& value) {
        return Read(key + " = " + value + "\n");
    }
    const SReferencePosition& ReadPosition(const std::string& value) {
        return Read("reference_position", value).referencePosition;
    }

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    SReceiverSettings m_settings;
    std::string m_errors;
};

} // namespace

TEST_F(ReceiverSettings, have_values_before_any_is_read) {
    EXPECT_FALSE(m_settings.gpsLoggingEnabled);
    EXPECT_EQ(m_settings.ionosphereMode, 0U);
    EXPECT_EQ(m_settings.sbasPrn, 0);
    EXPECT_EQ(m_settings.referenceFormat, "VARN1");
    EXPECT_FALSE(m_settings.referencePosition.isValid);
    EXPECT_EQ(m_settings.referencePosition.latitude, 0.0);
    EXPECT_EQ(m_settings.referencePosition.longitude, 0.0);
    EXPECT_EQ(m_settings.referencePosition.height, 0.0);
    EXPECT_TRUE(m_settings.glonassCorrections);
    EXPECT_TRUE(m_settings.rtkExtraSafe);
}

TEST_F(ReceiverSettings, have_defaults_for_absent_keys) {
    m_settings = {true, true, 3, 122, "RTCM3", true, {true, 1, 2, 3}, false, true, "9", "sea", "8"};
    Read("");
    EXPECT_FALSE(m_settings.gpsLoggingEnabled);
    EXPECT_FALSE(m_settings.specialLogs);
    EXPECT_EQ(m_settings.ionosphereMode, 0U);
    EXPECT_EQ(m_settings.sbasPrn, 0);
    EXPECT_EQ(m_settings.referenceFormat, "VARN1");
    EXPECT_FALSE(m_settings.isPSRDiffSourceAuto);
    EXPECT_FALSE(m_settings.referencePosition.isValid);
    EXPECT_TRUE(m_settings.glonassCorrections);
    EXPECT_FALSE(m_settings.rtkExtraSafe);
    EXPECT_EQ(m_settings.positionUpdate, "0.05");
    EXPECT_EQ(m_settings.dynamicsType, "air");
    EXPECT_EQ(m_settings.timeUpdate, "0.05");
    EXPECT_EQ(m_errors, "");
}

TEST_F(ReceiverSettings, are_those_of_their_own_section) {
    CConfig config(m_folder.Write("corvane.conf", "special_logs = 1\n[corvane]\nsbas_prn = 1\n"
                                                  "[glide]\nionosphere_mode = 2\n"));
    ReadReceiverSettings(config, m_settings);
    EXPECT_FALSE(m_settings.specialLogs);
    EXPECT_EQ(m_settings.sbasPrn, 0);
    EXPECT_EQ(m_settings.ionosphereMode, 0U);
}

TEST_F(ReceiverSettings, log_for_recording_with_a_number_above_zero) {
    const std::vector<std::pair<std::string, bool>> rows = {
        {"1", true},  {"2", true},   {"2147483647", true},
        {"0", false}, {"-1", false}, {"-2147483648", false}};
    for (const auto& [text, isEnabled] : rows) {
        EXPECT_EQ(Read("gps_logging_enabled", text).gpsLoggingEnabled, isEnabled) << text;
    }
}

TEST_F(ReceiverSettings, log_for_recording_with_no_other_text) {
    for (const char* const text : {"true", "yes", "on", "", "2147483648"}) {
        EXPECT_FALSE(Read("gps_logging_enabled", text).gpsLoggingEnabled) << text;
    }
}

TEST_F(ReceiverSettings, have_special_logs_with_a_boolean) {
    for (const char* const text : {"true", "1", "yes", "on"}) {
        EXPECT_TRUE(Read("special_logs", text).specialLogs) << text;
    }
    for (const char* const text : {"false", "0", "no", "off", "2", "enabled", ""}) {
        EXPECT_FALSE(Read("special_logs", text).specialLogs) << text;
    }
}

TEST_F(ReceiverSettings, keep_four_ionosphere_modes_and_take_0_for_others) {
    const std::vector<std::pair<std::string, std::uint32_t>> rows = {
        {"0", 0},  {"1", 1}, {"2", 2},  {"3", 3},           {"4", 0},           {"5", 0},
        {"6", 0},  {"7", 0}, {"-1", 0}, {"2147483647", 0},  {"-2147483648", 0}, {"2147483649", 0},
        {"-3", 0}, {"", 0},  {"17", 0}, {"4294967298", 0U}, {"grid", 0}};
    for (const auto& [text, mode] : rows) {
        EXPECT_EQ(Read("ionosphere_mode", text).ionosphereMode, mode) << text;
    }
}

TEST_F(ReceiverSettings, keep_the_sbas_prn_as_it_is) {
    EXPECT_EQ(Read("sbas_prn", "131").sbasPrn, 131);
    EXPECT_EQ(Read("sbas_prn", "-5").sbasPrn, -5);
    EXPECT_EQ(Read("sbas_prn", "egnos").sbasPrn, 0);
}

TEST_F(ReceiverSettings, let_the_real_reference_format_override_the_other_one) {
    const std::vector<std::string> formats = {"VARN1", "CMR",  "RTCM3", "RTCM2",
                                              "NONE",  "RTCA", "rtcm3", ""};
    for (const std::string& format : formats) {
        EXPECT_EQ(Read("reference_format", format).referenceFormat, format);
        EXPECT_EQ(Read("reference_format_real", format).referenceFormat, format);
        for (const std::string& real : formats) {
            const std::string lines =
                "reference_format = " + format + "\nreference_format_real = " + real + "\n";
            EXPECT_EQ(Read(lines).referenceFormat, real) << lines;
        }
    }
}

TEST_F(ReceiverSettings, forget_an_override_that_is_gone) {
    EXPECT_EQ(Read("reference_format_real", "RTCM2").referenceFormat, "RTCM2");
    EXPECT_EQ(Read("").referenceFormat, "VARN1");
}

TEST_F(ReceiverSettings, have_an_automatic_differential_source_with_one_word_only) {
    EXPECT_TRUE(Read("psr_diff_source", "auto").isPSRDiffSourceAuto);
    for (const char* const text : {"none", "AUTO", "Auto", "automatic", "sbas", "1", ""}) {
        EXPECT_FALSE(Read("psr_diff_source", text).isPSRDiffSourceAuto) << text;
    }
    EXPECT_FALSE(Read("special_logs", "1").isPSRDiffSourceAuto);
}

TEST_F(ReceiverSettings, have_glonass_corrections_unless_a_boolean_says_no) {
    for (const char* const text : {"false", "0", "no", "off"}) {
        EXPECT_FALSE(Read("glonass_corrections", text).glonassCorrections) << text;
    }
    for (const char* const text : {"true", "1", "yes", "on", "some"}) {
        EXPECT_TRUE(Read("glonass_corrections", text).glonassCorrections) << text;
    }
}

TEST_F(ReceiverSettings, are_extra_safe_with_a_number_other_than_zero) {
    for (const char* const text : {"1", "2", "-1"}) {
        EXPECT_TRUE(Read("rtk_extra_safe", text).rtkExtraSafe) << text;
    }
    for (const char* const text : {"0", "true", "yes", ""}) {
        EXPECT_FALSE(Read("rtk_extra_safe", text).rtkExtraSafe) << text;
    }
}

TEST_F(ReceiverSettings, take_the_position_period_for_the_time_period_unless_it_has_its_own) {
    Read("position_update", "0.2");
    EXPECT_EQ(m_settings.positionUpdate, "0.2");
    EXPECT_EQ(m_settings.timeUpdate, "0.2");
    Read("timeb_update", "1");
    EXPECT_EQ(m_settings.positionUpdate, "0.05");
    EXPECT_EQ(m_settings.timeUpdate, "1");
    Read("position_update = 0.1\ntimeb_update = 10\n");
    EXPECT_EQ(m_settings.positionUpdate, "0.1");
    EXPECT_EQ(m_settings.timeUpdate, "10");
}

TEST_F(ReceiverSettings, do_not_check_periods_and_dynamics) {
    for (const char* const text : {"fast", "0.050", "-1", "", "1 2"}) {
        EXPECT_EQ(Read("position_update", text).positionUpdate, text);
        EXPECT_EQ(Read("timeb_update", text).timeUpdate, text);
        EXPECT_EQ(Read("dynamics_type", text).dynamicsType, text);
    }
}

TEST_F(ReceiverSettings, have_a_reference_position_of_three_numbers_in_radians_and_metres) {
    const SReferencePosition& position = ReadPosition("47.1,8.5,400");
    EXPECT_TRUE(position.isValid);
    EXPECT_DOUBLE_EQ(position.latitude, kRadians47_1);
    EXPECT_DOUBLE_EQ(position.longitude, kRadians8_5);
    EXPECT_DOUBLE_EQ(position.height, 400.0);
    ReadPosition(" -33.25 , +151.2 , -1.5e1 ");
    EXPECT_TRUE(position.isValid);
    EXPECT_DOUBLE_EQ(position.latitude, kRadiansMinus33_25);
    EXPECT_DOUBLE_EQ(position.longitude, kRadians151_2);
    EXPECT_DOUBLE_EQ(position.height, -15.0);
}

TEST_F(ReceiverSettings, have_no_reference_position_of_any_other_text) {
    for (const char* const text :
         {"", "47.1", "47.1,8.5", "47.1,8.5,", ",8.5,400", "47.1,,400", "47.1,8.5,400,1",
          "47.1,8.5,400,", "47.1 8.5 400", "47.1;8.5;400", "47.1N,8.5,400", "47.1,8.5E,400",
          "47.1,8.5,400m", "a,b,c", ",,", "nan,8.5,400", "47.1,inf,400"}) {
        ASSERT_TRUE(ReadPosition("47.1,8.5,400").isValid);
        EXPECT_FALSE(ReadPosition(text).isValid) << text;
    }
}

TEST_F(ReceiverSettings, keep_the_place_of_a_reference_that_is_no_longer_valid) {
    ReadPosition("47.1,8.5,400");
    for (const char* const text : {"1,2", "1,2,x", ""}) {
        const SReferencePosition& position = ReadPosition(text);
        EXPECT_FALSE(position.isValid);
        EXPECT_DOUBLE_EQ(position.latitude, kRadians47_1);
        EXPECT_DOUBLE_EQ(position.longitude, kRadians8_5);
        EXPECT_DOUBLE_EQ(position.height, 400.0);
    }
}

TEST_F(ReceiverSettings, are_read_even_where_nothing_depends_on_them) {
    Read("debug_baud_rate", "fast");
    EXPECT_THAT(m_errors, HasSubstr("debug_baud_rate = fast is not an integer"));
}

TEST_F(ReceiverSettings, follow_the_file) {
    CConfig config(m_folder.Write("corvane.conf", "[Corvane]\nsbas_prn = 122\n"));
    ReadReceiverSettings(config, m_settings);
    EXPECT_EQ(m_settings.sbasPrn, 122);
    config.SetInteger("Corvane", "sbas_prn", 131);
    ReadReceiverSettings(config, m_settings);
    EXPECT_EQ(m_settings.sbasPrn, 131);
}
