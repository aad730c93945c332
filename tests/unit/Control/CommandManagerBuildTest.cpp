// What the command manager makes of the settings, and the logs of a reference station's output.
#include "Control/CommandManagerTesting.h"

#include <map>
#include <optional>

namespace {

using CommandManager = CCommandManagerTesting;
using Lines = std::vector<std::string>;
using Settings = std::map<std::string, std::string>;
/// The texts of one key; the empty optional is its absence.
using Texts = std::vector<std::optional<std::string>>;
using Product = std::vector<std::pair<std::string, Texts>>;

constexpr auto kAbsent = std::nullopt;

/// Calls `visit` with every combination of the keys' texts.
template <class TVisitor>
void ForEvery(const Product& product, const TVisitor& visit, const Settings& settings = {}) {
    if (product.empty()) {
        visit(settings);
        return;
    }
    const auto& [key, texts] = product.front();
    for (const std::optional<std::string>& text : texts) {
        Settings more = settings;
        if (text) {
            more[key] = *text;
        }
        ForEvery({product.begin() + 1, product.end()}, visit, more);
    }
}

/// The configuration of a command manager that has just been started with these settings.
Lines BuiltWith(const CTemporaryFolder& folder, const std::string& file) {
    CConfig config(folder.Write("built.conf", file));
    CCommandManager commands(config);
    EXPECT_TRUE(commands.BuildConfiguration());
    return commands.Configuration();
}

void CheckEvery(const CTemporaryFolder& folder, const Product& product) {
    // That some texts are no numbers is told each time.
    testing::internal::CaptureStderr();
    ForEvery(product, [&](const Settings& settings) {
        const std::string file = ConfigurationFileOf(settings);
        ASSERT_EQ(BuiltWith(folder, file), ExpectedCommands(ChoiceOf(settings))) << file;
    });
    testing::internal::GetCapturedStderr();
}

} // namespace

TEST_F(CommandManager, builds_the_default_configuration_from_no_settings) {
    EXPECT_TRUE(m_commands.BuildConfiguration());
    EXPECT_EQ(Configuration(), ExpectedCommands({}));
    EXPECT_EQ(SettingsFile(), "");
}

TEST_F(CommandManager, builds_from_every_combination_of_modes_and_sources) {
    CheckEvery(m_folder, {
                             {"special_logs", {kAbsent, "true", "false"}},
                             {"ionosphere_mode",
                              {kAbsent, "-1", "0", "1", "2", "3", "4", "5", "6", "7", "grid"}},
                             {"psr_diff_source", {kAbsent, "none", "auto", "other"}},
                             {"rtk_extra_safe", {kAbsent, "0", "1", "-1", "yes"}},
                         });
}

TEST_F(CommandManager, builds_from_every_combination_of_reference_formats) {
    const Texts formats = {kAbsent, "VARN1", "CMR", "RTCM3", "RTCM2", "NONE", "RTCA", "rtcm3", ""};
    CheckEvery(m_folder, {
                             {"special_logs", {kAbsent, "true"}},
                             {"reference_format", formats},
                             {"reference_format_real", formats},
                         });
}

TEST_F(CommandManager, builds_from_every_combination_of_periods_dynamics_and_logging) {
    CheckEvery(m_folder, {
                             {"special_logs", {kAbsent, "true"}},
                             {"position_update", {kAbsent, "0.2", "0.05", "fast"}},
                             {"timeb_update", {kAbsent, "1", "0.05", "fast"}},
                             {"dynamics_type", {kAbsent, "air", "land"}},
                             {"gps_logging_enabled", {kAbsent, "0", "1", "2", "-1", "true"}},
                         });
}

TEST_F(CommandManager, builds_the_same_whatever_no_command_uses) {
    CheckEvery(m_folder, {
                             {"debug_baud_rate", {kAbsent, "9600"}},
                             {"psrvelocitytype", {kAbsent, "PDP"}},
                             {"sbas_prn", {kAbsent, "122"}},
                             {"glonass_corrections", {kAbsent, "0"}},
                             {"reference_position", {kAbsent, "47.1,8.5,400", "x"}},
                         });
}

TEST_F(CommandManager, keeps_what_it_read_for_a_build) {
    WriteSettings("gps_logging_enabled = 2\nionosphere_mode = 3\nsbas_prn = 131\n"
                  "reference_format = RTCM3\nreference_position = 47.1,8.5,400\n"
                  "glonass_corrections = no\n");
    m_commands.BuildConfiguration();
    EXPECT_TRUE(m_commands.GPSLoggingEnabled());
    EXPECT_EQ(m_commands.IonosphereMode(), 3U);
    EXPECT_EQ(m_commands.SBASPrn(), 131);
    EXPECT_EQ(m_commands.ReferenceFormat(), "RTCM3");
    EXPECT_TRUE(m_commands.ReferencePosition().isValid);
    EXPECT_DOUBLE_EQ(m_commands.ReferencePosition().height, 400.0);
    EXPECT_FALSE(m_commands.GlonassCorrections());
}

TEST_F(CommandManager, keeps_mode_0_for_a_mode_that_there_is_not) {
    WriteSettings("ionosphere_mode = 2\n");
    m_commands.BuildConfiguration();
    WriteSettings("ionosphere_mode = 7\n");
    m_commands.BuildConfiguration();
    EXPECT_EQ(m_commands.IonosphereMode(), 0U);
}

TEST_F(CommandManager, forgets_what_waits_and_what_was_kept_with_a_build) {
    m_commands.SendCommand("sent\r\n");
    m_commands.QueueCommand("waiting\r\n");
    m_commands.BuildConfiguration();
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(Configuration(), ExpectedCommands({}));
}

TEST_F(CommandManager, sends_nothing_and_opens_nothing_for_a_build) {
    m_source.isOpen = false;
    m_commands.BuildConfiguration();
    EXPECT_EQ(m_source.done, Lines{});
    m_commands.SetByteSource(nullptr);
    EXPECT_TRUE(m_commands.BuildConfiguration());
}

TEST_F(CommandManager, selects_no_channel_configuration_although_one_is_wanted) {
    EXPECT_NE(AttachConstellationManager().DesiredConfiguration(), 0);
    EXPECT_TRUE(m_commands.BuildConfiguration());
    EXPECT_EQ(Configuration(), ExpectedCommands({}));
}

TEST_F(CommandManager, adds_cmr_logs_for_reference_output) {
    for (const std::string format : {"VARN1", "CMR"}) {
        CCommandManager commands(m_config);
        commands.AddReferenceOutputLogs("com1", format);
        EXPECT_EQ(commands.Configuration(),
                  (Lines{"log com1 cmrobs ontime 1\r\n", "log com1 cmrgloobs ontime 1\r\n",
                         "log com1 cmrdesc ontime 10\r\n", "log com1 cmrref ontime 10\r\n"}));
    }
}

TEST_F(CommandManager, adds_rtcm3_logs_for_reference_output) {
    m_commands.AddReferenceOutputLogs("usb3", "RTCM3");
    EXPECT_EQ(Configuration(),
              (Lines{"log usb3 rtcm1004 ontime 1\r\n", "log usb3 rtcm1012 ontime 1\r\n",
                     "log usb3 rtcm1005 ontime 10\r\n", "log usb3 rtcm1033 ontime 60\r\n"}));
}

TEST_F(CommandManager, adds_no_glonass_logs_without_glonass_corrections) {
    m_commands.SetGlonassCorrections(false);
    m_commands.AddReferenceOutputLogs("com2", "RTCM3");
    m_commands.AddReferenceOutputLogs("com2", "VARN1");
    EXPECT_EQ(Configuration(),
              (Lines{"log com2 rtcm1004 ontime 1\r\n", "log com2 rtcm1005 ontime 10\r\n",
                     "log com2 rtcm1033 ontime 60\r\n", "log com2 cmrobs ontime 1\r\n",
                     "log com2 cmrdesc ontime 10\r\n", "log com2 cmrref ontime 10\r\n"}));
}

TEST_F(CommandManager, adds_reference_output_behind_the_configuration_without_sending_it) {
    m_commands.BuildConfiguration();
    m_commands.AddReferenceOutputLogs("com2", "CMR");
    const Lines commands = Configuration();
    ASSERT_EQ(commands.size(), 61U + 4U);
    EXPECT_EQ(Lines(commands.begin(), commands.begin() + 61), ExpectedCommands({}));
    EXPECT_EQ(commands.back(), "log com2 cmrref ontime 10\r\n");
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(m_source.done, Lines{});
}

TEST_F(CommandManager, adds_no_reference_output_of_other_formats) {
    for (const std::string format : {"RTCM2", "NONE", "rtcm3", "RTCMV3", "varn1", "cmr", ""}) {
        m_commands.AddReferenceOutputLogs("com2", format);
        EXPECT_EQ(Configuration(), Lines{}) << format;
    }
}
