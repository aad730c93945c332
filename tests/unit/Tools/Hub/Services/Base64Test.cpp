#include "hub/services/Base64.h"

#include <gtest/gtest.h>

using Hub::FromBase64;

// The vectors of RFC 4648, section 10.
TEST(Base64, reads_the_standards_own_examples) {
    EXPECT_EQ(FromBase64(""), "");
    EXPECT_EQ(FromBase64("Zg=="), "f");
    EXPECT_EQ(FromBase64("Zm8="), "fo");
    EXPECT_EQ(FromBase64("Zm9v"), "foo");
    EXPECT_EQ(FromBase64("Zm9vYg=="), "foob");
    EXPECT_EQ(FromBase64("Zm9vYmE="), "fooba");
    EXPECT_EQ(FromBase64("Zm9vYmFy"), "foobar");
}

TEST(Base64, reads_bytes_of_any_value) {
    EXPECT_EQ(FromBase64("AAAA"), std::string(3, '\0'));
    EXPECT_EQ(FromBase64("////"), "\xFF\xFF\xFF");
    EXPECT_EQ(FromBase64("qkQS"), "\xAA\x44\x12");
    EXPECT_EQ(FromBase64("+/+/"), "\xFB\xFF\xBF");
}

TEST(Base64, reads_every_digit_at_its_value) {
    // 64 digits of six bits each: 0 to 63, and so 48 bytes that count in sixes of bits.
    const auto bytes =
        FromBase64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->size(), 48U);
    for (unsigned digit = 0; digit < 64; ++digit) {
        unsigned value = 0;
        for (unsigned bit = digit * 6; bit < digit * 6 + 6; ++bit) {
            const auto byte = static_cast<unsigned char>((*bytes)[bit / 8]);
            value = value << 1 | (byte >> (7 - bit % 8) & 1U);
        }
        EXPECT_EQ(value, digit);
    }
}

TEST(Base64, refuses_what_is_none) {
    for (const char* const text : {"Z", "Zg", "Zg=", "Zm9", "Zm9vY", "Zg===", "====", "=",
                                   "A===", "Z=g=", "=Zg=", "Zm9v=", "Zm9v====", "Zg==Zg==", "Zm 9",
                                   "Zm9\n", "Zm9-", "Zm9_", "Zm9\x80"}) {
        EXPECT_EQ(FromBase64(text), std::nullopt) << text;
    }
}

TEST(Base64, refuses_bits_behind_the_last_byte) {
    EXPECT_EQ(FromBase64("Zh=="), std::nullopt);
    EXPECT_EQ(FromBase64("Zm9="), std::nullopt);
}

TEST(Base64, reads_a_whole_recorded_block) {
    std::string text;
    for (int i = 0; i < 50'000; ++i) {
        text += "Zm9v";
    }
    const auto bytes = FromBase64(text);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), 150'000U);
    EXPECT_EQ(bytes->substr(149'997), "foo");
}
