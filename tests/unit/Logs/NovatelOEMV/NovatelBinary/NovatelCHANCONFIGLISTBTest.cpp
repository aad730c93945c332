#include "Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelCHANCONFIGLISTB;
using Sentences::Chanconfiglist;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const char* const kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB:52: "
    "Novatel::CNovatelCHANCONFIGLIST::SChannelConfigSet "
    "Novatel::CNovatelCHANCONFIGLISTB::ParseConfigSet(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&, unsigned int) const: Assertion `sentenceData.size() >= "
    "(set.number_signals * 8) + startIndex + 4' failed.";

Chanconfiglist Example() {
    return Chanconfiglist()
        .inUse(0x81000002)
        .set({{14, 0x82000000}, {2, 4}})
        .set({})
        .set({{0x83000008, 0}, {6, 10}, {1, 9}});
}

void ExpectExample(const CNovatelCHANCONFIGLISTB& log) {
    EXPECT_EQ(log.GetSetInUse(), 0x81000002U);
    ASSERT_THAT(log.GetSets(), SizeIs(3));
    const auto& first = log.GetSets()[0];
    EXPECT_EQ(first.number_signals, 2U);
    ASSERT_THAT(first.signals, SizeIs(2));
    EXPECT_EQ(first.signals[0].numberOfChannels, 14U);
    EXPECT_EQ(first.signals[0].signalType, 0x82000000U);
    EXPECT_EQ(first.signals[1].numberOfChannels, 2U);
    EXPECT_EQ(first.signals[1].signalType, 4U);
    EXPECT_EQ(log.GetSets()[1].number_signals, 0U);
    EXPECT_THAT(log.GetSets()[1].signals, IsEmpty());
    const auto& third = log.GetSets()[2];
    EXPECT_EQ(third.number_signals, 3U);
    ASSERT_THAT(third.signals, SizeIs(3));
    EXPECT_EQ(third.signals[0].numberOfChannels, 0x83000008U);
    EXPECT_EQ(third.signals[2].signalType, 9U);
}

} // namespace

TEST(NovatelCHANCONFIGLISTB, decodes_sets_of_different_lengths_one_after_another) {
    ExpectExample(CNovatelCHANCONFIGLISTB(Example()));
}

TEST(NovatelCHANCONFIGLISTB, decodes_every_set_behind_a_long_header) {
    ExpectExample(CNovatelCHANCONFIGLISTB(Example().headerLength(32)));
}

TEST(NovatelCHANCONFIGLISTB, accepts_no_sets) {
    EXPECT_THAT(CNovatelCHANCONFIGLISTB(Chanconfiglist()).GetSets(), IsEmpty());
}

TEST(NovatelCHANCONFIGLISTB, ignores_what_follows_the_announced_sets) {
    EXPECT_THAT(CNovatelCHANCONFIGLISTB(Example().announcing(1)).GetSets(), SizeIs(1));
}

TEST(NovatelCHANCONFIGLISTB, has_no_sets_when_it_ends_before_their_number) {
    const Bytes::Sentence whole = Example();
    for (std::size_t size = 0; size < 28 + 8; ++size) {
        const CNovatelCHANCONFIGLISTB log(Bytes::Sentence(whole.data(), whole.data() + size));
        EXPECT_THAT(log.GetSets(), IsEmpty()) << size;
        EXPECT_EQ(log.GetSetInUse(), size >= 32 ? 0x81000002U : 0U) << size;
    }
}

TEST(NovatelCHANCONFIGLISTB, lets_a_set_reach_into_the_four_bytes_of_the_CRC) {
    const CNovatelCHANCONFIGLISTB log(Chanconfiglist().set({{1, 2}}).bodySize(8 + 4 + 4));
    ASSERT_THAT(log.GetSets(), SizeIs(1));
    EXPECT_EQ(log.GetSets()[0].signals.at(0).numberOfChannels, 1U);
}

TEST(NovatelCHANCONFIGLISTB, accepts_as_many_empty_sets_as_there_is_room_for) {
    Chanconfiglist log;
    for (int i = 0; i < 20; ++i) {
        log.set({});
    }
    Bytes::Sentence sentence = log;
    sentence.resize(sentence.size() - 4); // nothing stands behind the last set
    EXPECT_THAT(CNovatelCHANCONFIGLISTB(sentence).GetSets(), SizeIs(20));
}

TEST(NovatelCHANCONFIGLISTBDeathTest, fails_an_assertion_when_a_set_passes_the_sentence_s_end) {
    ExpectFailedAssertion(Chanconfiglist().set({{1, 2}}).bodySize(8 + 4 + 3), kAssertion);
    ExpectFailedAssertion(Chanconfiglist().set({}).set({{1, 2}, {3, 4}}).bodySize(8 + 4 + 4 + 8),
                          kAssertion);
}

TEST(NovatelCHANCONFIGLISTBDeathTest,
     fails_the_assertion_when_there_are_fewer_sets_than_announced) {
    // The CRC's bytes are taken for one more set, of an absurd size.
    ExpectFailedAssertion(Chanconfiglist().set({{1, 2}}).announcing(2), kAssertion);
    ExpectFailedAssertion(Chanconfiglist().set({{1, 2}}).announcing(3), kAssertion);
}

TEST(NovatelCHANCONFIGLISTBDeathTest, fails_the_assertion_at_once_for_any_number_of_sets) {
    ExpectFailedAssertion(Example().announcing(4294967295), kAssertion);
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Example().announcing(0x40000000), kAssertion);
}

TEST(NovatelCHANCONFIGLISTBDeathTest, fails_the_assertion_at_once_for_any_number_of_signals) {
    ExpectFailedAssertion(Chanconfiglist().set({}).u32(8, 4294967295), kAssertion);
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Chanconfiglist().set({}).u32(8, 0x20000000), kAssertion);
}
