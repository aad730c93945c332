#include "hub/Worker.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Hub::CWorker;

/// A job that lasts until it is let go, which its owner does.
class CHeldJob {
public:
    CWorker::TJob Job() {
        return [this] {
            m_began.set_value();
            m_end.get_future().wait();
        };
    }
    void WaitForBegin() { m_began.get_future().wait(); }
    void LetGo() { m_end.set_value(); }

private:
    std::promise<void> m_began;
    std::promise<void> m_end;
};

} // namespace

TEST(Worker, does_its_jobs_in_their_order_and_all_of_them_before_it_ends) {
    std::vector<int> done;
    std::vector<int> wanted;
    {
        CWorker worker(1000);
        for (int i = 0; i < 500; ++i) {
            EXPECT_TRUE(worker.Post([&done, i] { done.push_back(i); }));
            wanted.push_back(i);
        }
    }
    EXPECT_EQ(done, wanted);
}

TEST(Worker, refuses_and_counts_what_its_queue_has_no_room_for) {
    CHeldJob held;
    int done = 0;
    {
        CWorker worker(3);
        ASSERT_TRUE(worker.Post(held.Job()));
        held.WaitForBegin();
        EXPECT_TRUE(worker.Post([&done] { ++done; }));
        EXPECT_TRUE(worker.Post([&done] { ++done; }));
        EXPECT_FALSE(worker.Post([&done] { done += 100; }));
        EXPECT_FALSE(worker.Post([&done] { done += 100; }));
        EXPECT_EQ(worker.Refused(), 2U);
        held.LetGo();
    }
    EXPECT_EQ(done, 2);
}

TEST(Worker, counts_the_room_by_the_sizes_of_the_jobs) {
    CHeldJob held;
    CWorker worker(10);
    ASSERT_TRUE(worker.Post(held.Job(), 4));
    EXPECT_FALSE(worker.Post([] {}, 7));
    EXPECT_TRUE(worker.Post([] {}, 6));
    EXPECT_FALSE(worker.Post([] {}, 1));
    held.LetGo();
}

TEST(Worker, has_room_again_when_a_job_is_done) {
    CWorker worker(1);
    for (int i = 0; i < 3; ++i) {
        std::promise<void> done;
        while (!worker.Post([&done] { done.set_value(); })) {
            std::this_thread::yield();
        }
        done.get_future().wait();
    }
}

TEST(Worker, drops_what_it_has_no_time_for_at_its_end) {
    CHeldJob held;
    bool isDone = false;
    const auto start = std::chrono::steady_clock::now();
    std::thread later;
    {
        CWorker worker(10, Core::Time::FromMilliseconds(50));
        ASSERT_TRUE(worker.Post(held.Job()));
        ASSERT_TRUE(worker.Post([&isDone] { isDone = true; }));
        held.WaitForBegin();
        later = std::thread([&held] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            held.LetGo();
        });
    }
    later.join();
    EXPECT_FALSE(isDone);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
