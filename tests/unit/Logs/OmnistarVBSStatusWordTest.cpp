#include "Logs/OmnistarVBSStatusWord.h"

#include <gtest/gtest.h>

namespace {

struct SFlag {
    unsigned bit;
    bool (COmnistarVBSStatusWord::*isSet)() const;
    const char* name;
};

// In the order in which they are printed.
// clang-format off
const SFlag kFlags[] = {
    {0, &COmnistarVBSStatusWord::IsSubscriptionExpired, "SubscriptionExpired"},
    {1, &COmnistarVBSStatusWord::IsOutOfRegion, "OutOfRegion"},
    {2, &COmnistarVBSStatusWord::HasWetError, "WetError"},
    {4, &COmnistarVBSStatusWord::HasNoRemoteSites, "NoRemoteSites"},
    {5, &COmnistarVBSStatusWord::HasNoAlmanac, "NoAlmanac"},
    {6, &COmnistarVBSStatusWord::HasNoPosition, "NoPosition"},
    {7, &COmnistarVBSStatusWord::HasNoTime, "NoTime"},
    {15, &COmnistarVBSStatusWord::IsUpdatingData, "UpdatingData"},
};
// clang-format on

COmnistarVBSStatusWord WithBit(unsigned bit) {
    return COmnistarVBSStatusWord(static_cast<std::uint16_t>(1U << bit));
}

} // namespace

TEST(OmnistarVBSStatusWord, tells_each_flag_from_its_bit_alone) {
    for (const SFlag& flag : kFlags) {
        for (unsigned bit = 0; bit < 16; ++bit) {
            EXPECT_EQ((WithBit(bit).*flag.isSet)(), bit == flag.bit) << flag.name << ' ' << bit;
        }
    }
}

TEST(OmnistarVBSStatusWord, gives_bit_3_as_the_number_of_its_signal_state) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(WithBit(bit).GetSignalState(), bit == 3 ? 1U : 0U);
    }
}

TEST(OmnistarVBSStatusWord, prints_the_signal_state_first_and_then_each_flag) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        std::string expected = "[COmnistarVBSStatusWord]: ,SignalState=";
        expected += bit == 3 ? '1' : '0';
        for (const SFlag& flag : kFlags) {
            expected += ',' + std::string(flag.name) + (flag.bit == bit ? "=1" : "=0");
        }
        EXPECT_EQ(WithBit(bit).AsText(), expected);
    }
}

TEST(OmnistarVBSStatusWord, prints_itself_as_a_line_on_standard_output) {
    testing::internal::CaptureStdout();
    COmnistarVBSStatusWord(0x800A).Print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[COmnistarVBSStatusWord]: ,SignalState=1,SubscriptionExpired=0,OutOfRegion=1,"
              "WetError=0,NoRemoteSites=0,NoAlmanac=0,NoPosition=0,NoTime=0,UpdatingData=1\n");
}

TEST(OmnistarVBSStatusWord, keeps_the_raw_word) {
    EXPECT_EQ(COmnistarVBSStatusWord(0x89AB).GetWord(), 0x89AB);
}
