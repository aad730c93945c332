#include "RepeatedLines.h"

#include <gtest/gtest.h>

using Core::MonotonicTime;
using Core::Time;

namespace {

/// Lines printed at given seconds.
class RepeatedLines : public testing::Test {
protected:
    std::string At(double seconds, std::string_view line) {
        return m_lines.Fold(line, MonotonicTime() + Time::FromSeconds(seconds));
    }

    CRepeatedLines m_lines;
};

std::string Numbered(std::size_t number) {
    return "line " + std::to_string(number) + '\n';
}

} // namespace

TEST_F(RepeatedLines, are_printed_once_in_ten_seconds) {
    EXPECT_EQ(At(0.0, "a\n"), "a\n");
    EXPECT_EQ(At(0.0, "a\n"), "");
    EXPECT_EQ(At(9.999, "a\n"), "");
}

TEST_F(RepeatedLines, are_told_with_the_next_print) {
    At(0.0, "a\n");
    At(1.0, "a\n");
    At(2.0, "a\n");
    EXPECT_EQ(At(10.0, "a\n"), "a (repeated 2 times)\n");
    EXPECT_EQ(At(19.0, "a\n"), "");
    EXPECT_EQ(At(20.0, "a\n"), "a (repeated 1 time)\n");
}

TEST_F(RepeatedLines, are_not_told_where_there_were_none) {
    At(0.0, "a\n");
    EXPECT_EQ(At(10.0, "a\n"), "a\n");
}

TEST_F(RepeatedLines, are_found_with_others_between_them) {
    EXPECT_EQ(At(0.0, "a\n"), "a\n");
    EXPECT_EQ(At(1.0, "b\n"), "b\n");
    EXPECT_EQ(At(2.0, "a\n"), "");
    EXPECT_EQ(At(3.0, "b\n"), "");
    EXPECT_EQ(At(3.0, "a \n"), "a \n");
}

TEST_F(RepeatedLines, that_begin_with_a_digit_are_all_printed) {
    for (const char* const line : {"0.100,portHandler.HandlePort failed\n", "9\n"}) {
        EXPECT_EQ(At(0.0, line), line);
        EXPECT_EQ(At(0.0, line), line);
    }
}

TEST_F(RepeatedLines, that_are_empty_are_all_printed) {
    EXPECT_EQ(At(0.0, "\n"), "\n");
    EXPECT_EQ(At(0.0, "\n"), "\n");
}

TEST_F(RepeatedLines, are_folded_up_to_a_length) {
    const std::string longest = std::string(CRepeatedLines::kLongestFolded - 1, 'x') + '\n';
    const std::string longer = 'x' + longest;
    EXPECT_EQ(At(0.0, longest), longest);
    EXPECT_EQ(At(0.0, longest), "");
    EXPECT_EQ(At(0.0, longer), longer);
    EXPECT_EQ(At(0.0, longer), longer);
}

TEST_F(RepeatedLines, are_remembered_up_to_a_number_and_the_oldest_is_forgotten_with_its_count) {
    for (std::size_t i = 0; i < CRepeatedLines::kRemembered; ++i) {
        At(static_cast<double>(i) / 100, Numbered(i));
    }
    EXPECT_EQ(At(1.0, Numbered(0)), "");
    EXPECT_EQ(At(1.0, Numbered(1)), "");
    EXPECT_EQ(At(1.0, "new\n"), "line 0 (repeated 1 time)\nnew\n");
    EXPECT_EQ(At(1.0, Numbered(1)), "");
    EXPECT_EQ(At(1.0, Numbered(0)), "line 1 (repeated 2 times)\nline 0\n");
    EXPECT_EQ(At(1.0, "newer\n"), "newer\n");
}

TEST_F(RepeatedLines, that_were_not_told_are_told_once_on_demand) {
    At(0.0, "a\n");
    At(0.0, "a\n");
    At(0.0, "b\n");
    At(0.0, "c\n");
    At(0.0, "c\n");
    At(0.0, "c\n");
    EXPECT_EQ(m_lines.TakeUntold(), "a (repeated 1 time)\nc (repeated 2 times)\n");
    EXPECT_EQ(m_lines.TakeUntold(), "");
    EXPECT_EQ(At(10.0, "a\n"), "a\n");
}
