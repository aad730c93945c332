#include "Framing/NMEASentenceConstructor.h"

#include "Framing/FramerTesting.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using namespace std::string_literals;

/// One line: whether it is delivered whole.
bool Delivers(const std::string& sentence) {
    const auto answers = Answers<CNMEASentenceConstructor>(sentence + "\r");
    EXPECT_THAT(answers, ElementsAre(testing::AnyOf(sentence, kRejection)));
    return answers == std::vector{sentence};
}

} // namespace

TEST(NMEASentenceConstructor, delivers_a_sentence_as_receivers_send_it) {
    EXPECT_TRUE(Delivers("$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47"));
}

TEST(NMEASentenceConstructor, reads_the_checksum_in_either_case) {
    EXPECT_TRUE(Delivers("$GPGLL*50"));
    EXPECT_TRUE(Delivers("$O*4F"));
    EXPECT_TRUE(Delivers("$O*4f"));
}

TEST(NMEASentenceConstructor, rejects_a_wrong_checksum) {
    EXPECT_FALSE(Delivers("$O*4E"));
    EXPECT_FALSE(Delivers("$O*5F"));
}

TEST(NMEASentenceConstructor, takes_the_first_star) {
    EXPECT_TRUE(Delivers("$O*4F*00"));
    EXPECT_FALSE(Delivers(SentenceMaker::NMEA("O*P")));
}

TEST(NMEASentenceConstructor, wants_two_characters_after_the_star) {
    EXPECT_FALSE(Delivers("$O*"));
    EXPECT_FALSE(Delivers("$AN*F")); // reads as 15, which is right
    EXPECT_TRUE(Delivers("$AN*0F"));
}

TEST(NMEASentenceConstructor, ignores_what_follows_the_two_characters) {
    EXPECT_TRUE(Delivers("$O*4F0"));
    EXPECT_TRUE(Delivers("$O*4F and more"));
}

TEST(NMEASentenceConstructor, takes_the_star_as_the_checksum_of_an_empty_text) {
    EXPECT_TRUE(Delivers("$*2A"));
    EXPECT_TRUE(Delivers("$*2a*"));
    EXPECT_FALSE(Delivers("$*00"));
    EXPECT_FALSE(Delivers("$**2A")); // the first star is followed by "*2", which reads as 0
}

TEST(NMEASentenceConstructor, takes_any_bytes_as_text) {
    EXPECT_TRUE(Delivers(SentenceMaker::NMEA("\0\x01#\x7F\x80\xFF\xAA\x44\x12"s)));
}

TEST(NMEASentenceConstructor, reads_a_checksum_without_digits_as_zero) {
    EXPECT_TRUE(Delivers("$AA*00"));
    EXPECT_TRUE(Delivers("$AA*zz"));
    EXPECT_TRUE(Delivers("$AA*  "));
    EXPECT_TRUE(Delivers("$AA*0x"));
    EXPECT_TRUE(Delivers("$AA*" + "\0F"s));
    EXPECT_TRUE(Delivers("$AA*zF"));
    EXPECT_FALSE(Delivers("$AA*1z"));
}

TEST(NMEASentenceConstructor, reads_no_digit_behind_the_second_character) {
    EXPECT_TRUE(Delivers("$AN* F"));
    EXPECT_TRUE(Delivers("$AN*0F0"));
    EXPECT_FALSE(Delivers("$AN*  F"));
    EXPECT_FALSE(Delivers("$AN*0xF"));
}

TEST(NMEASentenceConstructor, reads_a_single_digit_up_to_what_is_none) {
    EXPECT_TRUE(Delivers("$AN*F,"));
    EXPECT_TRUE(Delivers("$AN*F"s + "\0"s));
}

TEST(NMEASentenceConstructor, takes_the_low_eight_bits_of_a_number_with_a_sign) {
    EXPECT_TRUE(Delivers("$AN*+F"));
    EXPECT_TRUE(Delivers("$\xF1*-F"));
    EXPECT_TRUE(Delivers("$\xFF*-1"));
}
