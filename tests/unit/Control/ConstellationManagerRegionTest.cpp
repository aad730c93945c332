// What the region presets for SBAS where nobody forces it on or off.

#include "Control/ConstellationManagerTesting.h"

namespace {

struct SRegionCase {
    const char* name;
    const char* settings;
    int withoutGlonass;
    int withGlonass;
};

class ConstellationManagerRegion : public CConstellationManagerTesting {
protected:
    void StartIn(const std::string& settings, bool supportsGlonass) {
        WriteSettings("[Corvane]\nforce_sbas_state = 0\nforce_sbas_on = 1\n"
                      "receiver_supports_glonass = " +
                      std::to_string(supportsGlonass) + "\n" + settings);
        Start();
    }
};

class ConstellationManagerRegions : public ConstellationManagerRegion,
                                    public testing::WithParamInterface<SRegionCase> {};

} // namespace

TEST_P(ConstellationManagerRegions, decides_about_SBAS) {
    StartIn(GetParam().settings, false);
    EXPECT_EQ(m_manager->DesiredConfiguration(), GetParam().withoutGlonass);
    EXPECT_EQ(m_manager->IsSBASWanted(), GetParam().withoutGlonass == 2);
    StartIn(GetParam().settings, true);
    EXPECT_EQ(m_manager->DesiredConfiguration(), GetParam().withGlonass);
    EXPECT_EQ(m_manager->IsSBASWanted(), GetParam().withGlonass == 5);
}

INSTANTIATE_TEST_SUITE_P(
    All, ConstellationManagerRegions,
    testing::Values(
        SRegionCase{"unset", "", 1, 5},
        SRegionCase{"none", "[localisation]\nregion = none\n", 1, 5},
        SRegionCase{"north_america", "[localisation]\nregion = north_america\n", 2, 5},
        SRegionCase{"europe", "[localisation]\nregion = europe\n", 2, 4},
        SRegionCase{"japan", "[localisation]\nregion = japan\n", 2, 5},
        SRegionCase{"unknown", "[localisation]\nregion = atlantis\n", 1, 4},
        SRegionCase{"overridden", "[localisation]\nregion = europe\n[region:europe]\nsbas = none\n",
                    1, 5},
        SRegionCase{"added_with_egnos",
                    "[localisation]\nregion = africa\n[region:africa]\nsbas = egnos\n", 2, 4},
        SRegionCase{"added_with_another",
                    "[localisation]\nregion = india\n[region:india]\nsbas = gagan\n", 2, 5},
        SRegionCase{"added_without_an_entry",
                    "[localisation]\nregion = antarctica\n[region:antarctica]\nice = 1\n", 1, 5},
        SRegionCase{"added_without_anything",
                    "[localisation]\nregion = antarctica\n[region:antarctica]\n", 1, 5},
        SRegionCase{"added_with_an_empty_entry",
                    "[localisation]\nregion = moon\n[region:moon]\nsbas =\n", 2, 5}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST_F(ConstellationManagerRegion, that_wants_SBAS_does_not_matter_where_it_is_forced_off) {
    WriteSettings("[Corvane]\nforce_sbas_state = 1\n[localisation]\nregion = europe\n");
    Start();
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
}

TEST_F(ConstellationManagerRegion, is_that_of_glonass_when_it_is_wanted_and_not_only_supported) {
    StartIn("force_glonass_state = 1\nforce_glonass_on = 0\n[localisation]\nregion = europe\n",
            true);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 2);
}

TEST_F(ConstellationManagerRegion, that_has_changed_counts_from_the_refresh_on) {
    StartIn("[localisation]\nregion = none\n", false);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 1);
    m_config->SetString("localisation", "region", "japan");
    EXPECT_EQ(PublishedBy([this] { m_manager->SetSBASForced(false, true); }), Decision(1));
    EXPECT_EQ(PublishedBy([this] { m_manager->RefreshRegionDefaults(); }), Decision(2, true));
    m_config->SetString("localisation", "region", "atlantis");
    EXPECT_EQ(PublishedBy([this] { m_manager->RefreshRegionDefaults(); }), Decision(1, true));
}

TEST_F(ConstellationManagerRegion, gives_4_and_2_in_europe_once_SBAS_is_no_longer_forced) {
    WriteSettings("[Corvane]\nreceiver_supports_glonass = 1\n[localisation]\nregion = europe\n");
    Start();
    m_manager->SetSBASForced(true, true);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 5);
    m_manager->SetSBASForced(false, false);
    EXPECT_EQ(m_manager->DesiredConfiguration(), 4);
    Offer(Model("L12"));
    EXPECT_EQ(m_manager->DesiredConfiguration(), 2);
}
