#include "platform/Localisation.h"

#include "ConfigFixture.h"

#include <cstdlib>

using Localisation::CRegionManager;

namespace {

using Values = std::map<std::string, std::string>;

class Region : public CConfigFixture {
protected:
    Region() { ::setenv("CORVANE_CONFIG", Path().c_str(), 1); }
    ~Region() override { ::unsetenv("CORVANE_CONFIG"); }

    static std::string Current() { return CRegionManager::Get().CurrentRegion(); }

    /// What a region that is defined presets.
    static Values Defaults(const std::string& region) {
        Localisation::SRegionDefaults defaults;
        EXPECT_TRUE(CRegionManager::Get().RegionDefaults(region, defaults)) << region;
        return defaults.values;
    }
    static void ExpectUndefined(const std::string& region) {
        Localisation::SRegionDefaults defaults{{{"left", "over"}}};
        EXPECT_FALSE(CRegionManager::Get().RegionDefaults(region, defaults)) << region;
        EXPECT_EQ(defaults.values, Values{}) << region;
    }
};

} // namespace

TEST_F(Region, is_told_by_the_one_manager_of_the_process) {
    EXPECT_EQ(&CRegionManager::Get(), &CRegionManager::Get());
}

TEST_F(Region, is_none_unless_the_configuration_names_one) {
    EXPECT_EQ(Current(), "none");
    Write("[localisation]\nother = japan\n[other]\nregion = japan\n");
    EXPECT_EQ(Current(), "none");
}

TEST_F(Region, is_what_the_configuration_names_at_the_moment_and_may_be_undefined) {
    for (const std::string name : {"japan", "atlantis", ""}) {
        Write("[localisation]\nregion = " + name + "\n");
        EXPECT_EQ(Current(), name);
    }
}

TEST_F(Region, is_one_of_four_without_a_configuration) {
    EXPECT_EQ(Defaults("north_america"), (Values{{"sbas", "waas"}}));
    EXPECT_EQ(Defaults("europe"), (Values{{"sbas", "egnos"}}));
    EXPECT_EQ(Defaults("japan"), (Values{{"sbas", "msas"}}));
    EXPECT_EQ(Defaults("none"), (Values{{"sbas", "none"}}));
}

TEST_F(Region, that_nobody_has_defined_has_no_defaults) {
    Write("[region:moon]\nsbas = none\n[atlantis]\nsbas = waas\n");
    ExpectUndefined("atlantis");
    ExpectUndefined("Europe");
    ExpectUndefined("");
    ExpectUndefined("region:moon");
}

TEST_F(Region, is_overridden_by_a_section_of_its_own) {
    Write("[region:europe]\nsbas = none\n");
    EXPECT_EQ(Defaults("europe"), (Values{{"sbas", "none"}}));
    EXPECT_EQ(Defaults("japan"), (Values{{"sbas", "msas"}}));
}

TEST_F(Region, keeps_what_its_section_does_not_override) {
    Write("[region:europe]\nunits = metric\n");
    EXPECT_EQ(Defaults("europe"), (Values{{"sbas", "egnos"}, {"units", "metric"}}));
    Write("[region:europe]\n");
    EXPECT_EQ(Defaults("europe"), (Values{{"sbas", "egnos"}}));
}

TEST_F(Region, is_added_by_a_section_of_its_own) {
    Write("[region:india]\nsbas = gagan\nunits = metric\n");
    EXPECT_EQ(Defaults("india"), (Values{{"sbas", "gagan"}, {"units", "metric"}}));
}

TEST_F(Region, may_be_added_without_an_entry_of_SBAS_or_without_any) {
    Write("[region:antarctica]\nice = 1\n[region:moon]\n");
    EXPECT_EQ(Defaults("antarctica"), (Values{{"ice", "1"}}));
    EXPECT_EQ(Defaults("moon"), Values{});
}

TEST_F(Region, has_the_defaults_that_the_configuration_has_at_the_moment) {
    ExpectUndefined("india");
    Write("[region:india]\nsbas = gagan\n");
    EXPECT_EQ(Defaults("india"), (Values{{"sbas", "gagan"}}));
    Write("[region:india]\nsbas = none\n");
    EXPECT_EQ(Defaults("india"), (Values{{"sbas", "none"}}));
    Write("");
    ExpectUndefined("india");
}

TEST_F(Region, leaves_nothing_of_another_one_among_the_defaults) {
    Localisation::SRegionDefaults defaults{{{"left", "over"}}};
    EXPECT_TRUE(CRegionManager::Get().RegionDefaults("japan", defaults));
    EXPECT_EQ(defaults.values, (Values{{"sbas", "msas"}}));
}

TEST_F(Region, gives_every_handle_of_the_configuration_back) {
    Write("[localisation]\nregion = japan\n");
    EXPECT_EQ(Current(), "japan");
    EXPECT_EQ(Defaults("japan").size(), 1U);
    // The process has one configuration while a handle is out, whatever the environment says.
    const std::string other = Folder().Write("other.conf", "[localisation]\nregion = europe\n");
    ::setenv("CORVANE_CONFIG", other.c_str(), 1);
    EXPECT_EQ(Current(), "europe");
}
