// What callers rely on with every framer; shown on the NMEA one, whose sentences are the shortest.
#include "Framing/FramerTesting.h"
#include "Framing/NMEASentenceConstructor.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ByteVector = std::vector<std::uint8_t>;

const std::string kGood = "$A*41\r";
const std::string kBad = "$A*42\r";

ByteVector Chunk(const std::string& text) {
    return SentenceMaker::Bytes(text);
}

} // namespace

TEST(SentenceConstructor, delivers_a_completed_sentence_with_1) {
    CNMEASentenceConstructor framer;
    framer.AddBytes(Chunk(kGood));
    ByteVector out = Chunk("what was there before");
    EXPECT_EQ(framer.GetSentence(out), 1);
    EXPECT_EQ(out, Chunk("$A*41"));
}

TEST(SentenceConstructor, empties_the_output_for_a_rejected_sentence_with_minus_1) {
    CNMEASentenceConstructor framer;
    framer.AddBytes(Chunk(kBad));
    ByteVector out = Chunk("what was there before");
    EXPECT_EQ(framer.GetSentence(out), -1);
    EXPECT_THAT(out, IsEmpty());
}

TEST(SentenceConstructor, leaves_the_output_alone_when_nothing_is_left) {
    CNMEASentenceConstructor framer;
    ByteVector out = Chunk("what was there before");
    EXPECT_EQ(framer.GetSentence(out), 0);
    framer.AddBytes(Chunk("$half a sentence"));
    EXPECT_EQ(framer.GetSentence(out), 0);
    EXPECT_EQ(out, Chunk("what was there before"));
}

TEST(SentenceConstructor, delivers_a_sentence_once) {
    CNMEASentenceConstructor framer;
    framer.AddBytes(Chunk(kGood));
    ByteVector out;
    EXPECT_EQ(framer.GetSentence(out), 1);
    EXPECT_EQ(framer.GetSentence(out), 0);
    EXPECT_EQ(framer.GetSentence(out), 0);
}

TEST(SentenceConstructor, answers_in_the_order_of_the_stream) {
    EXPECT_THAT(Answers<CNMEASentenceConstructor>(kGood + kBad + "noise" + kGood + kBad),
                ElementsAre("$A*41", kRejection, "$A*41", kRejection));
}

TEST(SentenceConstructor, keeps_what_is_unread_for_later_calls) {
    CNMEASentenceConstructor framer;
    ByteVector out;
    framer.AddBytes(Chunk(kGood + kBad));
    EXPECT_EQ(framer.GetSentence(out), 1);
    framer.AddBytes(Chunk(kGood));
    framer.AddBytes(Chunk(kGood));
    EXPECT_EQ(framer.GetSentence(out), -1);
    EXPECT_THAT(Drain(framer), ElementsAre("$A*41", "$A*41"));
}

TEST(SentenceConstructor, does_not_mind_empty_chunks) {
    CNMEASentenceConstructor framer;
    EXPECT_THAT(Feed(framer, ""), IsEmpty());
    EXPECT_THAT(Feed(framer, "$A*4"), IsEmpty());
    EXPECT_THAT(Feed(framer, ""), IsEmpty());
    EXPECT_THAT(Feed(framer, "1\r"), ElementsAre("$A*41"));
}

TEST(SentenceConstructor, reads_many_chunks_that_were_added_before_the_first_call) {
    CNMEASentenceConstructor framer;
    std::vector<std::string> expected;
    for (int i = 0; i < 1000; ++i) {
        framer.AddBytes(Chunk(kGood));
        expected.push_back("$A*41");
    }
    EXPECT_EQ(Drain(framer), expected);
}

TEST(SentenceConstructor, delivers_from_a_backlog_that_keeps_growing) {
    CNMEASentenceConstructor framer;
    ByteVector out;
    for (int i = 0; i < 1000; ++i) {
        const std::string text(1, static_cast<char>('a' + i % 26));
        framer.AddBytes(Chunk(SentenceMaker::NMEA(text) + "\r"));
        framer.AddBytes(Chunk(SentenceMaker::NMEA(text) + "\r"));
        const std::string oldest(1, static_cast<char>('a' + i / 2 % 26));
        ASSERT_EQ(framer.GetSentence(out), 1);
        ASSERT_EQ(Text(out), SentenceMaker::NMEA(oldest));
    }
}
