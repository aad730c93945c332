#include "hub/http/Frames.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

using Hub::CFrames;
using std::chrono::milliseconds;

constexpr milliseconds kLong{10'000};

} // namespace

TEST(Frames, are_empty_before_the_first) {
    const CFrames frames;
    for (const auto frame : {CFrames::live, CFrames::panel, CFrames::metrics, CFrames::health}) {
        ASSERT_NE(frames.Get(frame), nullptr);
        EXPECT_EQ(*frames.Get(frame), "");
    }
}

TEST(Frames, hand_out_the_last_text_of_each) {
    CFrames frames;
    frames.Set(CFrames::live, "a");
    frames.Set(CFrames::live, "b");
    frames.Set(CFrames::metrics, "c");
    EXPECT_EQ(*frames.Get(CFrames::live), "b");
    EXPECT_EQ(*frames.Get(CFrames::metrics), "c");
    EXPECT_EQ(*frames.Get(CFrames::panel), "");
}

TEST(Frames, keep_a_text_as_long_as_someone_holds_it) {
    CFrames frames;
    frames.Set(CFrames::live, "a");
    const CFrames::TText held = frames.Get(CFrames::live);
    frames.Set(CFrames::live, "b");
    EXPECT_EQ(*held, "a");
}

TEST(Frames, count_those_that_a_stream_shows) {
    CFrames frames;
    frames.Set(CFrames::live, "");
    frames.Set(CFrames::live, "");
    frames.Set(CFrames::panel, "");
    frames.Set(CFrames::metrics, "");
    frames.Set(CFrames::health, "");
    EXPECT_EQ(frames.Numbers(), (CFrames::SNumbers{2, 1}));
}

TEST(Frames, are_waited_for_until_there_is_another) {
    CFrames frames;
    std::thread setter([&] {
        std::this_thread::sleep_for(milliseconds(20));
        frames.Set(CFrames::metrics, ""); // which wakes nobody
        frames.Set(CFrames::panel, "");
    });
    EXPECT_EQ(frames.WaitForNew({}, kLong), (CFrames::SNumbers{0, 1}));
    setter.join();
}

TEST(Frames, are_not_waited_for_when_there_is_another_already) {
    CFrames frames;
    frames.Set(CFrames::live, "");
    EXPECT_EQ(frames.WaitForNew({}, kLong), (CFrames::SNumbers{1, 0}));
}

TEST(Frames, are_waited_for_no_longer_than_wanted) {
    const CFrames frames;
    EXPECT_EQ(frames.WaitForNew({}, milliseconds(10)), CFrames::SNumbers());
}

TEST(Frames, are_waited_for_no_more_at_the_end) {
    CFrames frames;
    EXPECT_FALSE(frames.HasEnded());
    std::thread ender([&] {
        std::this_thread::sleep_for(milliseconds(20));
        frames.End();
    });
    frames.WaitForNew({}, kLong);
    EXPECT_TRUE(frames.HasEnded());
    ender.join();
}

TEST(Frames, know_how_long_ago_one_was_made) {
    CFrames frames;
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_GE(frames.Age(), 0.05);
    frames.Set(CFrames::health, "");
    EXPECT_LT(frames.Age(), 0.05);
}
