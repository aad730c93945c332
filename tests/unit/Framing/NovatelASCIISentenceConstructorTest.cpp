#include "Framing/NovatelASCIISentenceConstructor.h"

#include "Framing/FramerTesting.h"
#include "support/LiteralFraming.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::string_literals;

/// One line: whether it is delivered whole.
bool Delivers(const std::string& sentence) {
    const auto answers = Answers<Novatel::CNovatelASCIISentenceConstructor>(sentence + "\r");
    EXPECT_THAT(answers, testing::SizeIs(1));
    EXPECT_THAT(answers, ElementsAre(testing::AnyOf(sentence, kRejection)));
    return answers == std::vector{sentence};
}

std::uint32_t CRC(const std::string& text) {
    const auto bytes = SentenceMaker::Bytes(text);
    return Literal::BitwiseCRC32(bytes.data(), bytes.size());
}

/// Some text whose CRC lies between the two, found by trying.
std::string TextWithCRC(std::uint32_t lowest, std::uint32_t highest) {
    for (int i = 0;; ++i) {
        const std::string text = "TEXT," + std::to_string(i);
        if (CRC(text) >= lowest && CRC(text) <= highest) {
            return text;
        }
    }
}

std::string Digits(std::uint32_t number, int count) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%0*X", count, static_cast<unsigned>(number));
    return digits;
}

/// Zero bytes have a CRC of zero.
const std::string kZeroText = "#"s + "\0\0"s;

} // namespace

TEST(NovatelASCIISentenceConstructor, delivers_a_real_sentence) {
    EXPECT_TRUE(Delivers("#BESTPOSA,COM1,0,65.5,FINESTEERING,1687,419928.000,00000000,6145,3153;"
                         "SOL_COMPUTED,SINGLE,32.59535912622,-85.29567789741,199.9777,-29.2000,"
                         "WGS84,1.1396,1.1687,2.4308,\"\",0.000,0.000,12,12,0,0,0,06,00,03"
                         "*49329266"));
}

TEST(NovatelASCIISentenceConstructor, reads_the_checksum_in_either_case) {
    const std::string text = TextWithCRC(0xA0000000, 0xFFFFFFFF);
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII(text)));
    EXPECT_TRUE(Delivers("#" + text + "*" + Digits(CRC(text), 8)));
}

TEST(NovatelASCIISentenceConstructor, rejects_a_checksum_that_differs_in_its_first_digit) {
    EXPECT_FALSE(Delivers("#BCD*" + Digits(CRC("BCD") ^ 0x80000000U, 8)));
    EXPECT_FALSE(Delivers("#BCD*" + Digits(CRC("BCD") ^ 1, 8)));
}

TEST(NovatelASCIISentenceConstructor, takes_the_last_star) {
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("two*stars")));
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("****")));
    EXPECT_FALSE(Delivers(SentenceMaker::ASCII("a good one") + "*"));
}

TEST(NovatelASCIISentenceConstructor, rejects_seven_characters_of_checksum) {
    const std::string text = TextWithCRC(0, 0x0FFFFFFF);
    EXPECT_FALSE(Delivers("#" + text + "*" + Digits(CRC(text), 7)));
    EXPECT_TRUE(Delivers("#" + text + "*" + Digits(CRC(text), 8)));
}

TEST(NovatelASCIISentenceConstructor, reads_no_more_than_eight_characters_of_checksum) {
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("BCD") + "1"));
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("BCD") + " and more"));
}

TEST(NovatelASCIISentenceConstructor, wants_a_text_of_two_bytes) {
    EXPECT_FALSE(Delivers(SentenceMaker::ASCII("")));
    EXPECT_FALSE(Delivers(SentenceMaker::ASCII("B")));
    EXPECT_FALSE(Delivers(SentenceMaker::ASCII("B") + "00000"));
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("BC")));
}

TEST(NovatelASCIISentenceConstructor, rejects_short_sentences_without_reading_beyond_them) {
    for (const char* sentence : {"#", "#*", "#**", "#*12345678", "#B*1234567", "#BC*", "#BC*123"}) {
        EXPECT_FALSE(Delivers(sentence)) << sentence;
    }
}

TEST(NovatelASCIISentenceConstructor, takes_any_bytes_as_text) {
    EXPECT_TRUE(Delivers(SentenceMaker::ASCII("\0\x01$\x7F\x80\xFF\xAA\x44\x12"s)));
}

TEST(NovatelASCIISentenceConstructor, reads_a_checksum_without_digits_as_zero) {
    EXPECT_TRUE(Delivers(kZeroText + "*00000000"));
    EXPECT_TRUE(Delivers(kZeroText + "*notadigit"));
    EXPECT_TRUE(Delivers(kZeroText + "*        "));
    EXPECT_TRUE(Delivers(kZeroText + "*+-000001"));
    EXPECT_TRUE(Delivers(kZeroText + "*0xghijkl"));
    EXPECT_TRUE(Delivers(kZeroText + "*" + "\0FFFFFFF"s));
    EXPECT_FALSE(Delivers(kZeroText + "*0000000F"));
}

TEST(NovatelASCIISentenceConstructor, does_not_read_digits_behind_the_eighth_character) {
    EXPECT_TRUE(Delivers(kZeroText + "*        1"));
}

TEST(NovatelASCIISentenceConstructor, skips_blanks_before_the_checksum) {
    const std::string text = TextWithCRC(0x100000, 0xFFFFFF);
    EXPECT_TRUE(Delivers("#" + text + "*  " + Digits(CRC(text), 6)));
    EXPECT_TRUE(Delivers("#" + text + "*\t\v" + Digits(CRC(text), 6)));
    EXPECT_TRUE(Delivers("#" + text + "*\f " + Digits(CRC(text), 6)));
}

TEST(NovatelASCIISentenceConstructor, takes_a_prefix_before_the_checksum) {
    const std::string text = TextWithCRC(0x100000, 0xFFFFFF);
    EXPECT_TRUE(Delivers("#" + text + "*0x" + Digits(CRC(text), 6)));
    EXPECT_TRUE(Delivers("#" + text + "*0X" + Digits(CRC(text), 6)));
}

TEST(NovatelASCIISentenceConstructor, takes_a_sign_before_the_checksum) {
    const std::string low = TextWithCRC(0, 0x0FFFFFFF);
    EXPECT_TRUE(Delivers("#" + low + "*+" + Digits(CRC(low), 7)));
    const std::string high = TextWithCRC(0xF0000001, 0xFFFFFFFF);
    EXPECT_TRUE(Delivers("#" + high + "*-" + Digits(0 - CRC(high), 7)));
}

TEST(NovatelASCIISentenceConstructor, stops_reading_the_checksum_at_what_is_no_digit) {
    const std::string text = TextWithCRC(0x100000, 0xFFFFFF);
    EXPECT_TRUE(Delivers("#" + text + "*" + Digits(CRC(text), 6) + "\0F"s));
    EXPECT_TRUE(Delivers("#" + text + "*" + Digits(CRC(text), 6) + "GF"));
    EXPECT_TRUE(Delivers("#" + text + "*" + Digits(CRC(text), 6) + " F"));
}
