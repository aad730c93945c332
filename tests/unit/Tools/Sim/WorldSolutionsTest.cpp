#include "Tools/Sim/WorldTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

using namespace SimTesting;
using Sim::SSolution;
using Sim::SState;

namespace {

constexpr std::int64_t kCycle = 600'000;

/// The largest error of an axis in its standard deviations.
double WorstError(const SSolution& solution, const SState& state) {
    return std::max({std::abs(solution.x - state.x) / double{solution.deviationX},
                     std::abs(solution.y - state.y) / double{solution.deviationY},
                     std::abs(solution.z - state.z) / double{solution.deviationZ}});
}

double Error(const SSolution& solution, const SState& state) {
    return Norm(Position(solution) - Position(state));
}

template <class TVisitor>
void ForCycle(TVisitor visit, std::int64_t step = 1'000) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kCycle; t += step) {
        visit(t - kSomeDay, At(t));
    }
}

} // namespace

TEST(WorldSolutions, every_kind_of_rtk_solution_occurs_in_ten_minutes) {
    std::map<std::uint32_t, int> seconds;
    ForCycle([&](std::int64_t, const SState& state) { ++seconds[state.rtk.type]; });
    EXPECT_GE(seconds[16], 30);
    EXPECT_GE(seconds[34], 30);
    EXPECT_GE(seconds[50], 400);
    EXPECT_EQ(seconds[0], 16); // two bridges of 8 s
    EXPECT_EQ(seconds.size(), 4U);
}

TEST(WorldSolutions, begin_single_and_get_better_as_corrections_come) {
    EXPECT_EQ(At(kSomeDay).rtk.type, 16U);
    EXPECT_EQ(At(kSomeDay + 29'950).rtk.type, 16U);
    EXPECT_EQ(At(kSomeDay + 30'000).rtk.type, 34U);
    EXPECT_EQ(At(kSomeDay + 59'950).rtk.type, 34U);
    EXPECT_EQ(At(kSomeDay + 60'000).rtk.type, 50U);
}

TEST(WorldSolutions, a_bridge_takes_the_solution_which_comes_back_step_by_step) {
    std::vector<std::uint32_t> types;
    std::vector<int> seconds;
    ForCycle([&](std::int64_t t, const SState& state) {
        if (t < 200'000 || t >= 400'000) {
            return;
        }
        if (types.empty() || types.back() != state.rtk.type) {
            types.push_back(state.rtk.type);
            seconds.push_back(0);
        }
        ++seconds.back();
    });
    EXPECT_EQ(types, (std::vector<std::uint32_t>{50, 0, 16, 34, 50}));
    ASSERT_EQ(seconds.size(), 5U);
    EXPECT_EQ(seconds[1], 8);
    EXPECT_EQ(seconds[2], 5);
    EXPECT_EQ(seconds[3], 20);
}

TEST(WorldSolutions, under_a_bridge_there_is_none_but_a_propagated_one) {
    int epochs = 0;
    ForCycle([&](std::int64_t, const SState& state) {
        for (const SSolution* solution : {&state.pseudorange, &state.rtk}) {
            EXPECT_EQ(solution->status == 1, state.isUnderBridge);
            EXPECT_EQ(solution->type == 0, state.isUnderBridge);
            EXPECT_EQ(solution->x == 0.0, state.isUnderBridge);
            EXPECT_EQ(solution->satellitesUsed == 0, state.isUnderBridge);
        }
        EXPECT_EQ(state.pdp.type, state.isUnderBridge ? 19U : 16U);
        EXPECT_EQ(state.pdp.status, 0U);
        EXPECT_EQ(state.pdp.solutionAge > 0.0F || state.pdp.satellitesUsed == 0,
                  state.isUnderBridge);
        epochs += state.isUnderBridge ? 1 : 0;
    });
    EXPECT_EQ(epochs, 16);
}

TEST(WorldSolutions, errors_fit_the_kind_of_solution) {
    std::map<std::uint32_t, double> largest;
    for (std::int64_t t = kSomeDay; t < kSomeDay + 20 * kCycle; t += 1'500) {
        const SState state = At(t);
        if (state.rtk.status == 0) {
            largest[state.rtk.type] = std::max(largest[state.rtk.type], Error(state.rtk, state));
        }
    }
    EXPECT_LT(largest[50], 0.02);
    EXPECT_GT(largest[50], 0.005);
    EXPECT_LT(largest[34], 0.7);
    EXPECT_GT(largest[34], 0.1);
    EXPECT_LT(largest[16], 4.5);
    EXPECT_GT(largest[16], 1.0);
}

TEST(WorldSolutions, standard_deviations_tell_the_truth) {
    struct SSum {
        double squares = 0.0;
        int count = 0;
    };
    std::map<std::uint32_t, SSum> sums;
    SSum pdp;
    const auto add = [](SSum& sum, const SSolution& solution, const SState& state) {
        const double x = (solution.x - state.x) / double{solution.deviationX};
        const double y = (solution.y - state.y) / double{solution.deviationY};
        const double z = (solution.z - state.z) / double{solution.deviationZ};
        sum.squares += x * x + y * y + z * z;
        sum.count += 3;
        EXPECT_LT(WorstError(solution, state), 2.01);
    };
    for (std::int64_t t = kSomeDay; t < kSomeDay + 40 * kCycle; t += 5'350) {
        const SState state = At(t);
        add(pdp, state.pdp, state);
        if (state.rtk.status == 0) {
            add(sums[state.rtk.type], state.rtk, state);
        }
    }
    for (const auto& [type, sum] : sums) {
        EXPECT_NEAR(std::sqrt(sum.squares / sum.count), 1.0, 0.15) << type;
    }
    EXPECT_NEAR(std::sqrt(pdp.squares / pdp.count), 1.0, 0.25);
}

TEST(WorldSolutions, velocities_err_as_their_deviation_says) {
    double squares = 0.0;
    int count = 0;
    ForCycle(
        [&](std::int64_t, const SState& state) {
            const double error = state.pdp.velocityX - state.velocityX;
            squares += error * error / double{state.pdp.velocityDeviation} /
                       double{state.pdp.velocityDeviation};
            ++count;
        },
        500);
    EXPECT_NEAR(squares / count, 1.0, 0.15);
}

TEST(WorldSolutions, the_smoothed_solution_is_smooth_all_the_time) {
    for (std::int64_t t = kSomeDay; t < kSomeDay + kCycle; t += 50) {
        const SState now = At(t);
        const SState next = At(t + 50);
        const Sim::SVector error = Position(now.pdp) - Position(now);
        const Sim::SVector nextError = Position(next.pdp) - Position(next);
        ASSERT_LT(Norm(nextError - error), 0.001) << t - kSomeDay;
    }
}

TEST(WorldSolutions, corrections_age_between_half_a_second_and_one_and_a_half) {
    ForCycle(
        [](std::int64_t t, const SState& state) {
            if (state.rtk.type == 34 || state.rtk.type == 50) {
                ASSERT_GE(state.rtk.differentialAge, 0.5F) << t;
                ASSERT_LT(state.rtk.differentialAge, 1.5F) << t;
            } else {
                ASSERT_EQ(state.rtk.differentialAge, 0.0F) << t;
            }
            ASSERT_EQ(state.pseudorange.differentialAge, 0.0F) << t;
        },
        350);
}

TEST(WorldSolutions, count_the_satellites_of_the_sky) {
    const SState state = At(kSomeDay + 100'000);
    const auto tracked = std::ranges::count_if(
        state.satellites, [](const Sim::SSatellite& each) { return each.cn0L1 > 0.0F; });
    const auto used = std::ranges::count_if(state.satellites, &Sim::SSatellite::isUsed);
    EXPECT_EQ(state.rtk.satellitesTracked, tracked);
    EXPECT_EQ(state.rtk.satellitesUsed, used);
    EXPECT_EQ(tracked, used + 2); // SBAS
}
