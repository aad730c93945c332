// How the server shares its time: among clients, and over the passes of the loop.

#include "MPIServerTesting.h"

namespace {

class MPISocketServerTurns : public CMPIServerTesting {
protected:
    void SetUp() override { Listen(); }

    static std::string Many(int count, const std::string& method, const std::string& prefix) {
        std::string requests;
        for (int i = 0; i < count; ++i) {
            requests += Notification(method, prefix + std::to_string(i)) + "\n";
        }
        return requests;
    }
    static Lines Numbered(int count, const std::string& prefix) {
        Lines names;
        for (int i = 0; i < count; ++i) {
            names.push_back(prefix + std::to_string(i));
        }
        return names;
    }

    /// The calls of each pass, from the first with one until `count` were made.
    std::vector<std::size_t> CallsPerPass(std::size_t count) {
        std::vector<std::size_t> calls;
        EXPECT_TRUE(m_loop.PassUntil([&] {
            if (!m_calls.empty()) {
                calls.push_back(m_calls.size() - m_before);
            }
            m_before = m_calls.size();
            return m_calls.size() >= count;
        })) << m_calls.size()
            << " calls were made";
        return calls;
    }
    /// One pass, and the calls made in it.
    Lines CallsOfOnePass() {
        m_calls.clear();
        m_loop.Pass();
        return m_calls;
    }
    /// How many passes it takes until the call is made; 20 when it is not made by then.
    int PassesUntil(const std::string& call) {
        int passes = 0;
        while (passes < 20 && std::find(m_calls.begin(), m_calls.end(), call) == m_calls.end()) {
            m_loop.Pass();
            ++passes;
        }
        return passes;
    }
    /// Until the server's end of the connection has something to read.
    void AwaitArrival() {
        for (int i = 0; i < 1000 && !m_loop.IsReady(); ++i) {
            usleep(1000);
        }
        EXPECT_TRUE(m_loop.IsReady());
    }

    /// Where there is something to do already: the loopback delivers sooner than this.
    static void LetArrive() { usleep(3000); }

    std::size_t m_before = 0;
};

} // namespace

TEST_F(MPISocketServerTurns, spends_no_more_of_a_pass_than_the_call_that_reaches_5_ms) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(2));
    const auto client = Connect();
    client->Send(Many(10, "Slow", ""));
    EXPECT_EQ(CallsPerPass(10), (std::vector<std::size_t>{3, 3, 3, 1}));
    EXPECT_EQ(m_calls, Numbered(10, ""));
}

TEST_F(MPISocketServerTurns, goes_on_with_a_long_batch_in_later_passes) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(5));
    const auto client = Connect();
    client->SendLine("[" + Request("1", "Slow", "a") + "," + Request("2", "Slow", "b") + "," +
                     Request("3", "Slow", "c") + "]");
    EXPECT_EQ(CallsPerPass(3), (std::vector<std::size_t>{1, 1, 1}));
    AwaitLines(*client, 1);
    EXPECT_EQ(client->Lines(), Lines{"[" + Result("1", "null") + "," + Result("2", "null") + "," +
                                     Result("3", "null") + "]"});
}

TEST_F(MPISocketServerTurns, goes_on_at_once_while_work_is_left) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(5));
    const auto client = Connect();
    client->Send(Many(2, "Slow", ""));
    EXPECT_EQ(CallsPerPass(1).size(), 1U);
    EXPECT_TRUE(m_loop.IsReady());
}

TEST_F(MPISocketServerTurns, takes_one_request_of_each_client_in_turn) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(1));
    const auto greedy = Connect();
    const auto modest = Connect();
    greedy->Send(Many(3000, "Slow", "g"));
    EXPECT_EQ(CallsPerPass(5).size(), 1U) << "five calls of 1 ms fit a pass";
    modest->SendLine(Notification("Slow", "m0"));
    modest->SendLine(Notification("Slow", "m1"));
    LetArrive();
    Lines calls = CallsOfOnePass();
    ASSERT_EQ(calls.size(), 5U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NE(calls[i].front(), calls[i + 1].front());
    }
    std::erase_if(calls, [](const std::string& call) { return call.front() == 'g'; });
    EXPECT_EQ(calls, (Lines{"m0", "m1"}));
}

TEST_F(MPISocketServerTurns, begins_each_pass_with_the_client_that_is_next) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(5));
    const auto a = Connect();
    const auto b = Connect();
    const auto c = Connect();
    for (const auto& [client, prefix] : {std::pair{&a, "a"}, {&b, "b"}, {&c, "c"}}) {
        (*client)->Send(Many(2, "Slow", prefix));
    }
    LetArrive();
    Lines letters;
    for (int i = 0; i < 6; ++i) {
        const Lines calls = CallsOfOnePass();
        ASSERT_EQ(calls.size(), 1U);
        letters.push_back(calls.front().substr(0, 1));
    }
    EXPECT_EQ(Lines(letters.begin() + 3, letters.end()),
              Lines(letters.begin(), letters.begin() + 3));
    std::sort(letters.begin(), letters.begin() + 3);
    EXPECT_EQ(Lines(letters.begin(), letters.begin() + 3), (Lines{"a", "b", "c"}));
}

TEST_F(MPISocketServerTurns, makes_one_call_a_pass_that_writes_a_setting_and_keeps_the_order) {
    OfferRecording("Write", ECost::settingsWrite);
    OfferRecording("Light", ECost::light);
    const auto client = Connect();
    client->Send(Notification("Write", "w1") + "\n" + Notification("Light", "l1") + "\n" +
                 Notification("Write", "w2") + "\n" + Notification("Light", "l2") + "\n" +
                 Notification("Write", "w3") + "\n");
    AwaitArrival();
    EXPECT_EQ(CallsOfOnePass(), (Lines{"w1", "l1"}));
    EXPECT_EQ(CallsOfOnePass(), (Lines{"w2", "l2"}));
    EXPECT_EQ(CallsOfOnePass(), (Lines{"w3"}));
}

TEST_F(MPISocketServerTurns, makes_one_call_a_pass_that_pauses) {
    OfferRecording("Pause", ECost::pause);
    const auto client = Connect();
    client->Send(Many(3, "Pause", "p"));
    AwaitArrival();
    EXPECT_EQ(CallsOfOnePass(), Lines{"p0"});
    EXPECT_EQ(CallsOfOnePass(), Lines{"p1"});
    EXPECT_EQ(CallsOfOnePass(), Lines{"p2"});
}

TEST_F(MPISocketServerTurns, makes_a_writing_and_a_pausing_call_in_the_same_pass) {
    OfferRecording("Pause", ECost::pause);
    OfferRecording("Write", ECost::settingsWrite);
    const auto client = Connect();
    client->Send(Many(1, "Pause", "p") + Many(2, "Write", "w") + Many(1, "Pause", "q"));
    AwaitArrival();
    EXPECT_EQ(CallsOfOnePass(), (Lines{"p0", "w0"}));
    EXPECT_EQ(CallsOfOnePass(), (Lines{"w1", "q0"}));
}

TEST_F(MPISocketServerTurns, defers_within_a_batch_and_answers_it_whole) {
    OfferRecording("Write", ECost::settingsWrite);
    const auto client = Connect();
    client->SendLine("[" + Request("1", "Write", "a") + "," + Request("2", "Write", "b") + "," +
                     Request("3", "Echo") + "]");
    AwaitArrival();
    EXPECT_EQ(CallsOfOnePass(), Lines{"a"});
    client->Transfer();
    EXPECT_EQ(client->LineCount(), 0U);
    EXPECT_EQ(CallsOfOnePass(), Lines{"b"});
    AwaitLines(*client, 1);
    EXPECT_EQ(client->Lines(), Lines{"[" + Result("1", "null") + "," + Result("2", "null") + "," +
                                     Result("3", "[]") + "]"});
}

TEST_F(MPISocketServerTurns, defers_for_one_client_and_goes_on_with_another) {
    OfferRecording("Write", ECost::settingsWrite);
    OfferRecording("Light", ECost::light);
    const auto writer = Connect();
    const auto reader = Connect();
    writer->Send(Many(5, "Write", "w"));
    AwaitArrival();
    m_loop.Pass();
    reader->Send(Many(4, "Light", "l"));
    LetArrive();
    Lines calls = CallsOfOnePass();
    std::sort(calls.begin(), calls.end());
    EXPECT_EQ(calls, (Lines{"l0", "l1", "l2", "l3", "w1"}));
}

TEST_F(MPISocketServerTurns, lets_no_client_keep_the_settings_for_itself) {
    OfferRecording("Write", ECost::settingsWrite);
    const auto greedy = Connect();
    const auto modest = Connect();
    greedy->Send(Many(100, "Write", "g"));
    AwaitArrival();
    m_loop.Pass();
    modest->SendLine(Notification("Write", "m"));
    LetArrive();
    EXPECT_LE(PassesUntil("m"), 2);
}

TEST_F(MPISocketServerTurns, lets_no_client_keep_the_settings_while_a_third_one_asks_something) {
    OfferRecording("Write", ECost::settingsWrite);
    OfferRecording("Light", ECost::light);
    const auto greedy = Connect();
    const auto modest = Connect();
    const auto third = Connect();
    AnswersTo(*third, Request("1", "Echo") + "\n", 1);
    greedy->Send(Many(100, "Write", "g"));
    third->SendLine(Notification("Light", "l"));
    LetArrive();
    m_loop.Pass();
    modest->SendLine(Notification("Write", "m"));
    int passes = 0;
    while (passes < 10 && std::find(m_calls.begin(), m_calls.end(), "m") == m_calls.end()) {
        third->SendLine(Notification("Light", "l"));
        LetArrive();
        m_loop.Pass();
        ++passes;
    }
    EXPECT_LE(passes, 3) << "every client's turn has come by then";
}

TEST_F(MPISocketServerTurns, reads_no_further_while_requests_wait) {
    OfferRecording("Slow", ECost::light, Core::Time::FromMilliseconds(5));
    const auto client = Connect();
    client->Send(Many(3, "Slow", ""));
    EXPECT_EQ(CallsPerPass(1).size(), 1U);
    const std::size_t held = m_server.HeldBytes();
    client->Send(std::string(15'000, ' '));
    LetArrive();
    m_loop.Pass();
    EXPECT_EQ(m_server.HeldBytes(), held);
}
