#include "Logs/OmnistarHPStatusWord.h"

#include <gtest/gtest.h>

namespace {

struct SFlag {
    unsigned bit;
    bool (COmnistarHPStatusWord::*isSet)() const;
    const char* name;
};

// clang-format off
const SFlag kFlags[] = {
    {0, &COmnistarHPStatusWord::IsSubscriptionExpired, "SubExpired"},
    {1, &COmnistarHPStatusWord::IsOutOfRegion, "OutOfRegion"},
    {2, &COmnistarHPStatusWord::HasWetError, "WetError"},
    {3, &COmnistarHPStatusWord::HasLinkError, "LinkError"},
    {4, &COmnistarHPStatusWord::HasNoMeasurements, "NoMeasurements"},
    {5, &COmnistarHPStatusWord::HasNoEphemeris, "NoEphemeris"},
    {6, &COmnistarHPStatusWord::HasNoInitialPosition, "NoInitialPosition"},
    {7, &COmnistarHPStatusWord::HasNoTimeSet, "NoTimeSet"},
    {8, &COmnistarHPStatusWord::HasVelocityError, "VelocityError"},
    {9, &COmnistarHPStatusWord::HasNoBaseStations, "NoBaseStations"},
    {10, &COmnistarHPStatusWord::HasNoMappingMessage, "NoMappingMessage"},
    {26, &COmnistarHPStatusWord::IsInStaticInitialisation, "StaticInitialisationMode"},
    {31, &COmnistarHPStatusWord::IsUpdatingData, "UpdatingData"},
};
// clang-format on

} // namespace

TEST(OmnistarHPStatusWord, tells_each_flag_from_its_bit_alone) {
    for (const SFlag& flag : kFlags) {
        for (unsigned bit = 0; bit < 32; ++bit) {
            const COmnistarHPStatusWord word(1U << bit);
            EXPECT_EQ((word.*flag.isSet)(), bit == flag.bit) << flag.name << ", bit " << bit;
        }
    }
}

TEST(OmnistarHPStatusWord, prints_each_flag_as_1_or_0) {
    for (const SFlag& set : kFlags) {
        std::string expected;
        for (const SFlag& flag : kFlags) {
            expected += expected.empty() ? "[COmnistarHPStatusWord]: " : ",";
            expected += std::string(flag.name) + (flag.bit == set.bit ? "=1" : "=0");
        }
        EXPECT_EQ(COmnistarHPStatusWord(1U << set.bit).AsText(), expected);
    }
}

TEST(OmnistarHPStatusWord, prints_itself_as_a_line_on_standard_output) {
    testing::internal::CaptureStdout();
    COmnistarHPStatusWord(0x04000000).Print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[COmnistarHPStatusWord]: SubExpired=0,OutOfRegion=0,WetError=0,LinkError=0,"
              "NoMeasurements=0,NoEphemeris=0,NoInitialPosition=0,NoTimeSet=0,VelocityError=0,"
              "NoBaseStations=0,NoMappingMessage=0,StaticInitialisationMode=1,UpdatingData=0\n");
}

TEST(OmnistarHPStatusWord, keeps_the_raw_word) {
    EXPECT_EQ(COmnistarHPStatusWord(0x89ABCDEF).GetWord(), 0x89ABCDEFU);
}
