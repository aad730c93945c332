#include "platform/Text.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using Core::Utilities::ParseDouble;
using Core::Utilities::ParseInt;
using Core::Utilities::Split;
using Core::Utilities::Trim;

namespace {

using Parts = std::vector<std::string_view>;

constexpr std::int32_t kUntouched = -77;

/// The number, or kUntouched when it does not read as one.
std::int32_t Int(std::string_view text) {
    std::int32_t value = kUntouched;
    const bool isRead = ParseInt(text, value);
    EXPECT_EQ(isRead, value != kUntouched) << text;
    return value;
}

double Double(std::string_view text) {
    double value = kUntouched;
    const bool isRead = ParseDouble(text, value);
    EXPECT_EQ(isRead, value != kUntouched) << text;
    return value;
}

} // namespace

TEST(ParseInt, reads_what_begins_with_digits_and_ignores_the_rest) {
    EXPECT_EQ(Int("52"), 52);
    EXPECT_EQ(Int("3\r\n"), 3);
    EXPECT_EQ(Int("010201RN0000"), 10201);
    EXPECT_EQ(Int("7.9"), 7);
    EXPECT_EQ(Int("0x10"), 0);
    EXPECT_EQ(Int(std::string_view("5\0006", 3)), 5);
}

TEST(ParseInt, skips_leading_blanks) {
    EXPECT_EQ(Int("  \t8"), 8);
    EXPECT_EQ(Int("\r\n 8"), 8);
}

TEST(ParseInt, reads_one_sign) {
    EXPECT_EQ(Int("-5"), -5);
    EXPECT_EQ(Int("+5"), 5);
    EXPECT_EQ(Int("+-5"), kUntouched);
    EXPECT_EQ(Int("-+5"), kUntouched);
    EXPECT_EQ(Int("--5"), kUntouched);
    EXPECT_EQ(Int("- 5"), kUntouched);
}

TEST(ParseInt, fails_without_a_digit_and_leaves_the_value) {
    EXPECT_EQ(Int("abc"), kUntouched);
    EXPECT_EQ(Int(""), kUntouched);
    EXPECT_EQ(Int("   "), kUntouched);
    EXPECT_EQ(Int("-"), kUntouched);
    EXPECT_EQ(Int("+"), kUntouched);
    EXPECT_EQ(Int(".5"), kUntouched);
}

TEST(ParseInt, reads_the_whole_range_and_fails_outside) {
    EXPECT_EQ(Int("2147483647"), 2147483647);
    EXPECT_EQ(Int("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Int("2147483648"), kUntouched);
    EXPECT_EQ(Int("-2147483649"), kUntouched);
    EXPECT_EQ(Int("99999999999999999999999"), kUntouched);
    EXPECT_EQ(Int("0000000000000000000000000000012"), 12);
}

TEST(ParseDouble, reads_a_whole_decimal_number) {
    EXPECT_EQ(Double("0.5"), 0.5);
    EXPECT_EQ(Double("-2.5e-3"), -0.0025);
    EXPECT_EQ(Double("+4"), 4.0);
    EXPECT_EQ(Double(".25"), 0.25);
    EXPECT_EQ(Double("1e+22"), 1e22);
    EXPECT_EQ(Double(" \t12 \r\n"), 12.0);
}

TEST(ParseDouble, refuses_everything_else_and_leaves_the_value) {
    for (const char* const text : {"", " ", "abc", "1x", "1 2", "1,5", "0x10", "+-1", "-", "+", ".",
                                   "inf", "-infinity", "nan", "1e999", "1e"}) {
        EXPECT_EQ(Double(text), kUntouched) << text;
    }
}

TEST(ParseDouble, does_not_follow_the_locale) {
    // Where no such locale is installed the C locale stays, and the promise still holds.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(Double("0.5"), 0.5);
    EXPECT_EQ(Double("0,5"), kUntouched);
    std::setlocale(LC_NUMERIC, "C");
}

TEST(Trim, takes_blanks_tabs_and_line_ends_from_both_sides) {
    EXPECT_EQ(Trim(" \t a b \r\n"), "a b");
    EXPECT_EQ(Trim("a"), "a");
    EXPECT_EQ(Trim("  "), "");
    EXPECT_EQ(Trim(""), "");
}

TEST(Split, gives_the_parts_between_separators) {
    EXPECT_EQ(Split("a,bc,d", ','), (Parts{"a", "bc", "d"}));
    EXPECT_EQ(Split("selectchanconfig 4", ' '), (Parts{"selectchanconfig", "4"}));
    EXPECT_EQ(Split(std::string_view("a\0b", 3), '\0'), (Parts{"a", "b"}));
}

TEST(Split, gives_a_text_without_a_separator_as_one_part) {
    EXPECT_EQ(Split("abc", ','), Parts{"abc"});
    EXPECT_EQ(Split("", ','), Parts{""});
}

TEST(Split, gives_empty_parts_too) {
    EXPECT_EQ(Split(",", ','), (Parts{"", ""}));
    EXPECT_EQ(Split(",a,,b,", ','), (Parts{"", "a", "", "b", ""}));
    EXPECT_EQ(Split("a  b", ' '), (Parts{"a", "", "b"}));
}

TEST(Split, changes_nothing_in_the_parts) {
    EXPECT_EQ(Split(" a , b\r\n", ','), (Parts{" a ", " b\r\n"}));
}

TEST(Split, leaves_the_rest_to_the_last_part_when_there_would_be_too_many) {
    EXPECT_EQ(Split("a,b,c,d", ',', 3), (Parts{"a", "b", "c,d"}));
    EXPECT_EQ(Split("a,b,c", ',', 3), (Parts{"a", "b", "c"}));
    EXPECT_EQ(Split("a,b", ',', 3), (Parts{"a", "b"}));
    EXPECT_EQ(Split("a,b,", ',', 2), (Parts{"a", "b,"}));
    EXPECT_EQ(Split("a,b", ',', 1), Parts{"a,b"});
}

TEST(Split, gives_views_of_the_text_itself) {
    const std::string text = "ab,cd";
    EXPECT_EQ(Split(text, ',').at(1).data(), text.data() + 3);
}
