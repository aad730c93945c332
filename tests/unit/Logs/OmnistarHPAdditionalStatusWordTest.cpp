#include "Logs/OmnistarHPAdditionalStatusWord.h"

#include <gtest/gtest.h>

using CWord = COmnistarHPAdditionalStatusWord;

namespace {

CWord WithBit(unsigned bit) {
    return CWord(static_cast<std::uint16_t>(1U << bit));
}

} // namespace

TEST(OmnistarHPAdditionalStatusWord, has_a_flag_for_each_of_its_low_eight_bits) {
    for (unsigned flag = 0; flag < 8; ++flag) {
        for (unsigned bit = 0; bit < 16; ++bit) {
            EXPECT_EQ(WithBit(bit).GetFlag(flag), bit == flag) << flag << ' ' << bit;
        }
    }
}

TEST(OmnistarHPAdditionalStatusWord, has_no_flag_above_bit_7) {
    EXPECT_FALSE(CWord(0xFFFF).GetFlag(8));
    EXPECT_FALSE(CWord(0xFFFF).GetFlag(40));
}

TEST(OmnistarHPAdditionalStatusWord, names_its_first_four_flags) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(WithBit(bit).IsSolutionConverged(), bit == 0);
        EXPECT_EQ(WithBit(bit).IsSatelliteListAvailable(), bit == 1);
        EXPECT_EQ(WithBit(bit).IsHPAuthorised(), bit == 2);
        EXPECT_EQ(WithBit(bit).IsXPAuthorised(), bit == 3);
    }
}

TEST(OmnistarHPAdditionalStatusWord, keeps_what_stands_from_bit_15_on_as_a_value) {
    EXPECT_EQ(CWord(0x8000).GetUpdatingData(), 1);
    EXPECT_EQ(CWord(0x7FFF).GetUpdatingData(), 0);
}

TEST(OmnistarHPAdditionalStatusWord, prints_its_named_flags) {
    EXPECT_EQ(CWord(0x0001).AsText(),
              "[COmnistarHPAdditionalStatusWord]:,SolutionConverged=1,SatelliteListAvailable=0,"
              "HPAuthorised=0,XPAuthorised=0");
    EXPECT_EQ(CWord(0x0002).AsText(),
              "[COmnistarHPAdditionalStatusWord]:,SolutionConverged=0,SatelliteListAvailable=1,"
              "HPAuthorised=0,XPAuthorised=0");
    EXPECT_EQ(CWord(0x0004).AsText(),
              "[COmnistarHPAdditionalStatusWord]:,SolutionConverged=0,SatelliteListAvailable=0,"
              "HPAuthorised=1,XPAuthorised=0");
    EXPECT_EQ(CWord(0x0008).AsText(),
              "[COmnistarHPAdditionalStatusWord]:,SolutionConverged=0,SatelliteListAvailable=0,"
              "HPAuthorised=0,XPAuthorised=1");
}

TEST(OmnistarHPAdditionalStatusWord, prints_itself_as_a_line_on_standard_output) {
    testing::internal::CaptureStdout();
    CWord(0xFFF0).Print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[COmnistarHPAdditionalStatusWord]:,SolutionConverged=0,SatelliteListAvailable=0,"
              "HPAuthorised=0,XPAuthorised=0\n");
}

TEST(OmnistarHPAdditionalStatusWord, keeps_the_raw_word) {
    EXPECT_EQ(CWord(0x89AB).GetWord(), 0x89AB);
}
