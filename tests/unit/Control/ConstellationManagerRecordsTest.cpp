// What the constellation manager learns from the receiver's VERSION and CHANCONFIGLIST.

#include "Control/ConstellationManagerTesting.h"
#include "Support/TextSentences.h"

namespace {

using Sentences::Chanconfiglist;
using Sentences::Version;

constexpr char kRaised[] =
    R"(diagnostics.raise "name":"CConstellationManager","code":79188,"sub":12,"value":1 )";
constexpr char kCleared[] =
    R"(diagnostics.clear "name":"CConstellationManager","code":79188,"sub":12 )";

class ConstellationManagerRecords : public CConstellationManagerTesting {
protected:
    ConstellationManagerRecords() { Start(); }

    static std::string Updating() {
        return Warning("CConstellationManager::DispatchNovatelLog: updating channel config");
    }
    static std::string ListWarning(int current, int last) {
        return Warning(
            "CConstellationManager::DispatchNovatelLog_CHANCONFIGLIST: currentChannel: " +
            std::to_string(current) + " m_lastSetChannelConfiguration: " + std::to_string(last));
    }
    /// Two configurations, 14 GPS channels, or 8 and 6 of GLONASS.
    static Chanconfiglist TwoSets() {
        return Chanconfiglist().set({{14, 0}}).set({{8, 0}, {6, 10}});
    }
    static Lines TwoSetsPublished(int current) {
        return {Essential("current_channel_configuration", std::to_string(current)),
                Essential("number_channel_configs_available", "2"),
                Essential("channel_config_1", "14 GPSL1, "),
                Essential("channel_config_2", " 8 GPSL1,  6 GLOL1, ")};
    }
};

} // namespace

TEST_F(ConstellationManagerRecords, of_a_model_with_a_G_say_that_it_tracks_glonass) {
    EXPECT_EQ(PublishedAt(Model("D2SR0G0TT0")), Joined({{Updating()}, Decision(4), {kCleared}}));
    EXPECT_TRUE(m_manager->IsGlonassWanted());
    EXPECT_EQ(Settings(), "[Corvane]\nreceiver_supports_glonass = 1\n");
    Start();
    EXPECT_TRUE(m_manager->IsGlonassWanted());
}

TEST_F(ConstellationManagerRecords, of_a_model_without_a_G_say_that_it_does_not) {
    StartWith("receiver_supports_glonass = 1\n");
    EXPECT_EQ(PublishedAt(Model("L12RV")), Joined({{Updating()}, Decision(1), {kRaised}}));
    EXPECT_FALSE(m_manager->IsGlonassWanted());
    EXPECT_EQ(Settings(), "[Corvane]\nreceiver_supports_glonass = 0\n");
}

TEST_F(ConstellationManagerRecords, of_a_model_without_a_G_outweigh_what_is_forced) {
    StartWith("receiver_supports_glonass = 1\nforce_glonass_state = 1\nforce_glonass_on = 1\n");
    EXPECT_EQ(m_manager->DesiredConfiguration(), 4);
    Offer(Model("L12RV"));
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
    m_manager->SetSBASForced(true, true);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 2);
}

TEST_F(ConstellationManagerRecords, of_a_model_that_is_as_it_was_write_no_settings) {
    Offer(Model("L12RV"));
    EXPECT_EQ(Settings(), "");
    StartWith("receiver_supports_glonass = 3\n");
    Offer(Model("G"));
    EXPECT_EQ(Settings(), "[Corvane]\nreceiver_supports_glonass = 3\n");
}

TEST_F(ConstellationManagerRecords, find_the_G_anywhere_in_the_models_field) {
    for (const std::string& model : {std::string("G"), std::string("G2SR0"), std::string("D2SR0G"),
                                     std::string("L12\0G", 5), std::string(15, 'x') + "G"}) {
        StartWith("");
        Offer(Model(model));
        EXPECT_TRUE(m_manager->IsGlonassWanted()) << model;
    }
    StartWith("");
    Offer(Model("g6c0tt"));
    EXPECT_FALSE(m_manager->IsGlonassWanted());
}

TEST_F(ConstellationManagerRecords, find_no_G_but_the_models) {
    auto component = Component(1, "L12RV");
    component.serialNumber = "G";
    component.hardwareVersion = "G";
    component.softwareVersion = "G";
    component.bootVersion = "G";
    component.compileDate = "Aug/G";
    component.compileTime = "G";
    EXPECT_EQ(PublishedAt(Version().component(component)),
              Joined({{Updating()}, Decision(1), {kRaised}}));
}

TEST_F(ConstellationManagerRecords, pass_over_components_that_are_not_the_receivers_card) {
    for (const std::uint32_t other : {0U, 2U, 3U, 8U, 981073920U}) {
        EXPECT_EQ(PublishedAt(Version().component(Component(other, "G"))),
                  Joined({{Updating()}, Decision(1), {kRaised}}))
            << other;
    }
    EXPECT_EQ(Settings(), "");
    Offer(Version().component(Component(2, "L")).component(Component(1, "G")));
    EXPECT_TRUE(m_manager->IsGlonassWanted());
    Offer(Version().component(Component(1, "G")).component(Component(2, "L")));
    EXPECT_TRUE(m_manager->IsGlonassWanted());
}

TEST_F(ConstellationManagerRecords, with_several_cards_count_as_the_last_one) {
    Offer(Version().component(Component(1, "G")).component(Component(1, "L12")));
    EXPECT_FALSE(m_manager->IsGlonassWanted());
    EXPECT_EQ(Settings(), "[Corvane]\nreceiver_supports_glonass = 0\n");
    Offer(Version().component(Component(1, "L12")).component(Component(1, "G")));
    EXPECT_TRUE(m_manager->IsGlonassWanted());
}

TEST_F(ConstellationManagerRecords, of_a_version_without_components_keep_what_the_settings_say) {
    EXPECT_EQ(PublishedAt(Version()), Joined({{Updating()}, Decision(1), {kRaised}}));
    StartWith("receiver_supports_glonass = 1\n");
    EXPECT_EQ(PublishedAt(Version()), Joined({{Updating()}, Decision(4), {kCleared}}));
}

TEST_F(ConstellationManagerRecords, have_the_diagnostic_told_with_every_later_decision) {
    Offer(Model("L12RV"));
    EXPECT_EQ(PublishedBy([this] { m_manager->SetSBASForced(true, true); }),
              Joined({Decision(2), {kRaised}}));
    EXPECT_EQ(PublishedBy([this] { m_manager->ChannelConfigSelected(2); }).back(), kRaised);
    Offer(Model("G"));
    EXPECT_EQ(PublishedBy([this] { m_manager->RefreshRegionDefaults(); }),
              Joined({Decision(5, true), {kCleared}}));
}

TEST_F(ConstellationManagerRecords, of_a_new_configuration_are_told_kept_and_decided_about) {
    StartWith("current_channel_configuration = 6\n");
    EXPECT_EQ(
        PublishedAt(TwoSets().inUse(2)),
        Joined({{ListWarning(2, 6)}, Decision(1), TwoSetsPublished(2), {Updating()}, Decision(1)}));
    EXPECT_EQ(m_manager->CurrentConfiguration(), 2);
    EXPECT_EQ(Settings(), "[Corvane]\ncurrent_channel_configuration = 2\n");
}

TEST_F(ConstellationManagerRecords, of_the_configuration_that_is_stored_write_no_settings) {
    WriteSettings("");
    EXPECT_EQ(PublishedAt(TwoSets().inUse(0)),
              Joined({{ListWarning(0, 0)}, TwoSetsPublished(0), {Updating()}, Decision(1)}));
    EXPECT_EQ(Settings(), "");
    EXPECT_EQ(m_manager->AvailableConfigurations().size(), 2U);
    EXPECT_EQ(PublishedAt(Chanconfiglist().inUse(0).set({{12, 1}})),
              Joined({{ListWarning(0, 0), Essential("current_channel_configuration", "0"),
                       Essential("number_channel_configs_available", "1"),
                       Essential("channel_config_1", "12 GPSL1L2, "), Updating()},
                      Decision(1)}));
    EXPECT_EQ(m_manager->AvailableConfigurations().size(), 1U);
}

TEST_F(ConstellationManagerRecords, give_the_available_configurations_in_the_receivers_order) {
    Offer(TwoSets());
    const auto sets = m_manager->AvailableConfigurations();
    ASSERT_EQ(sets.size(), 2U);
    ASSERT_EQ(sets[0].signals.size(), 1U);
    EXPECT_EQ(sets[0].signals[0].numberOfChannels, 14U);
    EXPECT_EQ(sets[0].signals[0].signalType, 0U);
    ASSERT_EQ(sets[1].signals.size(), 2U);
    EXPECT_EQ(sets[1].signals[1].numberOfChannels, 6U);
    EXPECT_EQ(sets[1].signals[1].signalType, 10U);
}

TEST_F(ConstellationManagerRecords, without_any_configuration_leave_none_available) {
    Offer(TwoSets());
    EXPECT_EQ(PublishedAt(Chanconfiglist()),
              Joined({{ListWarning(0, 0), Essential("current_channel_configuration", "0"),
                       Essential("number_channel_configs_available", "0"), Updating()},
                      Decision(1)}));
    EXPECT_TRUE(m_manager->AvailableConfigurations().empty());
}

TEST_F(ConstellationManagerRecords, show_channels_in_two_places_and_unknown_signals_by_number) {
    Offer(Chanconfiglist().set({{0, 4}, {9, 9}, {10, 26}, {120, 25}}).set({}).set({{1, 1}}));
    EXPECT_EQ(m_published.Texts("\"key\":\"channel_config_1\""),
              Lines{" 0 SBASL1,  9 UNKNOWN 9, 10 UNKNOWN 26, 120 GLOL1L2PL2C, "});
    EXPECT_EQ(m_published.Texts("\"key\":\"channel_config_2\""), Lines{""});
    EXPECT_EQ(m_published.Texts("\"key\":\"channel_config_3\""), Lines{" 1 GPSL1L2, "});
}

TEST_F(ConstellationManagerRecords, of_other_kinds_do_nothing) {
    m_published.Forget();
    Offer(Sentences::Bestpos());
    Offer(Sentences::Rxstatus());
    Offer(Sentences::Response(37).responseID(1).responseText("OK"));
    Offer(Sentences::Response(1148).responseID(1).responseText("OK"));
    Offer(Sentences::Nmea("GPGSV,1"));
    Offer(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE"));
    m_manager->NewRecord(nullptr);
    EXPECT_EQ(m_published.All(), Lines{});
}
