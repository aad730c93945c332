#include "ctl/Recording.h"

#include "Support/LogSentences.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using Ctl::CBlockSplitter;
using Block = std::pair<std::string, std::string>; ///< seconds since the first block, bytes
using Blocks = std::vector<Block>;

/// A log of this moment, of week 1800.
std::string Log(std::uint32_t milliseconds) {
    const auto bytes = Sentences::Bestpos().week(1800).milliseconds(milliseconds).bytes();
    return std::string(bytes.begin(), bytes.end());
}

std::string Shown(double seconds) {
    return std::to_string(static_cast<long long>(seconds * 1000.0 + 0.5));
}

/// In pieces of so many bytes; each block with its milliseconds since the first one.
Blocks Split(const std::string& stream, std::size_t piece = 1000) {
    std::vector<std::pair<double, std::string>> taken;
    CBlockSplitter splitter([&](Core::UnixTime time, std::string_view block) {
        taken.emplace_back(time.AsSeconds(), std::string(block));
    });
    for (std::size_t at = 0; at < stream.size(); at += piece) {
        splitter.Add(std::string_view(stream).substr(at, piece));
    }
    const bool hasTime = splitter.Finish();
    EXPECT_EQ(hasTime, !taken.empty());
    Blocks blocks;
    for (const auto& [seconds, bytes] : taken) {
        blocks.emplace_back(Shown(seconds - taken.front().first), bytes);
    }
    return blocks;
}

} // namespace

TEST(BlockSplitter, cuts_where_the_time_of_the_logs_changes) {
    const std::string stream = "before" + Log(1000) + Log(1000) + "$GPGGA\r\n" + Log(1050) + "end";
    const Blocks wanted{{"0", "before" + Log(1000) + Log(1000) + "$GPGGA\r\n"},
                        {"50", Log(1050) + "end"}};
    for (const std::size_t piece : {1U, 7U, 100U, 10'000U}) {
        EXPECT_EQ(Split(stream, piece), wanted) << piece;
    }
}

TEST(BlockSplitter, loses_no_byte_of_what_is_no_log) {
    std::string damaged = Log(1000);
    damaged[40] = static_cast<char>(damaged[40] ^ 1);
    const std::string stream = "\xAA\x44\x12" + damaged + Log(2000) + damaged + "\xAA\x44";
    std::string all;
    for (const auto& [time, bytes] : Split(stream, 13)) {
        all += bytes;
    }
    EXPECT_EQ(all, stream);
}

TEST(BlockSplitter, keeps_an_older_log_with_those_before_it) {
    EXPECT_EQ(Split(Log(90'000) + Log(60'000) + Log(90'050)),
              (Blocks{{"0", Log(90'000) + Log(60'000)}, {"50", Log(90'050)}}));
}

TEST(BlockSplitter, goes_on_when_the_receivers_time_has_gone_back) {
    std::string stream = Log(90'000);
    for (std::uint32_t i = 0; i < 300; ++i) {
        stream += Log(1000 + 50 * i);
    }
    const Blocks blocks = Split(stream);
    EXPECT_EQ(blocks[0].first, "0");
    EXPECT_EQ(blocks[1].first, "0");
    EXPECT_EQ(blocks.back().first, Shown(0.05 * (300 - CBlockSplitter::kManyOlder)));
}

TEST(BlockSplitter, hands_out_nothing_without_a_time) {
    EXPECT_EQ(Split("$GPGGA,1*00\r\n"), Blocks{});
}

TEST(BlockSplitter, cuts_a_long_block_into_several_of_the_same_time) {
    const Blocks blocks = Split(Log(1000) + std::string(200'000, 'x'), 5000);
    ASSERT_GE(blocks.size(), 4U);
    for (const auto& [time, bytes] : blocks) {
        EXPECT_EQ(time, "0");
        EXPECT_LE(bytes.size(), CBlockSplitter::kMaxBlock);
    }
}

TEST(BlockSplitter, tells_the_utc_of_the_receivers_time) {
    std::vector<double> times;
    CBlockSplitter splitter(
        [&](Core::UnixTime time, std::string_view) { times.push_back(time.AsSeconds()); });
    splitter.Add(Log(1000) + Log(2250));
    ASSERT_TRUE(splitter.Finish());
    // Week 1800 began on 2014-07-06, 16 leap seconds ahead of UTC.
    EXPECT_EQ(times, (std::vector<double>{1404604785.0, 1404604786.25}));
}
