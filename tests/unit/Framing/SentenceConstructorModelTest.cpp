// The framers against their literal model: the same results and sentences for any stream, cut in
// any way.
#include "support/FramingComparison.h"
#include "support/StreamMaker.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/// Lengths up to a random power of two, so that single bytes and large chunks are both common.
CChunkLengths RandomLengths(std::mt19937& random) {
    const std::size_t longest = std::size_t{1} << random() % 14;
    return [&random, longest] { return random() % (longest + 1); };
}

CChunkLengths AlwaysLength(std::size_t length) {
    return [length] { return length; };
}

struct SAnswerCounts {
    int completed = 0;
    int rejected = 0;
};

SAnswerCounts CountAnswers(const std::vector<std::uint8_t>& stream) {
    SAnswerCounts counts;
    for (SFramerPair& pair : MakeFramerPairs()) {
        std::vector<std::uint8_t> sentence;
        pair.framer->AddBytes(stream);
        for (int result; (result = pair.framer->GetSentence(sentence)) != 0;) {
            ++(result == 1 ? counts.completed : counts.rejected);
        }
    }
    return counts;
}

class RealCapture : public testing::TestWithParam<const char*> {};

} // namespace

TEST(SentenceConstructorModel, agrees_on_random_streams_under_random_chunks) {
    std::mt19937 random(20250101);
    for (int round = 0; round < 4000; ++round) {
        const auto stream = StreamMaker::RandomStream(random, 1 + random() % 20);
        ASSERT_EQ(CompareFramers(stream, RandomLengths(random), random() % 2 == 0), "")
            << "round " << round;
    }
}

TEST(SentenceConstructorModel, agrees_on_random_streams_byte_by_byte) {
    std::mt19937 random(20250102);
    for (int round = 0; round < 200; ++round) {
        const auto stream = StreamMaker::RandomStream(random, 10);
        ASSERT_EQ(CompareFramers(stream, AlwaysLength(1), true), "") << "round " << round;
    }
}

TEST(SentenceConstructorModel, agrees_on_hostile_streams) {
    std::mt19937 random(20250103);
    for (const StreamMaker::SHostileStream& hostile : StreamMaker::HostileStreams()) {
        const auto stream = StreamMaker::Repeated(hostile.pattern, 30000);
        for (const std::size_t length : {1, 7, 4096, 30000}) {
            EXPECT_EQ(CompareFramers(stream, AlwaysLength(length), true), "") << hostile.name;
        }
        EXPECT_EQ(CompareFramers(stream, RandomLengths(random), false), "") << hostile.name;
    }
}

TEST(SentenceConstructorModel, random_streams_hold_sentences_of_every_fate) {
    std::mt19937 random(20250104);
    const SAnswerCounts counts = CountAnswers(StreamMaker::RandomStream(random, 2000));
    EXPECT_GT(counts.completed, 200);
    EXPECT_GT(counts.rejected, 200);
}

TEST_P(RealCapture, is_framed_as_the_model_frames_it) {
    const auto stream = StreamMaker::ReadCapture(GetParam());
    if (stream.empty()) {
        GTEST_SKIP() << "no captures beside the checkout";
    }
    std::mt19937 random(20250105);
    for (const std::size_t length : {1, 65536}) {
        EXPECT_EQ(CompareFramers(stream, AlwaysLength(length), true), "");
    }
    EXPECT_EQ(CompareFramers(stream, RandomLengths(random), true), "");
}

INSTANTIATE_TEST_SUITE_P(SentenceConstructorModel, RealCapture,
                         testing::Values("rtklib-oemv.gps", "gavlab-OneEach.GPS",
                                         "gavlab-ParsingData.GPS", "gavlab-test2_rcvr2.dat",
                                         "gpsd-isync.nmea"));

TEST(SentenceConstructorModel, a_real_capture_holds_the_sentences_that_were_counted_in_it) {
    const auto stream = StreamMaker::ReadCapture("rtklib-oemv.gps");
    if (stream.empty()) {
        GTEST_SKIP() << "no captures beside the checkout";
    }
    const SAnswerCounts counts = CountAnswers(stream);
    EXPECT_EQ(counts.completed, 319);
    EXPECT_EQ(counts.rejected, 833);
}
