#include "ctl/Values.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace Ctl;

namespace {

std::string JSONText(const BAtomC& value) {
    return JSONOf(value).dump();
}

/// The kind and the value of an argument as they would be sent.
std::string Argument(const char* text) {
    return JSONText(ParseCallArgument(text));
}

} // namespace

TEST(Values, read_switches_in_every_form) {
    for (const char* const text : {"on", "ON", "true", "Yes", "1"}) {
        EXPECT_EQ(ParseSwitch(text), true) << text;
    }
    for (const char* const text : {"off", "Off", "false", "NO", "0"}) {
        EXPECT_EQ(ParseSwitch(text), false) << text;
    }
    for (const char* const text : {"", "2", "o", "onn", "on ", "-1"}) {
        EXPECT_EQ(ParseSwitch(text), std::nullopt) << text;
    }
}

TEST(Values, read_whole_numbers_of_32_bits) {
    EXPECT_EQ(ParseWhole("0"), 0);
    EXPECT_EQ(ParseWhole("-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ParseWhole("2147483647"), std::numeric_limits<std::int32_t>::max());
    for (const char* const text :
         {"", "2147483648", "1.0", "1e3", " 1", "1 ", "0x1", "one", "--1"}) {
        EXPECT_EQ(ParseWhole(text), std::nullopt) << text;
    }
}

TEST(Values, read_finite_numbers_and_nothing_else) {
    EXPECT_EQ(ParseNumber("-2.5e-3"), -0.0025);
    EXPECT_EQ(ParseNumber("4000000.5"), 4000000.5);
    for (const char* const text : {"", " 1", "1 ", "1,5", "nan", "inf", "-inf", "1e999", "1x"}) {
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
    }
}

TEST(Values, of_a_call_are_numbers_where_they_read_as_numbers) {
    EXPECT_EQ(Argument("5"), "5");
    EXPECT_EQ(Argument("-5"), "-5");
    EXPECT_EQ(Argument("5.5"), "5.5");
    EXPECT_EQ(Argument("3000000000"), "3000000000.0");
}

TEST(Values, of_a_call_are_texts_otherwise_and_where_that_is_forced) {
    EXPECT_EQ(Argument("GPGGA"), R"("GPGGA")");
    EXPECT_EQ(Argument(""), R"("")");
    EXPECT_EQ(Argument("1 2"), R"("1 2")");
    EXPECT_EQ(Argument("nan"), R"("nan")");
    EXPECT_EQ(Argument("text:5"), R"("5")");
    EXPECT_EQ(Argument("text:"), R"("")");
    EXPECT_EQ(Argument("text:text:5"), R"("text:5")");
}

TEST(Values, become_json_of_the_same_kind) {
    EXPECT_EQ(JSONText(BAtomC()), "null");
    EXPECT_EQ(JSONText(BListC().AddInt(1).Add(0.5).AddString("a\"b").Add(BListC())),
              R"([1,0.5,"a\"b",[]])");
    EXPECT_EQ(JSONText(BDictionaryC().Set("a", 1).Set("b", BAtomC())), R"({"a":1,"b":null})");
}

TEST(Values, are_shown_short) {
    EXPECT_EQ(NumberText(15.0), "15");
    EXPECT_EQ(NumberText(0.2), "0.2");
    EXPECT_EQ(NumberText(-1e300), "-1e+300");
    EXPECT_EQ(FixedText(2.0, 4), "2.0000");
    EXPECT_EQ(FixedText(-0.00005, 3), "-0.000");
    EXPECT_EQ(FixedText(1e308, 0).size(), 309U);
    EXPECT_EQ(SwitchText(true), "on");
    EXPECT_EQ(SwitchText(false), "off");
}

TEST(Values, that_are_misspelt_have_a_nearest_one) {
    const std::vector<std::string> words = {"sbas", "sbas-prn", "reset", "refresh"};
    EXPECT_EQ(Nearest("sba", words), "sbas");
    EXPECT_EQ(Nearest("sabs", words), "sbas");
    EXPECT_EQ(Nearest("SBAS", words), "sbas");
    EXPECT_EQ(Nearest("sbasprn", words), "sbas-prn");
    EXPECT_EQ(Nearest("refreh", words), "refresh");
    EXPECT_EQ(Nearest("firmware", words), "");
    EXPECT_EQ(Nearest("x", words), "");
    EXPECT_EQ(Nearest("sbas", {}), "");
}
