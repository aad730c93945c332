// The escape by which a port is brought back.
#include "sim/EscapeSequence.h"

#include <gmock/gmock.h>

namespace {

/// Bytes, and the milliseconds after which they come.
struct SHeard {
    std::string_view bytes;
    Sim::Milliseconds after;
};

/// Whether the last of them completes the escape, and none before does.
bool Completes(const std::vector<SHeard>& all) {
    Sim::CEscapeSequence escape;
    Sim::Milliseconds now = 1'000'000;
    for (std::size_t number = 0; number < all.size(); ++number) {
        now += all[number].after;
        const bool isComplete = escape.Hear(all[number].bytes, now);
        if (isComplete || number + 1 == all.size()) {
            return isComplete && number + 1 == all.size();
        }
    }
    return false;
}

} // namespace

TEST(SimEscapeSequence, is_two_of_three_plus_signs_with_silence_between) {
    EXPECT_TRUE(Completes({{"+++", 0}, {"+++", 1000}}));
    EXPECT_TRUE(Completes({{"+++", 0}, {"+++\r\n", 1500}}));
    EXPECT_TRUE(Completes({{"+++\r\n", 0}, {"+++\r\n", 60'000}}));
}

TEST(SimEscapeSequence, may_come_in_pieces) {
    EXPECT_TRUE(Completes({{"+", 0}, {"++", 10}, {"++", 1500}, {"+", 10}}));
}

TEST(SimEscapeSequence, needs_the_silence) {
    EXPECT_FALSE(Completes({{"+++", 0}, {"+++", 999}}));
    EXPECT_FALSE(Completes({{"++++++", 0}}));
    EXPECT_FALSE(Completes({{"x", 0}, {"+++", 500}, {"+++", 1500}}));
}

TEST(SimEscapeSequence, is_nothing_else) {
    EXPECT_FALSE(Completes({{"+++", 0}, {"++", 1500}}));
    EXPECT_FALSE(Completes({{"+++", 0}, {"++++", 1500}}));
    EXPECT_FALSE(Completes({{"+++", 0}, {"log version\r\n", 1500}, {"+++", 1500}}));
    EXPECT_FALSE(Completes({{"+++", 0}, {"+++ and a long line of something else", 1500}}));
}

TEST(SimEscapeSequence, can_be_given_again) {
    Sim::CEscapeSequence escape;
    escape.Hear("+++", 10'000);
    EXPECT_TRUE(escape.Hear("+++", 12'000));
    EXPECT_FALSE(escape.Hear("\r\n", 12'010)) << "the end of the line belongs to it";
    EXPECT_FALSE(escape.Hear("+++", 14'000));
    EXPECT_TRUE(escape.Hear("+++", 16'000));
}
