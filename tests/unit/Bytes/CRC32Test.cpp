#include "Bytes/CRC32.h"

#include "support/LiteralFraming.h"
#include "support/SentenceMaker.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Bytes::CalculateCRC32;
using Bytes::Sentence;

std::uint32_t CRC(const Sentence& bytes) {
    return CalculateCRC32(bytes.data(), bytes.size());
}

Sentence AnyBytes(std::mt19937& random, std::size_t size) {
    Sentence bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

/// A receiver's answer to a command.
const Sentence kResponse =
    SentenceMaker::FromHex("aa44121c 01008020 06000000 ffb49706 1d3dfd18 00000000 ffff0000"
                           "01000000 4f4b ea247892");

} // namespace

TEST(CRC32, of_nothing_is_zero) {
    EXPECT_EQ(CalculateCRC32(nullptr, 0), 0U);
}

TEST(CRC32, is_that_of_a_real_binary_sentence) {
    EXPECT_EQ(CalculateCRC32(kResponse.data(), kResponse.size() - 4), 0x927824EAU);
}

TEST(CRC32, is_that_of_a_real_ascii_sentence) {
    EXPECT_EQ(CRC(SentenceMaker::Bytes(
                  "BESTPOSA,COM1,0,65.5,FINESTEERING,1687,419928.000,00000000,6145,3153;"
                  "SOL_COMPUTED,SINGLE,32.59535912622,-85.29567789741,199.9777,-29.2000,WGS84,"
                  "1.1396,1.1687,2.4308,\"\",0.000,0.000,12,12,0,0,0,06,00,03")),
              0x49329266U);
}

TEST(CRC32, starts_at_zero_and_is_not_inverted) {
    EXPECT_EQ(CRC(Sentence(100, 0)), 0U);
    EXPECT_EQ(CRC({0x80}), 0xEDB88320U);
}

TEST(CRC32, equals_the_bitwise_one_for_every_byte) {
    for (int byte = 0; byte < 256; ++byte) {
        const Sentence bytes(1, static_cast<std::uint8_t>(byte));
        EXPECT_EQ(CRC(bytes), Literal::BitwiseCRC32(bytes.data(), 1)) << byte;
    }
}

TEST(CRC32, equals_the_bitwise_one_at_every_length_and_alignment) {
    std::mt19937 random(1);
    const Sentence bytes = AnyBytes(random, 200);
    for (std::size_t offset = 0; offset < 8; ++offset) {
        for (std::size_t length = 0; length + offset <= bytes.size(); ++length) {
            ASSERT_EQ(CalculateCRC32(bytes.data() + offset, length),
                      Literal::BitwiseCRC32(bytes.data() + offset, length))
                << length << " bytes from " << offset;
        }
    }
}

TEST(CRC32, equals_the_bitwise_one_for_the_longest_sentence) {
    std::mt19937 random(2);
    const Sentence bytes = AnyBytes(random, 65794);
    EXPECT_EQ(CRC(bytes), Literal::BitwiseCRC32(bytes.data(), bytes.size()));
}

TEST(SentenceCRC32, covers_all_bytes_or_all_but_four) {
    EXPECT_EQ(Bytes::SentenceCRC32(kResponse, true), 0x927824EAU);
    EXPECT_EQ(Bytes::SentenceCRC32(kResponse, false), CRC(kResponse));
}

TEST(SentenceCRC32, of_four_bytes_or_fewer_without_the_last_four_is_zero) {
    for (std::size_t size = 0; size <= 4; ++size) {
        EXPECT_EQ(Bytes::SentenceCRC32(Sentence(size, 0xFF), true), 0U);
    }
    EXPECT_EQ(Bytes::SentenceCRC32({}, false), 0U);
    EXPECT_NE(Bytes::SentenceCRC32(Sentence(3, 0xFF), false), 0U);
}

TEST(HasValidCRC32, tells_good_sentences_from_damaged_ones) {
    EXPECT_TRUE(Bytes::HasValidCRC32(kResponse));
    for (std::size_t i = 0; i < kResponse.size(); ++i) {
        Sentence damaged = kResponse;
        damaged[i] ^= 0x10;
        EXPECT_FALSE(Bytes::HasValidCRC32(damaged)) << "byte " << i;
    }
}

TEST(HasValidCRC32, wants_four_bytes_for_the_crc) {
    EXPECT_FALSE(Bytes::HasValidCRC32({}));
    EXPECT_FALSE(Bytes::HasValidCRC32({0, 0, 0}));
    EXPECT_TRUE(Bytes::HasValidCRC32({0, 0, 0, 0}));
}
