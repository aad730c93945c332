#include "hub/http/ConnectionThreads.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

/// Connections that last until the test lets them end.
class ConnectionThreads : public testing::Test {
protected:
    void Open(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_threads.enqueue([this] {
                ++m_open;
                while (!m_isOver) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                --m_open;
            });
        }
    }
    template <class TCondition>
    static bool Await(const TCondition& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return condition();
    }

    std::atomic<bool> m_isCrowded = false;
    std::atomic<bool> m_isOver = false;
    std::atomic<std::size_t> m_open = 0;
    Hub::CConnectionThreads m_threads{m_isCrowded};
};

} // namespace

TEST_F(ConnectionThreads, serve_all_at_once_and_end_with_the_last) {
    Open(20);
    EXPECT_TRUE(Await([this] { return m_open == 20; }));
    EXPECT_FALSE(m_isCrowded);
    m_isOver = true;
    m_threads.shutdown();
    EXPECT_EQ(m_open, 0U);
}

TEST_F(ConnectionThreads, let_one_too_many_wait_and_tell_so) {
    constexpr std::size_t kMost = Hub::CConnectionThreads::kMostConnections;
    Open(kMost);
    EXPECT_TRUE(Await([this] { return m_open == kMost; }));
    EXPECT_FALSE(m_isCrowded);
    std::thread another([this] { Open(1); });
    EXPECT_TRUE(Await([this] { return m_isCrowded.load(); }));
    m_isOver = true;
    another.join();
    EXPECT_FALSE(m_isCrowded);
    m_threads.shutdown();
    EXPECT_EQ(m_open, 0U);
}
