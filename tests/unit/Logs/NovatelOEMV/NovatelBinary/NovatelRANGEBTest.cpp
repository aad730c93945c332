#include "Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelRANGE;
using Novatel::CNovatelRANGEB;
using Sentences::BinaryLog;
using Sentences::Range;
using testing::IsEmpty;

namespace {

const char* const kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB:35: void "
    "Novatel::CNovatelRANGEB::ParseSentenceData(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&): Assertion `0' failed.";

/// Observation i of a test, with values of its own in every field.
CNovatelRANGE::SObservation Observation(unsigned i) {
    return {.prn = static_cast<std::uint16_t>(0x8101 + i),
            .glonassFrequency = static_cast<std::uint16_t>(0x8201 + i),
            .pseudorange = 20000000.1 + i,
            .pseudorangeDeviation = 0.03F + static_cast<float>(i),
            .carrierPhase = -105097480.2 - i,
            .carrierPhaseDeviation = 0.004F + static_cast<float>(i),
            .doppler = -3999.5F + static_cast<float>(i),
            .carrierToNoise = 45.25F + static_cast<float>(i),
            .lockTime = 12345.5F + static_cast<float>(i),
            .trackingStatus = 0x88109C04 + i};
}

void ExpectEqual(const CNovatelRANGE::SObservation& actual,
                 const CNovatelRANGE::SObservation& expected) {
    EXPECT_EQ(actual.prn, expected.prn);
    EXPECT_EQ(actual.glonassFrequency, expected.glonassFrequency);
    EXPECT_EQ(actual.pseudorange, expected.pseudorange);
    EXPECT_EQ(actual.pseudorangeDeviation, expected.pseudorangeDeviation);
    EXPECT_EQ(actual.carrierPhase, expected.carrierPhase);
    EXPECT_EQ(actual.carrierPhaseDeviation, expected.carrierPhaseDeviation);
    EXPECT_EQ(actual.doppler, expected.doppler);
    EXPECT_EQ(actual.carrierToNoise, expected.carrierToNoise);
    EXPECT_EQ(actual.lockTime, expected.lockTime);
    EXPECT_EQ(actual.trackingStatus, expected.trackingStatus);
}

Range WithObservations(unsigned count) {
    Range range;
    for (unsigned i = 0; i < count; ++i) {
        range.observation(Observation(i));
    }
    return range;
}

void ExpectObservations(const CNovatelRANGEB& log, unsigned count) {
    EXPECT_EQ(log.GetNumberOfObservations(), count);
    ASSERT_EQ(log.GetObservations().size(), count);
    for (unsigned i = 0; i < count; ++i) {
        ExpectEqual(log.GetObservations()[i], Observation(i));
    }
}

} // namespace

TEST(NovatelRANGEB, decodes_every_field_of_every_observation) {
    ExpectObservations(CNovatelRANGEB(WithObservations(3)), 3);
}

TEST(NovatelRANGEB, decodes_every_field_behind_a_long_header) {
    ExpectObservations(CNovatelRANGEB(WithObservations(3).headerLength(32)), 3);
}

TEST(NovatelRANGEB, decodes_as_many_observations_as_the_longest_message_holds) {
    ExpectObservations(CNovatelRANGEB(WithObservations(1489)), 1489);
}

TEST(NovatelRANGEB, accepts_no_observations) {
    const CNovatelRANGEB log{Range()};
    EXPECT_EQ(log.GetNumberOfObservations(), 0U);
    EXPECT_THAT(log.GetObservations(), IsEmpty());
}

TEST(NovatelRANGEB, accepts_any_header_length_that_the_sentence_s_size_bears_out) {
    for (unsigned length = 28; length <= 255; ++length) {
        ExpectObservations(
            CNovatelRANGEB(WithObservations(1).headerLength(static_cast<std::uint8_t>(length))), 1);
    }
}

TEST(NovatelRANGEBDeathTest, prints_the_sizes_and_fails_an_assertion_on_another_length) {
    ExpectFailedAssertion(
        WithObservations(3).bodySize(4 + 3 * 44 + 1), kAssertion,
        "CNovatelRANGEB sentenceData.size() is 169 but expected (28 + 16 + (3 * 44) + 4)\n");
    ExpectFailedAssertion(
        WithObservations(3).bodySize(4 + 3 * 44 - 1), kAssertion,
        "CNovatelRANGEB sentenceData.size() is 167 but expected (28 + 16 + (3 * 44) + 4)\n");
}

TEST(NovatelRANGEBDeathTest, names_the_header_length_that_it_was_given) {
    ExpectFailedAssertion(
        WithObservations(1).announcing(2).headerLength(40), kAssertion,
        "CNovatelRANGEB sentenceData.size() is 92 but expected (40 + 16 + (2 * 44) + 4)\n");
    ExpectFailedAssertion(
        BinaryLog(43).headerLength(0), kAssertion,
        "CNovatelRANGEB sentenceData.size() is 32 but expected (0 + 16 + (1197226 * 44) + 4)\n");
}

TEST(NovatelRANGEBDeathTest, fails_the_assertion_at_once_for_any_number_of_observations) {
    ExpectFailedAssertion(
        Range().announcing(4294967295), kAssertion,
        "CNovatelRANGEB sentenceData.size() is 36 but expected (28 + 16 + (-1 * 44) + 4)\n");
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Range().announcing(0x40000000), kAssertion,
                          "CNovatelRANGEB sentenceData.size() is 36 but expected (28 + 16 + "
                          "(1073741824 * 44) + 4)\n");
}

TEST(NovatelRANGEBDeathTest, fails_the_assertion_for_a_sentence_that_ends_before_its_count) {
    Bytes::Sentence sentence = Range();
    sentence.resize(7);
    ExpectFailedAssertion(
        sentence, kAssertion,
        "CNovatelRANGEB sentenceData.size() is 7 but expected (28 + 16 + (0 * 44) + 4)\n");
}
