#include "hub/Names.h"

#include <gtest/gtest.h>

namespace {

std::string Escaped(std::string_view name) {
    return Hub::Escaped(name, [](char byte) { return byte != '/'; });
}

} // namespace

TEST(EscapedName, has_each_byte_that_is_not_fit_in_hexadecimal_digits) {
    EXPECT_EQ(Escaped("a/b"), "a%2Fb");
    EXPECT_EQ(Escaped(""), "");
    EXPECT_EQ(Hub::Escaped(std::string_view("\0\xAB\x10", 3), [](char) { return false; }),
              "%00%AB%10");
}

TEST(EscapedName, is_another_one_for_another_name) {
    EXPECT_EQ(Escaped("a%2Fb"), "a%252Fb");
}

TEST(EscapedName, is_not_longer_than_three_hundred_bytes) {
    EXPECT_EQ(Escaped(std::string(1000, '/')).size(), 300U);
    EXPECT_EQ(Escaped(std::string(1000, 'a')), std::string(100, 'a'));
}
