#include "ctl/WaitingNotice.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>

using namespace Ctl;

TEST(WaitingNotice, says_nothing_when_it_ends_in_time) {
    std::atomic<int> told = 0;
    {
        const CWaitingNotice notice([&] { ++told; });
    }
    EXPECT_EQ(told, 0);
}

TEST(WaitingNotice, tells_once_after_a_second) {
    const auto start = std::chrono::steady_clock::now();
    std::atomic<int> told = 0;
    {
        const CWaitingNotice notice([&] { ++told; });
        for (int i = 0; i < 1000 && told == 0; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_EQ(told, 1);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    }
    EXPECT_EQ(told, 1);
}
