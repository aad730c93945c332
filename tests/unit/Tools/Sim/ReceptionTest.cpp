// What receivers of different models make of the same sky.
#include "sim/Reception.h"

#include <gmock/gmock.h>

namespace {

using namespace Sim;

/// "14x1 2x4": channels and signal types.
std::string Set(const SModel& model, std::size_t number) {
    std::string text;
    for (const SChannelGroup& group : model.channelSets.at(number - 1)) {
        text += (text.empty() ? "" : " ") + std::to_string(group.channels) + "x" +
                std::to_string(group.signalType);
    }
    return text;
}

SSatellite Satellite(ESystem system, std::uint16_t prn, double elevation) {
    SSatellite satellite;
    satellite.system = system;
    satellite.prn = prn;
    satellite.elevation = elevation;
    satellite.cn0L1 = 45.0F;
    satellite.cn0L2 = 40.0F;
    satellite.isUsed = true;
    return satellite;
}

/// Four GPS, two GLONASS, two SBAS satellites and three good solutions.
SState Sky() {
    SState state;
    state.satellites = {Satellite(ESystem::gps, 1, 10),     Satellite(ESystem::gps, 2, 80),
                        Satellite(ESystem::gps, 3, 40),     Satellite(ESystem::gps, 4, 30),
                        Satellite(ESystem::glonass, 40, 5), Satellite(ESystem::glonass, 41, 50),
                        Satellite(ESystem::sbas, 120, 30),  Satellite(ESystem::sbas, 124, 35)};
    for (SSolution* solution : {&state.pseudorange, &state.rtk, &state.pdp}) {
        solution->type = 16;
        solution->x = 4e6;
        solution->deviationX = 0.01F;
        solution->satellitesTracked = 8;
        solution->satellitesUsed = 8;
    }
    state.rtk.type = 50;
    return state;
}

SState Seen(const std::string& model, const SReception& reception, std::size_t set = 1) {
    SState state = Sky();
    const SModel facts = ModelNamed(model);
    Restrict(state, facts, facts.channelSets.at(set - 1), reception);
    return state;
}

std::vector<int> PRNs(const SState& state) {
    std::vector<int> prns;
    for (const SSatellite& satellite : state.satellites) {
        prns.push_back(satellite.prn);
    }
    return prns;
}

constexpr SReception kAllOn = {.isSBASOn = true, .isPDPOn = true};

} // namespace

TEST(SimModel, has_what_its_letters_say) {
    const SModel full = ModelNamed("L12LGRV");
    EXPECT_TRUE(full.hasGLONASS && full.hasRTK && full.hasL2 && !full.isPDPOnAtFirst);
    EXPECT_FALSE(ModelNamed("L12LRVA").hasGLONASS);
    EXPECT_FALSE(ModelNamed("L1").hasRTK);
    EXPECT_FALSE(ModelNamed("L1").hasL2);
    const SModel star = ModelNamed("LXGDMTS");
    EXPECT_TRUE(star.hasGLONASS && !star.hasRTK && !star.hasL2 && star.isPDPOnAtFirst);
}

TEST(SimModel, of_a_receiver_with_14_channels_shares_them) {
    const SModel star = ModelNamed("LXGDMTS");
    ASSERT_EQ(star.channelSets.size(), 6U);
    EXPECT_EQ(Set(star, 1), "14x0");
    EXPECT_EQ(Set(star, 2), "12x0 2x4");
    EXPECT_EQ(Set(star, 3), "10x0 4x10");
    EXPECT_EQ(Set(star, 4), "8x0 6x10");
    EXPECT_EQ(Set(star, 5), "8x0 2x4 4x10");
    EXPECT_EQ(Set(star, 6), "10x0 2x4 2x10");
    EXPECT_EQ(ModelNamed("LXDMTS").channelSets.size(), 2U);
}

TEST(SimModel, of_a_large_receiver_has_channels_for_everything_at_first) {
    EXPECT_EQ(Set(ModelNamed("L12LGRV"), 1), "14x1 2x4 12x8 1x9");
    EXPECT_EQ(Set(ModelNamed("L12GRV"), 1), "14x1 2x4 12x8");
    EXPECT_EQ(Set(ModelNamed("L12LRVA"), 1), "14x1 2x4 1x9");
    EXPECT_EQ(ModelNamed("L12LRVA").channelSets.size(), 2U);
}

TEST(SimReception, leaves_all_to_a_receiver_that_has_all) {
    const SState state = Seen("L12LGRV", kAllOn);
    EXPECT_EQ(PRNs(state), (std::vector<int>{1, 2, 3, 4, 40, 41, 120, 124}));
    EXPECT_EQ(state.rtk.type, 50U);
    EXPECT_EQ(state.pdp.status, 0U);
}

TEST(SimReception, has_no_satellites_of_systems_that_are_off_or_not_there) {
    EXPECT_EQ(PRNs(Seen("L12LGRV", {.isPDPOn = true})), (std::vector<int>{1, 2, 3, 4, 40, 41}));
    EXPECT_EQ(PRNs(Seen("L12LRVA", kAllOn)), (std::vector<int>{1, 2, 3, 4, 120, 124}));
    const SState state = Seen("L12LRVA", {});
    EXPECT_EQ(state.pseudorange.satellitesTracked, 4);
    EXPECT_EQ(state.pseudorange.satellitesUsed, 4);
}

TEST(SimReception, gives_the_channels_to_the_highest_satellites) {
    SState state = Sky();
    Restrict(state, ModelNamed("LXGDMTS"), {{2, 0}, {1, 10}, {1, 4}}, kAllOn);
    EXPECT_EQ(PRNs(state), (std::vector<int>{2, 3, 41, 124}));
}

TEST(SimReception, has_one_frequency_on_a_receiver_for_one) {
    EXPECT_EQ(Seen("LXGDMTS", kAllOn).satellites.front().cn0L2, 0.0F);
    EXPECT_EQ(Seen("L12LGRV", kAllOn).satellites.front().cn0L2, 40.0F);
}

TEST(SimReception, has_nothing_while_it_starts) {
    const SState state = Seen("L12LGRV", {.isStarting = true, .isPDPOn = true});
    EXPECT_TRUE(state.satellites.empty());
    for (const SSolution& solution : {state.pseudorange, state.rtk, state.pdp}) {
        EXPECT_EQ(solution.status, 1U);
        EXPECT_EQ(solution.type, 0U);
        EXPECT_EQ(solution.x, 0.0);
    }
}

TEST(SimReception, has_no_solution_of_a_filter_that_is_off_or_not_there) {
    EXPECT_EQ(Seen("L12LGRV", {}).pdp.status, 1U);
    EXPECT_EQ(Seen("LXGDMTS", kAllOn).rtk.status, 1U);
    EXPECT_EQ(Seen("LXGDMTS", kAllOn).pseudorange.status, 0U);
}

TEST(SimReception, has_a_less_certain_solution_while_the_rtk_filter_converges) {
    const SState state = Seen("L12LGRV", {.isPDPOn = true, .isRTKConverging = true});
    EXPECT_EQ(state.rtk.type, 34U);
    EXPECT_GT(state.rtk.deviationX, 0.1F);
}
