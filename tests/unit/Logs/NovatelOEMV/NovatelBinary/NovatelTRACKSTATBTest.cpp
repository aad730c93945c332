#include "Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelTRACKSTAT;
using Novatel::CNovatelTRACKSTATB;
using Sentences::Trackstat;
using testing::IsEmpty;

namespace {

const char* const kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB:38: void "
    "Novatel::CNovatelTRACKSTATB::ParseSentenceData(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&): Assertion `0' failed.";

/// Channel i of a test, with values of its own in every field.
CNovatelTRACKSTAT::SChannel Channel(unsigned i) {
    return {.prn = static_cast<std::uint16_t>(0x8101 + i),
            .glonassFrequency = static_cast<std::uint16_t>(0x8201 + i),
            .trackingStatus = 0x88109C04 + i,
            .pseudorange = 20000000.1 + i,
            .doppler = -3999.5F + static_cast<float>(i),
            .carrierToNoise = 45.25F + static_cast<float>(i),
            .lockTime = 12345.5F + static_cast<float>(i),
            .pseudorangeResidual = -0.5F + static_cast<float>(i),
            .rejectCode = 0x81000063 + i,
            .pseudorangeWeight = 0.25F + static_cast<float>(i)};
}

void ExpectEqual(const CNovatelTRACKSTAT::SChannel& actual,
                 const CNovatelTRACKSTAT::SChannel& expected) {
    EXPECT_EQ(actual.prn, expected.prn);
    EXPECT_EQ(actual.glonassFrequency, expected.glonassFrequency);
    EXPECT_EQ(actual.trackingStatus, expected.trackingStatus);
    EXPECT_EQ(actual.pseudorange, expected.pseudorange);
    EXPECT_EQ(actual.doppler, expected.doppler);
    EXPECT_EQ(actual.carrierToNoise, expected.carrierToNoise);
    EXPECT_EQ(actual.lockTime, expected.lockTime);
    EXPECT_EQ(actual.pseudorangeResidual, expected.pseudorangeResidual);
    EXPECT_EQ(actual.rejectCode, expected.rejectCode);
    EXPECT_EQ(actual.pseudorangeWeight, expected.pseudorangeWeight);
}

Trackstat WithChannels(unsigned count) {
    Trackstat trackstat;
    trackstat.solutionStatus(0x81000001).positionType(0x82000002).elevationCutOff(5.5F);
    for (unsigned i = 0; i < count; ++i) {
        trackstat.channel(Channel(i));
    }
    return trackstat;
}

void ExpectChannels(const CNovatelTRACKSTATB& log, unsigned count) {
    EXPECT_EQ(log.GetSolutionStatus(), 0x81000001U);
    EXPECT_EQ(log.GetPositionType(), 0x82000002U);
    EXPECT_EQ(log.GetElevationCutOff(), 5.5F);
    EXPECT_EQ(log.GetNumberOfChannels(), count);
    ASSERT_EQ(log.GetChannels().size(), count);
    for (unsigned i = 0; i < count; ++i) {
        ExpectEqual(log.GetChannels()[i], Channel(i));
    }
}

} // namespace

TEST(NovatelTRACKSTATB, decodes_every_field_of_every_channel) {
    ExpectChannels(CNovatelTRACKSTATB(WithChannels(12)), 12);
}

TEST(NovatelTRACKSTATB, decodes_every_field_behind_a_long_header) {
    ExpectChannels(CNovatelTRACKSTATB(WithChannels(2).headerLength(32)), 2);
}

TEST(NovatelTRACKSTATB, decodes_as_many_channels_as_the_longest_message_holds) {
    ExpectChannels(CNovatelTRACKSTATB(WithChannels(1637)), 1637);
}

TEST(NovatelTRACKSTATB, accepts_no_channels) {
    EXPECT_THAT(CNovatelTRACKSTATB(Trackstat()).GetChannels(), IsEmpty());
}

TEST(NovatelTRACKSTATBDeathTest, prints_the_sizes_and_fails_an_assertion_on_another_length) {
    ExpectFailedAssertion(
        WithChannels(2).bodySize(16 + 2 * 40 + 1), kAssertion,
        "CNovatelTRACKSTATB sentenceData.size() is 129 but expected (28 + 16 + (2 * 40) + 4)\n");
    ExpectFailedAssertion(
        WithChannels(2).announcing(3).headerLength(32), kAssertion,
        "CNovatelTRACKSTATB sentenceData.size() is 132 but expected (32 + 16 + (3 * 40) + 4)\n");
}

TEST(NovatelTRACKSTATBDeathTest, fails_the_assertion_at_once_for_any_number_of_channels) {
    ExpectFailedAssertion(
        Trackstat().announcing(4294967295), kAssertion,
        "CNovatelTRACKSTATB sentenceData.size() is 48 but expected (28 + 16 + (-1 * 40) + 4)\n");
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Trackstat().announcing(0x20000000), kAssertion,
                          "CNovatelTRACKSTATB sentenceData.size() is 48 but expected (28 + 16 + "
                          "(536870912 * 40) + 4)\n");
}
