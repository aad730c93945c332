#include "JSONText.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>

namespace {

std::string Quoted(std::string_view text) {
    std::string out;
    JSONText::AppendString(out, text);
    return out;
}

std::string Number(double value) {
    std::string out;
    JSONText::AppendDouble(out, value);
    return out;
}

std::string Integer(std::int64_t value) {
    std::string out;
    JSONText::AppendInteger(out, value);
    return out;
}

std::uint64_t BitsOf(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::uint64_t BitsReadBack(double value) {
    return BitsOf(nlohmann::json::parse(Number(value)).get<double>());
}

} // namespace

TEST(JSONText, appends_to_what_is_there) {
    std::string out = "[";
    JSONText::AppendString(out, "a");
    out += ',';
    JSONText::AppendDouble(out, 0.5);
    out += ',';
    JSONText::AppendInteger(out, -3);
    EXPECT_EQ(out, "[\"a\",0.5,-3");
}

TEST(JSONText, of_plain_text_is_the_text_in_quotes) {
    EXPECT_EQ(Quoted(""), "\"\"");
    EXPECT_EQ(Quoted("corvane 0.1 /~\x7F"), "\"corvane 0.1 /~\x7F\"");
}

TEST(JSONText, escapes_quotes_backslashes_and_control_characters) {
    EXPECT_EQ(Quoted("\"\\"), R"("\"\\")");
    EXPECT_EQ(Quoted("\b\f\n\r\t"), R"("\b\f\n\r\t")");
    EXPECT_EQ(Quoted("\x01\x0B\x1B\x1F"), R"("\u0001\u000b\u001b\u001f")");
}

TEST(JSONText, ends_at_the_first_zero_byte) {
    EXPECT_EQ(Quoted(std::string_view("ab\0cd", 5)), "\"ab\"");
    EXPECT_EQ(Quoted(std::string_view("\0", 1)), "\"\"");
}

TEST(JSONText, passes_valid_UTF_8_through) {
    for (const char* const text : {"\u00E9", "\u0080", "\u07FF", "\u0800", "\uD7FF", "\uE000",
                                   "\uFFFF", "\U00010000", "\U0010FFFF", "\u0950x\u00DF"}) {
        EXPECT_EQ(Quoted(text), '"' + std::string(text) + '"');
    }
}

TEST(JSONText, takes_bytes_that_are_no_UTF_8_for_the_first_256_characters) {
    EXPECT_EQ(Quoted("\xE9t\xE9"), "\"\u00E9t\u00E9\"");
    EXPECT_EQ(Quoted("\x80\xBF\xC0\xFF"), "\"\u0080\u00BF\u00C0\u00FF\"");
    EXPECT_EQ(Quoted("\xC3"), "\"\u00C3\"");                               // cut
    EXPECT_EQ(Quoted("\xE2\x82"), "\"\u00E2\u0082\"");                     // cut
    EXPECT_EQ(Quoted("\xF0\x9F\x98"), "\"\u00F0\u009F\u0098\"");           // cut
    EXPECT_EQ(Quoted("\xC1\x81"), "\"\u00C1\u0081\"");                     // overlong
    EXPECT_EQ(Quoted("\xE0\x9F\xBF"), "\"\u00E0\u009F\u00BF\"");           // overlong
    EXPECT_EQ(Quoted("\xF0\x8F\xBF\xBF"), "\"\u00F0\u008F\u00BF\u00BF\""); // overlong
    EXPECT_EQ(Quoted("\xED\xA0\x80"), "\"\u00ED\u00A0\u0080\"");           // a surrogate
    EXPECT_EQ(Quoted("\xF4\x90\x80\x80"), "\"\u00F4\u0090\u0080\u0080\""); // past U+10FFFF
    EXPECT_EQ(Quoted("\xF5\x80\x80\x80"), "\"\u00F5\u0080\u0080\u0080\"");
    EXPECT_EQ(Quoted("\xE2\x28\xA1"), "\"\u00E2(\u00A1\""); // broken in the middle
    EXPECT_EQ(Quoted("\xC3\xA9\xE9"), "\"\u00E9\u00E9\"");  // valid, then not
}

TEST(JSONText, of_any_bytes_is_one_line_of_valid_JSON) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        std::string bytes(random() % 12, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(1 + random() % 255);
        }
        const std::string text = Quoted(bytes);
        EXPECT_TRUE(nlohmann::json::parse(text, nullptr, false).is_string()) << text;
        EXPECT_EQ(text.find('\n'), std::string::npos);
    }
}

TEST(JSONText, of_a_double_is_its_shortest_text) {
    EXPECT_EQ(Number(0.1), "0.1");
    EXPECT_EQ(Number(-2.5), "-2.5");
    EXPECT_EQ(Number(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(Number(1e22), "1e+22");
    EXPECT_EQ(Number(1e-7), "1e-07");
    EXPECT_EQ(Number(5e-324), "5e-324");
}

TEST(JSONText, of_a_whole_double_has_neither_fraction_nor_exponent) {
    EXPECT_EQ(Number(0.0), "0");
    EXPECT_EQ(Number(5.0), "5");
    EXPECT_EQ(Number(100'000.0), "100000");
    EXPECT_EQ(Number(-604'800.0), "-604800");
    EXPECT_EQ(Number(9007199254740992.0), "9007199254740992");
    EXPECT_EQ(Number(9007199254740994.0), "9007199254740994");
}

TEST(JSONText, of_a_double_reads_back_as_the_same) {
    std::mt19937_64 random(2);
    for (int i = 0; i < 20'000; ++i) {
        const std::uint64_t bits = random();
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value)) {
            ASSERT_EQ(BitsReadBack(value), bits) << Number(value);
        }
    }
    for (const double value : {0.0, -0.0, 1e22, 1.7976931348623157e308, -2.2250738585072014e-308,
                               5e-324, 9007199254740992.0, 9007199254740994.0}) {
        EXPECT_EQ(BitsReadBack(value), BitsOf(value)) << Number(value);
    }
}

TEST(JSONText, of_what_is_not_finite_is_null) {
    EXPECT_EQ(Number(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(Number(-std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(Number(std::numeric_limits<double>::quiet_NaN()), "null");
}

TEST(JSONText, of_an_integer_is_its_digits) {
    EXPECT_EQ(Integer(0), "0");
    EXPECT_EQ(Integer(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(Integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}
