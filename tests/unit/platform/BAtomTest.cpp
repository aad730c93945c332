#include "platform/BAtom.h"

#include <gtest/gtest.h>
#include <iterator>
#include <limits>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

void ExpectNoNumber(const BAtomC& value) {
    EXPECT_FALSE(value.AsInteger());
    EXPECT_FALSE(value.AsDouble());
}

} // namespace

TEST(BAtom, is_nothing_until_it_is_given_something) {
    const BAtomC value;
    EXPECT_TRUE(value.IsNull());
    ExpectNoNumber(value);
    EXPECT_EQ(value.AsText(), nullptr);
    EXPECT_EQ(value.AsList(), nullptr);
    EXPECT_EQ(value.AsDictionary(), nullptr);
}

TEST(BAtom, holds_an_integer_that_also_reads_as_a_double) {
    const BAtomC value(-7);
    EXPECT_FALSE(value.IsNull());
    EXPECT_EQ(value.AsInteger(), -7);
    EXPECT_EQ(value.AsDouble(), -7.0);
    EXPECT_EQ(value.AsText(), nullptr);
}

TEST(BAtom, holds_a_double_that_reads_as_an_integer_only_when_it_is_whole_and_within_32_bits) {
    EXPECT_EQ(BAtomC(5.0).AsInteger(), 5);
    EXPECT_EQ(BAtomC(-0.0).AsInteger(), 0);
    EXPECT_EQ(BAtomC(2147483647.0).AsInteger(), 2147483647);
    EXPECT_EQ(BAtomC(-2147483648.0).AsInteger(), std::numeric_limits<std::int32_t>::min());
    for (const double other : {5.5, -0.5, 2147483648.0, -2147483649.0, 1e300, -1e300, kInfinity,
                               -kInfinity, kNotANumber}) {
        EXPECT_FALSE(BAtomC(other).AsInteger()) << other;
    }
    EXPECT_EQ(BAtomC(5.5).AsDouble(), 5.5);
    EXPECT_EQ(BAtomC(kInfinity).AsDouble(), kInfinity);
}

TEST(BAtom, holds_a_truth_value_as_0_or_1) {
    EXPECT_EQ(BAtomC(true).AsInteger(), 1);
    EXPECT_EQ(BAtomC(false).AsInteger(), 0);
}

TEST(BAtom, holds_a_text_that_is_no_number_whatever_it_says) {
    const BAtomC value("5");
    ASSERT_NE(value.AsText(), nullptr);
    EXPECT_EQ(*value.AsText(), "5");
    ExpectNoNumber(value);
    EXPECT_FALSE(value.IsNull());
    EXPECT_EQ(value.AsList(), nullptr);
}

TEST(BAtom, holds_a_list_that_is_nothing_else) {
    const BAtomC value(BListC().Add(1).Add("two"));
    ASSERT_NE(value.AsList(), nullptr);
    EXPECT_EQ(value.AsList()->Size(), 2u);
    EXPECT_EQ(value.AsDictionary(), nullptr);
    ExpectNoNumber(value);
    EXPECT_FALSE(value.IsNull());
}

TEST(BAtom, holds_a_dictionary_that_is_nothing_else) {
    const BAtomC value(BDictionaryC().Set("a", 1));
    ASSERT_NE(value.AsDictionary(), nullptr);
    EXPECT_NE(value.AsDictionary()->Find("a"), nullptr);
    EXPECT_EQ(value.AsList(), nullptr);
    ExpectNoNumber(value);
    EXPECT_FALSE(value.IsNull());
}

TEST(BAtom, keeps_a_list_as_it_was_when_the_original_goes_on) {
    BListC list;
    list.Add(1);
    const BAtomC value(list);
    list.Add(2);
    EXPECT_EQ(value.AsList()->Size(), 1u);
}

TEST(BAtom, keeps_its_copy_when_the_original_is_given_something_else) {
    BAtomC original(BListC().Add("inner"));
    const BAtomC copy = original;
    original = 3;
    ASSERT_NE(copy.AsList(), nullptr);
    EXPECT_EQ(*copy.AsList()->At(0).AsText(), "inner");
    EXPECT_EQ(original.AsInteger(), 3);
}

TEST(BList, keeps_its_values_in_order) {
    const BListC list = BListC().Add(1).Add("two").Add(3.5);
    ASSERT_EQ(list.Size(), 3u);
    EXPECT_EQ(list.At(0).AsInteger(), 1);
    EXPECT_EQ(*list.At(1).AsText(), "two");
    EXPECT_EQ(list.At(2).AsDouble(), 3.5);
    EXPECT_EQ(std::distance(list.begin(), list.end()), 3);
    EXPECT_EQ(list.begin()->AsInteger(), 1);
}

TEST(BList, gives_nothing_past_its_end) {
    EXPECT_TRUE(BListC().At(0).IsNull());
    EXPECT_TRUE(BListC().Add(1).At(1).IsNull());
}

TEST(BDictionary, finds_values_by_name) {
    const BDictionaryC dictionary = BDictionaryC().Set("port", 50).Set("device", "/dev/ttyS0");
    ASSERT_NE(dictionary.Find("port"), nullptr);
    EXPECT_EQ(dictionary.Find("port")->AsInteger(), 50);
    EXPECT_EQ(*dictionary.Find("device")->AsText(), "/dev/ttyS0");
    EXPECT_EQ(dictionary.Find("baud"), nullptr);
}

TEST(BDictionary, keeps_the_last_value_of_a_name) {
    const BDictionaryC dictionary = BDictionaryC().Set("a", 1).Set("a", 2);
    EXPECT_EQ(dictionary.Find("a")->AsInteger(), 2);
    EXPECT_EQ(std::distance(dictionary.begin(), dictionary.end()), 1);
}

TEST(BDictionary, lists_its_pairs_by_rising_name) {
    const BDictionaryC dictionary = BDictionaryC().Set("b", 2).Set("a", 1);
    EXPECT_EQ(dictionary.begin()->first, "a");
    EXPECT_EQ(std::next(dictionary.begin())->first, "b");
}
