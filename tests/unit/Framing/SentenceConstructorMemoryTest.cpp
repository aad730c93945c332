// The framers run for months: what has passed through them must leave no trace in memory.
#include "support/FramingComparison.h"
#include "support/StreamMaker.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace {

constexpr std::size_t kChunkSize = 65536;
constexpr int kChunks = 600;
/// Much less than passes through, much more than the framers need for three chunks.
constexpr long kAllowedKiB = 8192;

/// The most memory that this process has ever had.
long PeakKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void Pass(std::vector<SFramerPair>& framers, const std::vector<std::uint8_t>& chunk, int times) {
    std::vector<std::uint8_t> sentence;
    for (int i = 0; i < times; ++i) {
        for (SFramerPair& pair : framers) {
            pair.framer->AddBytes(chunk);
            while (pair.framer->GetSentence(sentence) != 0) {
            }
        }
    }
}

/// How much the peak has grown while the chunk has passed so often.
long GrowthKiB(const std::vector<std::uint8_t>& chunk) {
    std::vector<SFramerPair> framers = MakeFramerPairs();
    Pass(framers, chunk, 3);
    const long before = PeakKiB();
    Pass(framers, chunk, kChunks);
    return PeakKiB() - before;
}

} // namespace

TEST(SentenceConstructorMemory, does_not_grow_while_hunting) {
    EXPECT_LT(GrowthKiB(std::vector<std::uint8_t>(kChunkSize, 'x')), kAllowedKiB);
}

TEST(SentenceConstructorMemory, does_not_grow_with_the_sentences_that_were_delivered) {
    auto chunk = StreamMaker::ReceiverStream(kChunkSize);
    EXPECT_LT(GrowthKiB(chunk), kAllowedKiB);
    // Cut in the middle of a sentence, so that something is always left over.
    chunk.resize(chunk.size() - 20);
    EXPECT_LT(GrowthKiB(chunk), kAllowedKiB);
}

TEST(SentenceConstructorMemory, does_not_grow_with_sentences_that_never_end) {
    EXPECT_LT(GrowthKiB(StreamMaker::Repeated("#", kChunkSize)), kAllowedKiB);
    EXPECT_LT(GrowthKiB(StreamMaker::Repeated("$", kChunkSize)), kAllowedKiB);
    EXPECT_LT(GrowthKiB(StreamMaker::Repeated("\xAA", kChunkSize)), kAllowedKiB);
    EXPECT_LT(
        GrowthKiB(StreamMaker::Repeated("\xAA\x44\x12\xFF\xFF\xFF\xFF\xFF\xFF\xFF", kChunkSize)),
        kAllowedKiB);
}
