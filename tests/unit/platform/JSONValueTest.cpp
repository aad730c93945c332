#include "JSONValue.h"

#include <gtest/gtest.h>
#include <limits>
#include <tuple>

namespace {

std::string Written(const BAtomC& value) {
    std::string text;
    JSONValue::Append(text, value);
    return text;
}

/// The text of a value that was read, or "(not JSON)".
std::string ReadAndWritten(std::string_view text) {
    const std::optional<BAtomC> value = JSONValue::Read(text);
    return value ? Written(*value) : "(not JSON)";
}

std::string Nested(std::size_t depth, const std::string& opening, const std::string& inner,
                   const std::string& closing) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += opening;
    }
    text += inner;
    for (std::size_t i = 0; i < depth; ++i) {
        text += closing;
    }
    return text;
}

JSONValue::EFault FaultOf(std::string_view text) {
    JSONValue::EFault fault = JSONValue::EFault::none;
    const bool isRead = JSONValue::Read(text, &fault).has_value();
    EXPECT_EQ(isRead, fault == JSONValue::EFault::none);
    return fault;
}

/// A list of so many zeros.
std::string Zeros(std::size_t count) {
    std::string text = "[0";
    for (std::size_t i = 1; i < count; ++i) {
        text += ",0";
    }
    return text + "]";
}

} // namespace

TEST(JSONValue, reads_every_kind_of_value_and_writes_it_shortest) {
    constexpr std::tuple<const char*, const char*> kTexts[] = {
        {"null", "null"},
        {"5", "5"},
        {"-5", "-5"},
        {"5.0", "5"},
        {"0.1", "0.1"},
        {"-1.5e3", "-1500"},
        {"2147483647", "2147483647"},
        {"-2147483648", "-2147483648"},
        {"2147483648", "2147483648"},
        {"-2147483649", "-2147483649"},
        {R"("")", R"("")"},
        {R"("a\n\"b\"\\")", R"("a\n\"b\"\\")"},
        {R"("\u00e9")", "\"\xC3\xA9\""},
        {"[]", "[]"},
        {"{}", "{}"},
        {" [ 1 , 2 ]\r", "[1,2]"},
        {R"([1,[2,[]],{"b":{},"a":[null]},"x"])", R"([1,[2,[]],{"a":[null],"b":{}},"x"])"},
    };
    for (const auto& [text, expected] : kTexts) {
        EXPECT_EQ(ReadAndWritten(text), expected) << text;
    }
}

TEST(JSONValue, reads_integers_written_either_way) {
    EXPECT_EQ(JSONValue::Read("5")->AsInteger(), 5);
    EXPECT_EQ(JSONValue::Read("5.0")->AsInteger(), 5);
    EXPECT_EQ(JSONValue::Read("-0")->AsInteger(), 0);
    EXPECT_EQ(JSONValue::Read("-2147483648")->AsInteger(), std::numeric_limits<int>::min());
}

TEST(JSONValue, reads_no_integer_from_what_is_none) {
    for (const char* text : {"5.5", "true", "false", "\"5\"", "null", "[5]", "2147483648",
                             "-2147483649", "9223372036854775808", "-9223372036854775808",
                             "18446744073709551615", "18446744073709551616", "1e300"}) {
        const std::optional<BAtomC> value = JSONValue::Read(text);
        ASSERT_TRUE(value) << text;
        EXPECT_FALSE(value->AsInteger()) << text;
    }
}

TEST(JSONValue, reads_whole_numbers_beyond_32_bits_as_doubles) {
    EXPECT_EQ(JSONValue::Read("4294967296")->AsDouble(), 4294967296.0);
    EXPECT_EQ(JSONValue::Read("-4294967296")->AsDouble(), -4294967296.0);
    EXPECT_EQ(JSONValue::Read("18446744073709551616")->AsDouble(), 18446744073709551616.0);
}

TEST(JSONValue, reads_truth_values_as_nothing) {
    EXPECT_TRUE(JSONValue::Read("true")->AsTruth()->value);
    EXPECT_FALSE(JSONValue::Read("false")->AsTruth()->value);
    EXPECT_FALSE(JSONValue::Read("true")->IsNull());
}

TEST(JSONValue, refuses_what_is_not_one_json_text) {
    for (const char* text : {"",
                             " ",
                             "nul",
                             "{",
                             "}",
                             "[1,]",
                             "[1",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{a:1}",
                             "1 2",
                             "[1]x",
                             "'a'",
                             "\"open",
                             "\"\xFF\"",
                             "\"\n\"",
                             "01",
                             "+1",
                             ".5",
                             "NaN",
                             "1e999",
                             "-1e999",
                             "// comment\n1",
                             "GET / HTTP/1.1"}) {
        EXPECT_FALSE(JSONValue::Read(text)) << text;
    }
    EXPECT_FALSE(JSONValue::Read(std::string_view("1\0", 2)));
}

TEST(JSONValue, keeps_the_last_value_of_a_repeated_name) {
    EXPECT_EQ(ReadAndWritten(R"({"a":1,"b":2,"a":[3]})"), R"({"a":[3],"b":2})");
}

TEST(JSONValue, reads_lists_and_dictionaries_in_each_other_to_the_bound_and_no_deeper) {
    const std::size_t bound = JSONValue::kMaxDepth;
    const std::string deepest = Nested(bound, "[", "1", "]");
    EXPECT_EQ(ReadAndWritten(deepest), deepest);
    const std::string deepestDictionary = Nested(bound, R"({"a":)", "1", "}");
    EXPECT_EQ(ReadAndWritten(deepestDictionary), deepestDictionary);
    EXPECT_FALSE(JSONValue::Read(Nested(bound + 1, "[", "1", "]")));
    EXPECT_FALSE(JSONValue::Read(Nested(bound + 1, R"({"a":)", "1", "}")));
}

TEST(JSONValue, counts_the_depth_and_not_the_number_of_lists) {
    std::string text = "[[]";
    for (int i = 0; i < 1000; ++i) {
        text += ",[]";
    }
    text += "]";
    EXPECT_EQ(ReadAndWritten(text), text);
}

TEST(JSONValue, refuses_a_line_of_nothing_but_openings) {
    EXPECT_FALSE(JSONValue::Read(std::string(1024 * 1024, '[')));
    EXPECT_FALSE(JSONValue::Read(Nested(200'000, R"({"a":)", "", "")));
}

TEST(JSONValue, writes_doubles_that_are_not_finite_as_null) {
    EXPECT_EQ(Written(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(Written(std::numeric_limits<double>::quiet_NaN()), "null");
}

TEST(JSONValue, writes_text_of_any_bytes_as_valid_json_on_one_line) {
    EXPECT_EQ(Written("caf\xE9\n"), "\"caf\xC3\xA9\\n\"");
    EXPECT_EQ(Written(BDictionaryC().Set("a\nb", 1)), R"({"a\nb":1})");
}

TEST(JSONValue, tells_what_is_wrong_with_a_text) {
    using enum JSONValue::EFault;
    EXPECT_EQ(FaultOf("[1]"), none);
    for (const char* text : {"", "[1,]", "1e999", "[1] 2"}) {
        EXPECT_EQ(FaultOf(text), notJSON) << text;
    }
    EXPECT_EQ(FaultOf(std::string_view("1\0", 2)), notJSON);
    EXPECT_EQ(FaultOf(Nested(JSONValue::kMaxDepth, "[", "", "]")), none);
    EXPECT_EQ(FaultOf(Nested(JSONValue::kMaxDepth + 1, "[", "", "]")), tooDeep);
    EXPECT_EQ(FaultOf(Nested(JSONValue::kMaxDepth + 1, R"({"a":)", "1", "}")), tooDeep);
}

TEST(JSONValue, reads_no_more_values_than_its_bound) {
    using enum JSONValue::EFault;
    EXPECT_EQ(FaultOf(Zeros(9'000)), none);
    EXPECT_EQ(FaultOf(Zeros(JSONValue::kMaxValues + 1)), tooManyValues);
    std::string lists = "[[]";
    std::string members = R"({"a":0)";
    for (std::size_t i = 0; i < JSONValue::kMaxValues; ++i) {
        lists += ",[]";
        members += R"(,"a":0)";
    }
    EXPECT_EQ(FaultOf(lists + "]"), tooManyValues);
    EXPECT_EQ(FaultOf(members + "}"), tooManyValues);
}

TEST(JSONValue, checks_a_text_of_any_number_of_values) {
    using enum JSONValue::EFault;
    EXPECT_EQ(JSONValue::Check(Zeros(3 * JSONValue::kMaxValues)), none);
    EXPECT_EQ(JSONValue::Check(R"({"a":[true,null,-1,0.5,"x",{}]})"), none);
    for (const char* text : {"", "[1,]", "{\"a\"}", "1e999", "[1] 2", "\"\xFF\"", "]"}) {
        EXPECT_EQ(JSONValue::Check(text), notJSON) << text;
    }
    EXPECT_EQ(JSONValue::Check(std::string_view("[1]\0", 4)), notJSON);
}

TEST(JSONValue, checks_how_deep_a_text_is_nested) {
    using enum JSONValue::EFault;
    EXPECT_EQ(JSONValue::Check(Nested(JSONValue::kMaxDepth, "[", "", "]")), none);
    EXPECT_EQ(JSONValue::Check(Nested(JSONValue::kMaxDepth + 1, "[", "", "]")), tooDeep);
    EXPECT_EQ(JSONValue::Check(Nested(JSONValue::kMaxDepth + 1, R"({"a":)", "1", "}")), tooDeep);
    EXPECT_EQ(JSONValue::Check(std::string(1024 * 1024, '[')), tooDeep);
    EXPECT_EQ(
        JSONValue::Check("[" + Nested(31, "[", "", "]") + "," + Nested(31, "[", "", "]") + "]"),
        none)
        << "lists that have ended count no more";
}
