#include "hub/state/DiagnosticWords.h"

#include <gtest/gtest.h>
#include <set>
#include <utility>

// The pairs in the two tables of docs/diagnostics.md.
TEST(DiagnosticWords, are_there_for_every_diagnostic_of_the_daemon_and_differ) {
    constexpr std::pair<std::int32_t, std::int32_t> kPairs[] = {
        {90001, 0},  {90002, 0},  {79141, 2},  {79160, 1},  {79188, 12}, {79195, 0},
        {79151, 0},  {79161, 4},  {70950, 4},  {70922, 5},  {70922, 6},  {79203, 12},
        {73505, 17}, {79200, 12}, {79202, 12}, {79207, 12}, {79201, 12}, {79177, 12}};
    std::set<std::string_view> words;
    for (const auto& [code, sub] : kPairs) {
        EXPECT_NE(Hub::DiagnosticWords(code, sub), "") << code << ", " << sub;
        words.insert(Hub::DiagnosticWords(code, sub));
    }
    EXPECT_EQ(words.size(), std::size(kPairs));
}

TEST(DiagnosticWords, say_what_the_pair_means) {
    EXPECT_EQ(Hub::DiagnosticWords(70922, 5), "The antenna's line is open");
    EXPECT_EQ(Hub::DiagnosticWords(70922, 6), "The antenna's line is shorted");
}

TEST(DiagnosticWords, are_empty_for_a_pair_that_is_not_known) {
    EXPECT_EQ(Hub::DiagnosticWords(70922, 4), "");
    EXPECT_EQ(Hub::DiagnosticWords(0, 0), "");
}
