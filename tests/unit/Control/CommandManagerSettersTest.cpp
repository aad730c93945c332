// The operations of the command manager that change a setting.
#include "Control/CommandManagerTesting.h"

namespace {

using Lines = std::vector<std::string>;

class Setters : public CCommandManagerTesting {
protected:
    Setters() {
        // None of these may be left after a change, and all of them without one.
        m_commands.SendCommand("kept\r\n");
        m_commands.QueueCommand("waiting\r\n");
        m_source.done.clear();
    }

    /// The fresh configuration, and nothing else, has been queued, and can be queued again.
    void ExpectReplayed(const SConfigurationChoice& choice = {}) {
        EXPECT_EQ(TakePending(), ExpectedCommands(choice));
        EXPECT_EQ(Configuration(), WithoutReset(ExpectedCommands(choice)));
        EXPECT_EQ(m_source.done, Lines{});
    }
    /// The fresh configuration has been built, but cannot be queued.
    void ExpectBuilt(const SConfigurationChoice& choice = {}) {
        EXPECT_EQ(Configuration(), ExpectedCommands(choice));
        EXPECT_EQ(m_commands.PendingCount(), 0U);
    }
    void ExpectUntouched(const std::string& settingsFile = "") {
        EXPECT_EQ(Configuration(), Lines{"kept\r\n"});
        EXPECT_EQ(TakePending(), Lines{"waiting\r\n"});
        EXPECT_EQ(m_source.done, Lines{});
        EXPECT_EQ(SettingsFile(), settingsFile);
    }
    static SConfigurationChoice WithFormat(const std::string& format) {
        SConfigurationChoice choice;
        choice.referenceFormat = format;
        return choice;
    }
    static SConfigurationChoice WithMode(int mode) {
        SConfigurationChoice choice;
        choice.ionosphereMode = mode;
        return choice;
    }
    static SConfigurationChoice WithLogging() {
        SConfigurationChoice choice;
        choice.gpsLogging = true;
        return choice;
    }

    static inline const Lines kFormats = {"VARN1", "CMR", "RTCM3", "RTCM2"};
};

} // namespace

TEST_F(Setters, keep_glonass_corrections_for_the_next_build) {
    m_commands.SetGlonassCorrections(false);
    EXPECT_FALSE(m_commands.GlonassCorrections());
    ExpectUntouched("[Corvane]\nglonass_corrections = 0\n");
    m_commands.BuildConfiguration();
    EXPECT_FALSE(m_commands.GlonassCorrections());
    m_commands.SetGlonassCorrections(true);
    EXPECT_TRUE(m_commands.GlonassCorrections());
    EXPECT_EQ(SettingsFile(), "[Corvane]\nglonass_corrections = 1\n");
}

TEST_F(Setters, write_glonass_corrections_that_are_as_they_were) {
    m_commands.SetGlonassCorrections(true);
    ExpectUntouched("[Corvane]\nglonass_corrections = 1\n");
}

TEST_F(Setters, switch_gps_logging_on) {
    m_commands.SetGPSLoggingEnabled(true);
    EXPECT_TRUE(m_commands.GPSLoggingEnabled());
    EXPECT_EQ(SettingsFile(), "[Corvane]\ngps_logging_enabled = 1\n");
    ExpectReplayed(WithLogging());
    EXPECT_EQ(CCategoryWishes::All(), (CCategoryWishes::Wishes{{"NovatelPortHandler", true}}));
}

TEST_F(Setters, switch_gps_logging_off) {
    WriteSettings("gps_logging_enabled = 5\n");
    m_commands.BuildConfiguration();
    m_commands.SetGPSLoggingEnabled(false);
    EXPECT_FALSE(m_commands.GPSLoggingEnabled());
    EXPECT_EQ(SettingsFile(), "[Corvane]\ngps_logging_enabled = 0\n");
    ExpectReplayed();
    EXPECT_EQ(CCategoryWishes::All(), (CCategoryWishes::Wishes{{"NovatelPortHandler", false}}));
}

TEST_F(Setters, do_nothing_about_gps_logging_that_is_as_it_was) {
    m_commands.SetGPSLoggingEnabled(false);
    ExpectUntouched();
    EXPECT_EQ(CCategoryWishes::All(), CCategoryWishes::Wishes{});
}

TEST_F(Setters, take_any_number_above_zero_for_gps_logging_that_is_on) {
    WriteSettings("gps_logging_enabled = 5\n");
    m_commands.BuildConfiguration();
    m_commands.SetGPSLoggingEnabled(true);
    EXPECT_EQ(SettingsFile(), "[Corvane]\ngps_logging_enabled = 5\n");
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(CCategoryWishes::All(), CCategoryWishes::Wishes{});
}

TEST_F(Setters, switch_gps_logging_without_a_source) {
    m_commands.SetByteSource(nullptr);
    m_commands.SetGPSLoggingEnabled(true);
    ExpectBuilt(WithLogging());
    EXPECT_EQ(CCategoryWishes::All(), (CCategoryWishes::Wishes{{"NovatelPortHandler", true}}));
}

TEST_F(Setters, leave_the_logging_services_category_alone_otherwise) {
    m_commands.SetGlonassCorrections(false);
    m_commands.SetIonosphereMode(2);
    m_commands.SetSBASPrn(122);
    m_commands.SetReferenceFormat("CMR");
    m_commands.SetReferencePosition(0.1, 0.2, 3.0);
    m_commands.ClearReferencePosition();
    m_commands.RefreshChannelConfiguration();
    EXPECT_EQ(CCategoryWishes::All(), CCategoryWishes::Wishes{});
}

TEST_F(Setters, set_the_ionosphere_mode) {
    for (const int mode : {1, 2, 3, 0}) {
        EXPECT_TRUE(m_commands.SetIonosphereMode(static_cast<std::uint32_t>(mode)));
        EXPECT_EQ(m_commands.IonosphereMode(), static_cast<std::uint32_t>(mode));
        EXPECT_EQ(SettingsFile(), "[Corvane]\nionosphere_mode = " + std::to_string(mode) + "\n");
        ExpectReplayed(WithMode(mode));
    }
}

TEST_F(Setters, do_nothing_about_an_ionosphere_mode_that_is_as_it_was) {
    EXPECT_TRUE(m_commands.SetIonosphereMode(0));
    ExpectUntouched();
}

TEST_F(Setters, write_an_ionosphere_mode_that_there_is_not_and_use_mode_0) {
    EXPECT_TRUE(m_commands.SetIonosphereMode(7));
    EXPECT_EQ(SettingsFile(), "[Corvane]\nionosphere_mode = 7\n");
    EXPECT_EQ(m_commands.IonosphereMode(), 0U);
    ExpectReplayed();
}

TEST_F(Setters, set_the_ionosphere_mode_without_a_source) {
    m_commands.SetByteSource(nullptr);
    EXPECT_TRUE(m_commands.SetIonosphereMode(2));
    EXPECT_EQ(SettingsFile(), "[Corvane]\nionosphere_mode = 2\n");
    ExpectBuilt(WithMode(2));
}

TEST_F(Setters, set_the_sbas_prn) {
    for (const std::int32_t prn : {122, -5, 0}) {
        m_commands.SetSBASPrn(prn);
        EXPECT_EQ(m_commands.SBASPrn(), prn);
        EXPECT_EQ(SettingsFile(), "[Corvane]\nsbas_prn = " + std::to_string(prn) + "\n");
        ExpectReplayed();
    }
}

TEST_F(Setters, do_nothing_about_an_sbas_prn_that_is_as_it_was) {
    m_commands.SetSBASPrn(0);
    ExpectUntouched();
}

TEST_F(Setters, bring_other_settings_into_force_that_have_changed_meanwhile) {
    WriteSettings("ionosphere_mode = 1\n");
    m_commands.SetSBASPrn(122);
    EXPECT_EQ(m_commands.IonosphereMode(), 1U);
    ExpectReplayed(WithMode(1));
}

TEST_F(Setters, set_the_reference_position) {
    m_commands.SetReferencePosition(0.8220500776893293, -0.14835298641951802, 400.0);
    EXPECT_EQ(SettingsFile(),
              "[Corvane]\nreference_position = 47.100000000000,-8.500000000000,400.0000\n");
    const SReferencePosition& position = m_commands.ReferencePosition();
    EXPECT_TRUE(position.isValid);
    EXPECT_NEAR(position.latitude, 0.8220500776893293, 1e-14);
    EXPECT_NEAR(position.longitude, -0.14835298641951802, 1e-14);
    EXPECT_DOUBLE_EQ(position.height, 400.0);
    ExpectReplayed();
}

TEST_F(Setters, write_the_reference_position_with_12_and_4_decimals) {
    // One radian is 57.29577951308232 degrees.
    m_commands.SetReferencePosition(1.0, -2.0, -12.34567);
    EXPECT_EQ(SettingsFile(),
              "[Corvane]\nreference_position = 57.295779513082,-114.591559026165,-12.3457\n");
    // What is in force is what the settings hold.
    EXPECT_DOUBLE_EQ(m_commands.ReferencePosition().height, -12.3457);
    EXPECT_NEAR(m_commands.ReferencePosition().longitude, -2.0, 1e-13);
}

TEST_F(Setters, replay_with_a_reference_position_that_is_as_it_was) {
    m_commands.SetReferencePosition(0.5, 0.25, 1.0);
    TakePending();
    m_commands.SetReferencePosition(0.5, 0.25, 1.0);
    ExpectReplayed();
}

TEST_F(Setters, set_the_reference_position_without_a_source) {
    m_commands.SetByteSource(nullptr);
    m_commands.SetReferencePosition(0.0, 0.0, 0.0);
    EXPECT_TRUE(m_commands.ReferencePosition().isValid);
    ExpectBuilt();
}

TEST_F(Setters, clear_the_reference_position) {
    WriteSettings("sbas_prn = 122\nreference_position = 47.1,8.5,400\n");
    m_commands.BuildConfiguration();
    ASSERT_TRUE(m_commands.ReferencePosition().isValid);
    EXPECT_TRUE(m_commands.ClearReferencePosition());
    EXPECT_FALSE(m_commands.ReferencePosition().isValid);
    EXPECT_EQ(SettingsFile(), "[Corvane]\nsbas_prn = 122\n");
    ExpectReplayed();
}

TEST_F(Setters, replay_when_there_is_no_reference_position_to_clear) {
    EXPECT_TRUE(m_commands.ClearReferencePosition());
    EXPECT_EQ(SettingsFile(), "");
    ExpectReplayed();
}

TEST_F(Setters, say_that_a_cleared_reference_position_cannot_be_replayed_without_a_source) {
    m_commands.SetReferencePosition(0.5, 0.25, 1.0);
    m_commands.SetByteSource(nullptr);
    EXPECT_FALSE(m_commands.ClearReferencePosition());
    EXPECT_FALSE(m_commands.ReferencePosition().isValid);
    ExpectBuilt();
}

TEST_F(Setters, set_every_reference_format_that_there_is) {
    for (const std::string& from : kFormats) {
        for (const std::string& to : kFormats) {
            if (from == to) {
                continue;
            }
            WriteSettings("reference_format_real = " + from + "\n");
            m_commands.BuildConfiguration();
            EXPECT_EQ(m_commands.SetReferenceFormat(to), 1);
            EXPECT_EQ(m_commands.ReferenceFormat(), to);
            EXPECT_EQ(SettingsFile(), "[Corvane]\nreference_format_real = " + to + "\n");
            ExpectReplayed(WithFormat(to));
        }
    }
}

TEST_F(Setters, do_nothing_about_a_reference_format_that_is_as_it_was) {
    EXPECT_EQ(m_commands.SetReferenceFormat("VARN1"), 0);
    ExpectUntouched();
    for (const std::string& format : kFormats) {
        WriteSettings("reference_format = " + format + "\n");
        m_commands.BuildConfiguration();
        EXPECT_EQ(m_commands.SetReferenceFormat(format), 0);
        EXPECT_EQ(m_commands.PendingCount(), 0U);
        EXPECT_EQ(SettingsFile(), "[Corvane]\nreference_format = " + format + "\n");
    }
}

TEST_F(Setters, refuse_every_other_reference_format) {
    for (const std::string format : {"NONE", "RTCA", "varn1", "rtcm3", "RTCMV3", " CMR", ""}) {
        EXPECT_NE(m_commands.SetReferenceFormat(format), 0) << format;
        EXPECT_EQ(m_commands.ReferenceFormat(), "VARN1");
    }
    ExpectUntouched();
}

TEST_F(Setters, refuse_a_reference_format_even_when_it_is_in_force) {
    WriteSettings("reference_format = NONE\n");
    m_commands.BuildConfiguration();
    EXPECT_NE(m_commands.SetReferenceFormat("NONE"), 0);
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(Setters, leave_the_reference_format_that_the_real_one_overrides) {
    WriteSettings("reference_format = RTCM3\n");
    m_commands.BuildConfiguration();
    EXPECT_EQ(m_commands.SetReferenceFormat("CMR"), 1);
    EXPECT_EQ(SettingsFile(), "[Corvane]\nreference_format = RTCM3\nreference_format_real = CMR\n");
    ExpectReplayed(WithFormat("CMR"));
}

TEST_F(Setters, give_the_replays_result_for_a_new_reference_format) {
    m_commands.SetByteSource(nullptr);
    EXPECT_EQ(m_commands.SetReferenceFormat("RTCM2"), 0);
    EXPECT_EQ(SettingsFile(), "[Corvane]\nreference_format_real = RTCM2\n");
    ExpectBuilt(WithFormat("RTCM2"));
}

TEST_F(Setters, force_sbas_on_and_off) {
    const CConstellationManager& constellation = AttachConstellationManager();
    ASSERT_FALSE(constellation.IsSBASWanted());
    EXPECT_TRUE(m_commands.SetSBASEnabled(true));
    EXPECT_TRUE(constellation.IsSBASWanted());
    EXPECT_EQ(SettingsFile(), "[Corvane]\nforce_sbas_state = 1\nforce_sbas_on = 1\n");
    ExpectReplayed();
    EXPECT_TRUE(m_commands.SetSBASEnabled(false));
    EXPECT_FALSE(constellation.IsSBASWanted());
    EXPECT_EQ(SettingsFile(), "[Corvane]\nforce_sbas_state = 1\nforce_sbas_on = 0\n");
    ExpectReplayed();
}

TEST_F(Setters, force_sbas_where_the_region_decided_before) {
    WriteSettings("force_sbas_state = 0\n[localisation]\nregion = europe\n");
    const CConstellationManager& constellation = AttachConstellationManager();
    ASSERT_TRUE(constellation.IsSBASWanted());
    EXPECT_TRUE(m_commands.SetSBASEnabled(false));
    EXPECT_FALSE(constellation.IsSBASWanted());
}

TEST_F(Setters, force_sbas_without_a_source) {
    AttachConstellationManager();
    m_commands.SetByteSource(nullptr);
    EXPECT_TRUE(m_commands.SetSBASEnabled(true));
    ExpectBuilt();
}

TEST_F(Setters, do_nothing_about_sbas_without_a_constellation_manager) {
    EXPECT_FALSE(m_commands.SetSBASEnabled(true));
    ExpectUntouched();
}

TEST_F(Setters, take_over_what_the_region_presets) {
    WriteSettings("force_sbas_state = 0\n");
    const CConstellationManager& constellation = AttachConstellationManager();
    ASSERT_FALSE(constellation.IsSBASWanted());
    ASSERT_EQ(constellation.DesiredConfiguration(), 1);
    WriteSettings("force_sbas_state = 0\n[localisation]\nregion = japan\n");
    EXPECT_TRUE(m_commands.RefreshChannelConfiguration());
    EXPECT_TRUE(constellation.IsSBASWanted());
    EXPECT_EQ(constellation.DesiredConfiguration(), 2);
    ExpectReplayed();
}

TEST_F(Setters, say_that_a_refresh_cannot_be_replayed_without_a_source) {
    AttachConstellationManager();
    m_commands.SetByteSource(nullptr);
    EXPECT_FALSE(m_commands.RefreshChannelConfiguration());
    ExpectBuilt();
}

TEST_F(Setters, refresh_without_a_constellation_manager) {
    EXPECT_TRUE(m_commands.RefreshChannelConfiguration());
    ExpectReplayed();
}
