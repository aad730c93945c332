#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelPSRDOPB;
using Sentences::Psrdop;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB:34: void "
    "Novatel::CNovatelPSRDOPB::ParseSentenceData(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&): Assertion `sentenceData.size() == "
    "(m_header.m_headerLength + 28 + (numberPRNs * 4) + 4)' failed.";

void ExpectSixIntegers(const CNovatelPSRDOPB& log) {
    EXPECT_EQ(log.GetGDOP(), 1.0F);
    EXPECT_EQ(log.GetPDOP(), 2.0F);
    EXPECT_EQ(log.GetHDOP(), 3.0F);
    EXPECT_EQ(log.GetHTDOP(), 4.0F);
    EXPECT_EQ(log.GetTDOP(), 5.0F);
    EXPECT_EQ(log.GetElevationCutOff(), 4294967296.0F); // 4294967295 has no float of its own
}

Psrdop Example() {
    return Psrdop()
        .u32(0, 1)
        .u32(4, 2)
        .u32(8, 3)
        .u32(12, 4)
        .u32(16, 5)
        .u32(20, 4294967295)
        .prn(7)
        .prn(0x81000020)
        .prn(9);
}

} // namespace

TEST(NovatelPSRDOPB, keeps_the_values_of_six_integers) {
    ExpectSixIntegers(CNovatelPSRDOPB(Example()));
}

TEST(NovatelPSRDOPB, keeps_the_PRNs_in_their_order) {
    EXPECT_THAT(CNovatelPSRDOPB(Example()).GetPRNs(), ElementsAre(7, 0x81000020, 9));
}

TEST(NovatelPSRDOPB, decodes_behind_a_long_header) {
    const CNovatelPSRDOPB log(Example().headerLength(32));
    ExpectSixIntegers(log);
    EXPECT_THAT(log.GetPRNs(), ElementsAre(7, 0x81000020, 9));
}

TEST(NovatelPSRDOPB, keeps_a_float_as_the_integer_value_of_its_bits) {
    EXPECT_EQ(CNovatelPSRDOPB(Psrdop().f32(0, 1.5F)).GetGDOP(), 1069547520.0F);
}

TEST(NovatelPSRDOPB, accepts_an_empty_list) {
    EXPECT_THAT(CNovatelPSRDOPB(Psrdop()).GetPRNs(), IsEmpty());
}

TEST(NovatelPSRDOPBDeathTest, fails_an_assertion_when_the_length_is_not_that_of_its_list) {
    ExpectFailedAssertion(Psrdop().prn(1).prn(2).announcing(1), kAssertion);
    ExpectFailedAssertion(Psrdop().prn(1).prn(2).announcing(3), kAssertion);
    ExpectFailedAssertion(Psrdop().prn(1).bodySize(33), kAssertion);
    ExpectFailedAssertion(Psrdop().bodySize(27), kAssertion);
}

TEST(NovatelPSRDOPBDeathTest, fails_the_assertion_at_once_for_any_number_of_PRNs) {
    ExpectFailedAssertion(Psrdop().announcing(4294967295), kAssertion);
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Psrdop().announcing(0x40000000), kAssertion);
}
