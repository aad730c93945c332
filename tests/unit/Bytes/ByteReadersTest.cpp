#include "Bytes/ByteReaders.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using Bytes::Sentence;
using namespace std::string_literals;

constexpr std::size_t kFarAway = std::numeric_limits<std::size_t>::max();

const Sentence kCounting = {0x01, 0x82, 0x03, 0x84, 0x05, 0x86, 0x07, 0x88, 0x09};

/// 1.0, -2.5 and 0.1 as the receiver sends them.
const Sentence kOne = {0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
const Sentence kMinusTwoAndAHalf = {0, 0, 0, 0, 0, 0, 0x04, 0xC0};
const Sentence kTenth = {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0x3F};

/// Each reader gives something else than 0 on these bytes as long as it is inside.
template <typename Reader>
void ExpectZeroOutside(Reader read, std::size_t width) {
    const Sentence bytes(16, 0x11);
    EXPECT_NE(read(bytes, bytes.size() - width), 0);
    for (std::size_t offset = bytes.size() - width + 1; offset < bytes.size() + 10; ++offset) {
        EXPECT_EQ(read(bytes, offset), 0) << "offset " << offset;
    }
    for (std::size_t back = 0; back < 10; ++back) {
        EXPECT_EQ(read(bytes, kFarAway - back), 0) << back << " from the largest offset";
    }
    EXPECT_EQ(read(Sentence(width - 1, 0x11), 0), 0);
    EXPECT_EQ(read({}, 0), 0);
}

} // namespace

TEST(ByteReaders, read_integers_with_the_low_byte_first) {
    EXPECT_EQ(Bytes::ReadUInt8(kCounting, 1), 0x82);
    EXPECT_EQ(Bytes::ReadUInt16(kCounting, 0), 0x8201);
    EXPECT_EQ(Bytes::ReadUInt32(kCounting, 0), 0x84038201U);
}

TEST(ByteReaders, read_at_any_offset_up_to_the_last_byte) {
    EXPECT_EQ(Bytes::ReadUInt8(kCounting, 8), 0x09);
    EXPECT_EQ(Bytes::ReadUInt16(kCounting, 7), 0x0988);
    EXPECT_EQ(Bytes::ReadUInt32(kCounting, 5), 0x09880786U);
}

TEST(ByteReaders, read_floats) {
    EXPECT_EQ(Bytes::ReadFloat({0, 0, 0x80, 0x3F}, 0), 1.0F);
    EXPECT_EQ(Bytes::ReadFloat({0xFF, 0x9A, 0x99, 0xE9, 0xC1}, 1), -29.2F);
    EXPECT_TRUE(std::isnan(Bytes::ReadFloat({0, 0, 0xC0, 0x7F}, 0)));
}

TEST(ByteReaders, read_doubles_with_the_low_word_first) {
    EXPECT_EQ(Bytes::ReadDouble(kOne, 0), 1.0);
    EXPECT_EQ(Bytes::ReadDouble(kMinusTwoAndAHalf, 0), -2.5);
    EXPECT_EQ(Bytes::ReadDouble(kTenth, 0), 0.1);
}

TEST(ByteReaders, read_the_last_four_bytes) {
    EXPECT_EQ(Bytes::ReadLastUInt32(kCounting), 0x09880786U);
    EXPECT_EQ(Bytes::ReadLastUInt32({1, 2, 3, 4}), 0x04030201U);
    EXPECT_EQ(Bytes::ReadLastUInt32({1, 2, 3}), 0U);
    EXPECT_EQ(Bytes::ReadLastUInt32({}), 0U);
}

TEST(ByteReaders, give_zero_for_a_byte_outside) {
    ExpectZeroOutside(Bytes::ReadUInt8, 1);
}

TEST(ByteReaders, give_zero_for_a_16_bit_number_not_wholly_inside) {
    ExpectZeroOutside(Bytes::ReadUInt16, 2);
}

TEST(ByteReaders, give_zero_for_a_32_bit_number_not_wholly_inside) {
    ExpectZeroOutside(Bytes::ReadUInt32, 4);
}

TEST(ByteReaders, give_zero_for_a_float_not_wholly_inside) {
    ExpectZeroOutside(Bytes::ReadFloat, 4);
}

TEST(ByteReaders, give_zero_for_a_double_not_wholly_inside) {
    ExpectZeroOutside(Bytes::ReadDouble, 8);
}

TEST(ByteReaders, read_texts_with_a_zero_byte_behind) {
    const Sentence bytes = {'V', 'E', 'R', 0, 'X'};
    EXPECT_EQ(Bytes::ReadText(bytes, 0, 3), "VER\0"s);
    EXPECT_EQ(Bytes::ReadText(bytes, 1, 4), "ER\0X\0"s);
}

TEST(ByteReaders, read_no_text_where_there_is_none) {
    const Sentence bytes = {'V', 'E', 'R'};
    EXPECT_EQ(Bytes::ReadText(bytes, 0, 0), "");
    EXPECT_EQ(Bytes::ReadText(bytes, 0, 4), "");
    EXPECT_EQ(Bytes::ReadText(bytes, 3, 1), "");
    EXPECT_EQ(Bytes::ReadText(bytes, kFarAway, 2), "");
    EXPECT_EQ(Bytes::ReadText(bytes, 2, kFarAway), "");
    EXPECT_EQ(Bytes::ReadText({}, 0, 1), "");
}
