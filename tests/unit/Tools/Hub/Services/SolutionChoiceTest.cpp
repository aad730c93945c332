#include "hub/services/SolutionChoice.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using Hub::CSolutionChoice;
using Hub::SSolution;

SSolution Solution(double seconds, std::int32_t quality, std::int32_t solutionClass,
                   std::int32_t fixQuality, Hub::TProcess sender = 1) {
    SSolution solution;
    solution.sender = sender;
    solution.data.week = 2393;
    solution.data.seconds = seconds;
    solution.data.positionQuality = quality;
    solution.data.solutionClass = solutionClass;
    solution.data.fixQuality = fixQuality;
    return solution;
}

SSolution Single(double seconds, std::int32_t quality = 2) {
    return Solution(seconds, quality, 4, 1);
}
SSolution Float(double seconds) {
    return Solution(seconds, 2, 6, 2);
}
SSolution Integer(double seconds) {
    return Solution(seconds, 3, 6, 4);
}
SSolution None(double seconds) {
    return Solution(seconds, 0, -1, 0);
}

} // namespace

TEST(SolutionChoiceTest, the_first_solution_is_taken_whatever_it_is) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(None(100.0)));
}

TEST(SolutionChoiceTest, a_poorer_one_of_the_same_moment_is_passed_over) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(100.0)));
    EXPECT_FALSE(choice.Takes(Single(100.0)));
}

TEST(SolutionChoiceTest, a_better_one_of_the_same_moment_is_taken) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Single(100.0)));
    EXPECT_TRUE(choice.Takes(Integer(100.0)));
}

TEST(SolutionChoiceTest, quality_goes_before_the_kind_of_fix) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Single(100.0, 2)));
    EXPECT_FALSE(choice.Takes(Solution(100.0, 1, 6, 1))) << "RTK of a lower quality";
}

TEST(SolutionChoiceTest, of_one_quality_a_float_is_better_than_a_single_point) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Float(100.0)));
    EXPECT_FALSE(choice.Takes(Single(100.05)));
    EXPECT_TRUE(choice.Takes(Float(100.05)));
}

TEST(SolutionChoiceTest, a_fix_that_is_lost_is_seen_after_a_second) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(100.0)));
    EXPECT_FALSE(choice.Takes(Single(100.95)));
    EXPECT_TRUE(choice.Takes(Single(101.0)));
    EXPECT_TRUE(choice.Takes(Single(101.05)));
}

TEST(SolutionChoiceTest, a_position_that_is_lost_is_seen_after_a_second) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Single(100.0, 1)));
    EXPECT_FALSE(choice.Takes(None(100.95)));
    EXPECT_TRUE(choice.Takes(None(101.0)));
}

TEST(SolutionChoiceTest, a_receiver_whose_time_jumps_starts_anew) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(5000.0)));
    EXPECT_TRUE(choice.Takes(Single(100.0)));
}

TEST(SolutionChoiceTest, the_turn_of_a_week_is_no_jump) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(604'799.9)));
    SSolution next = Single(0.1);
    next.data.week = 2394;
    EXPECT_FALSE(choice.Takes(next));
}

TEST(SolutionChoiceTest, a_solution_without_a_time_is_taken) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(100.0)));
    EXPECT_TRUE(choice.Takes(Single(std::nan(""))));
}

TEST(SolutionChoiceTest, another_publisher_starts_anew) {
    CSolutionChoice choice;
    EXPECT_TRUE(choice.Takes(Integer(100.0)));
    EXPECT_TRUE(choice.Takes(Solution(100.0, 1, 4, 1, 2)));
}
