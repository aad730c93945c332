#include "Control/ConstellationManagerTesting.h"

#include <gmock/gmock.h>

namespace {

using ConstellationManager = CConstellationManagerTesting;

constexpr char kLoaded[] =
    "CConstellationManager::CConstellationManager: loaded last sent channel config as ";

struct SGlonassCase {
    bool isSupported;
    bool isForced;
    bool isForcedOn;
    bool isWanted;
};

class ConstellationManagerGlonass : public CConstellationManagerTesting,
                                    public testing::WithParamInterface<SGlonassCase> {
protected:
    void StartWithSBAS(bool isOn) {
        const SGlonassCase& row = GetParam();
        StartWith("receiver_supports_glonass = " + std::to_string(row.isSupported) +
                  "\nforce_glonass_state = " + std::to_string(row.isForced) +
                  "\nforce_glonass_on = " + std::to_string(row.isForcedOn) +
                  "\nforce_sbas_state = 1\nforce_sbas_on = " + std::to_string(isOn) + "\n");
    }
};

} // namespace

TEST_F(ConstellationManager, starts_with_its_name_what_it_has_loaded_and_a_decision_of_the_region) {
    Start();
    Lines published = m_published.All();
    ASSERT_FALSE(published.empty());
    EXPECT_THAT(published.front(),
                testing::StartsWith(R"(logger.register "name":"NovatelConstellationManager",)"));
    published.erase(published.begin());
    EXPECT_EQ(published, Joined({{Warning(std::string(kLoaded) + "0")}, Decision(1, true)}));
    EXPECT_EQ(Settings(), "") << "nothing is written by the start";
}

TEST_F(ConstellationManager, without_settings_wants_neither_and_knows_of_no_configuration) {
    Start();
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
    EXPECT_EQ(m_manager->CurrentConfiguration(), 0);
    EXPECT_FALSE(m_manager->IsGlonassWanted());
    EXPECT_FALSE(m_manager->IsSBASWanted());
    EXPECT_FALSE(m_manager->ReceiverIs615());
    EXPECT_TRUE(m_manager->AvailableConfigurations().empty());
}

TEST_F(ConstellationManager, with_glonass_and_no_other_setting_wants_glonass_alone) {
    StartWith("receiver_supports_glonass = 1\n");
    EXPECT_EQ(m_manager->DesiredConfiguration(), 4);
    EXPECT_TRUE(m_manager->IsGlonassWanted());
    EXPECT_FALSE(m_manager->IsSBASWanted());
}

TEST_F(ConstellationManager, takes_glonass_for_supported_above_zero_only) {
    StartWith("receiver_supports_glonass = 2\n");
    EXPECT_TRUE(m_manager->IsGlonassWanted());
    StartWith("receiver_supports_glonass = 0\n");
    EXPECT_FALSE(m_manager->IsGlonassWanted());
    StartWith("receiver_supports_glonass = -1\n");
    EXPECT_FALSE(m_manager->IsGlonassWanted());
}

TEST_F(ConstellationManager, takes_every_other_flag_for_set_unless_it_is_zero) {
    for (const std::string set : {"1", "2", "-1"}) {
        StartWith("receiver_supports_glonass = 1\nforce_glonass_state = " + set + "\n");
        EXPECT_FALSE(m_manager->IsGlonassWanted()) << set;
        StartWith("receiver_supports_glonass = 1\nforce_glonass_state = 1\nforce_glonass_on = " +
                  set + "\n");
        EXPECT_TRUE(m_manager->IsGlonassWanted()) << set;
        StartWith("force_sbas_on = " + set + "\n");
        EXPECT_TRUE(m_manager->IsSBASWanted()) << set;
        StartWith("receiver_supports_glonass = 1\nforce_sbas_state = " + set + "\n");
        EXPECT_FALSE(m_manager->IsSBASWanted()) << set;
        StartWith("receiver_is_615 = " + set + "\n");
        EXPECT_TRUE(m_manager->ReceiverIs615()) << set;
    }
    StartWith("receiver_is_615 = 0\n");
    EXPECT_FALSE(m_manager->ReceiverIs615());
}

TEST_F(ConstellationManager, reads_section_Corvane_alone) {
    WriteSettings("[other]\nreceiver_supports_glonass = 1\nreceiver_is_615 = 1\n"
                  "force_sbas_on = 1\ncurrent_channel_configuration = 3\n");
    Start();
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
    EXPECT_EQ(m_manager->CurrentConfiguration(), 0);
    EXPECT_FALSE(m_manager->ReceiverIs615());
}

TEST_P(ConstellationManagerGlonass, is_wanted_as_the_table_says_with_and_without_SBAS) {
    StartWithSBAS(false);
    EXPECT_EQ(m_manager->IsGlonassWanted(), GetParam().isWanted);
    EXPECT_FALSE(m_manager->IsSBASWanted());
    EXPECT_EQ(m_manager->DesiredConfiguration(), GetParam().isWanted ? 4 : 1);
    StartWithSBAS(true);
    EXPECT_EQ(m_manager->IsGlonassWanted(), GetParam().isWanted);
    EXPECT_TRUE(m_manager->IsSBASWanted());
    EXPECT_EQ(m_manager->DesiredConfiguration(), GetParam().isWanted ? 5 : 2);
    EXPECT_EQ(m_published.Texts("\"key\":\"desired_channel_configuration\""),
              GetParam().isWanted ? (Lines{"4", "5"}) : (Lines{"1", "2"}));
}

INSTANTIATE_TEST_SUITE_P(
    All, ConstellationManagerGlonass,
    testing::Values(SGlonassCase{false, false, false, false},
                    SGlonassCase{false, false, true, false},
                    SGlonassCase{false, true, false, false}, SGlonassCase{false, true, true, false},
                    SGlonassCase{true, false, false, true}, SGlonassCase{true, false, true, true},
                    SGlonassCase{true, true, false, false}, SGlonassCase{true, true, true, true}));

TEST_F(ConstellationManager, tells_and_keeps_the_configuration_that_was_sent) {
    StartWith("current_channel_configuration = 2\n");
    EXPECT_EQ(m_published.Count(std::string(kLoaded) + "2"), 1);
    EXPECT_EQ(PublishedBy([this] { m_manager->ChannelConfigSelected(5); }),
              Joined({{Warning("CConstellationManager::ChannelConfigSelected: currentChannel: 5 "
                               "m_lastSetChannelConfiguration: 2")},
                      Decision(1)}));
    EXPECT_EQ(m_manager->CurrentConfiguration(), 5);
    EXPECT_EQ(Settings(), "[Corvane]\ncurrent_channel_configuration = 5\n");
    Start();
    EXPECT_EQ(m_manager->CurrentConfiguration(), 5);
    EXPECT_EQ(m_published.Count(std::string(kLoaded) + "5"), 1);
}

TEST_F(ConstellationManager, does_nothing_but_tell_when_the_same_configuration_was_sent_again) {
    WriteSettings("");
    Start();
    EXPECT_EQ(PublishedBy([this] { m_manager->ChannelConfigSelected(0); }),
              (Lines{Warning("CConstellationManager::ChannelConfigSelected: currentChannel: 0 "
                             "m_lastSetChannelConfiguration: 0")}));
    EXPECT_EQ(Settings(), "");
}

TEST_F(ConstellationManager, does_not_want_what_was_sent_for_that) {
    Start();
    m_manager->ChannelConfigSelected(6);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
}

TEST_F(ConstellationManager, forces_SBAS_on_and_keeps_that) {
    StartWith("receiver_supports_glonass = 1\n");
    EXPECT_EQ(PublishedBy([this] { EXPECT_TRUE(m_manager->SetSBASForced(true, true)); }),
              Decision(5));
    EXPECT_TRUE(m_manager->IsSBASWanted());
    EXPECT_EQ(Settings(), "[Corvane]\nreceiver_supports_glonass = 1\nforce_sbas_state = 1\n"
                          "force_sbas_on = 1\n");
    Start();
    EXPECT_EQ(m_manager->DesiredConfiguration(), 5);
}

TEST_F(ConstellationManager, forces_SBAS_off_and_keeps_that) {
    StartWith("force_sbas_on = 1\n");
    EXPECT_EQ(PublishedBy([this] { EXPECT_TRUE(m_manager->SetSBASForced(true, false)); }),
              Decision(1));
    EXPECT_EQ(Settings(), "[Corvane]\nforce_sbas_on = 0\nforce_sbas_state = 1\n");
}

TEST_F(ConstellationManager, leaves_SBAS_to_the_region_and_keeps_that) {
    WriteSettings("[localisation]\nregion = europe\n");
    Start();
    EXPECT_EQ(PublishedBy([this] { EXPECT_TRUE(m_manager->SetSBASForced(false, true)); }),
              Decision(2));
    EXPECT_EQ(Settings(), "[localisation]\nregion = europe\n\n[Corvane]\nforce_sbas_state = 0\n"
                          "force_sbas_on = 1\n");
    Start();
    EXPECT_EQ(m_manager->DesiredConfiguration(), 2);
}

TEST_F(ConstellationManager, decides_and_publishes_again_when_SBAS_is_forced_as_it_is) {
    Start();
    EXPECT_EQ(PublishedBy([this] { m_manager->SetSBASForced(true, false); }), Decision(1));
    EXPECT_EQ(PublishedBy([this] { m_manager->SetSBASForced(true, false); }), Decision(1));
}

TEST_F(ConstellationManager, leaves_the_diagnostic_alone_until_the_model_is_known) {
    for (const char* const supported : {"0", "1"}) {
        StartWith(std::string("receiver_supports_glonass = ") + supported + "\n");
        m_manager->SetSBASForced(true, true);
        m_manager->RefreshRegionDefaults();
        m_manager->ChannelConfigSelected(3);
        Offer(Sentences::Chanconfiglist().inUse(2));
        EXPECT_EQ(m_published.Count("diagnostics."), 0) << supported;
    }
}
