#include "hub/history/History.h"

#include "HistoryTesting.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace HistoryTesting;
using Hub::CHistory;

constexpr double kEarthRadius = 6'378'137.0; // of the equator (WGS-84)

/// On the equator, at longitude 90 degrees, so many metres high.
Hub::SSolution Solution(double time, double height = 0.0) {
    Hub::SSolution solution;
    solution.name = "CPositionAPI";
    solution.time = time;
    solution.data.y = kEarthRadius + height;
    solution.data.standardDeviationX = 3.0; // east there is -X, north is Z
    solution.data.standardDeviationY = 2.0;
    solution.data.standardDeviationZ = 4.0;
    solution.data.positionQuality = 2;
    solution.data.differentialAge = 1.5;
    solution.data.satellites = {9, 5, 0};
    return solution;
}

Hub::SSolution Nowhere(double time) {
    Hub::SSolution solution = Solution(time);
    solution.data.positionQuality = 0;
    return solution;
}

Hub::SSky Sky(double time, std::vector<std::optional<double>> channels) {
    Hub::SSky sky;
    sky.time = time;
    for (const auto& cn0 : channels) {
        sky.channels.push_back({.prn = 7, .word1 = 0, .word2 = 0, .cn0 = cn0});
    }
    return sky;
}

class History : public testing::Test {
protected:
    template <class... TMessages>
    void Tell(const TMessages&... message) {
        (m_history->NewMessage(message), ...);
    }

    /// Ends the history, which writes what is left, and asks for its positions.
    json Positions() {
        m_history.reset();
        return Answer(m_path, "positions",
                      {{"from", "1763749600"}, {"to", "1763749660"}, {"points", "60"}});
    }

    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("history.db");
    CFakeClock m_clock;
    std::optional<CHistory> m_history{std::in_place, m_path, 36500, 100};
};

} // namespace

TEST_F(History, keeps_the_first_position_of_each_second) {
    for (int i = 0; i < 40; ++i) {
        Tell(Solution(kStart + 0.05 * i, i));
    }
    const json positions = Positions();
    EXPECT_EQ(positions.at("time"), json({kStart, kStart + 1.0}));
    ASSERT_EQ(positions.at("height").size(), 2U);
    EXPECT_NEAR(positions.at("height")[0], 0.0, 1e-6);
    EXPECT_NEAR(positions.at("height")[1], 20.0, 1e-6);
}

TEST_F(History, keeps_what_a_solution_tells) {
    Tell(Solution(kStart, 100.0));
    const json positions = Positions();
    EXPECT_NEAR(positions.at("latitude")[0], 0.0, 1e-9);
    EXPECT_NEAR(positions.at("longitude")[0], 90.0, 1e-9);
    EXPECT_NEAR(positions.at("height")[0], 100.0, 1e-6);
    EXPECT_EQ(positions.at("quality"), json({2}));
    EXPECT_EQ(positions.at("satellites"), json({14}));
    EXPECT_NEAR(positions.at("sigmaHorizontal")[0], 5.0, 1e-9); // of 3 and 4
    EXPECT_NEAR(positions.at("sigmaUp")[0], 2.0, 1e-9);
    EXPECT_EQ(positions.at("differentialAge"), json({1.5}));
}

TEST_F(History, keeps_a_second_without_a_position_as_such) {
    Tell(Nowhere(kStart), Nowhere(kStart + 0.5), Nowhere(kStart + 1.0), Solution(kStart + 1.5),
         Nowhere(kStart + 1.9));
    const json positions = Positions();
    EXPECT_EQ(positions.at("time"), json({kStart, kStart + 1.5}));
    EXPECT_EQ(positions.at("quality"), json({0, 2}));
    EXPECT_EQ(positions.at("latitude")[0], nullptr);
    EXPECT_EQ(positions.at("sigmaHorizontal")[0], nullptr);
}

TEST_F(History, gives_a_position_the_mean_strength_of_what_is_tracked) {
    Tell(Solution(kStart));
    Tell(Sky(kStart + 0.5, {47.0, 38.0, 0.0, std::nullopt}), Solution(kStart + 1.0));
    Tell(Solution(kStart + 10.0), Solution(kStart + 11.0));
    Tell(Sky(kStart + 12.0, {std::nullopt}), Solution(kStart + 12.0));
    const json positions = Positions();
    EXPECT_EQ(positions.at("cn0"), json({nullptr, 42.5, 42.5, nullptr, nullptr}));
}

TEST_F(History, keeps_every_event) {
    Tell(Event(kStart, "same"), Event(kStart, "same"),
         Event(kStart + 1.0, "worse", Hub::EEventLevel::error));
    m_history.reset();
    EXPECT_EQ(Column(m_path, "events", "text"), json({"worse", "same", "same"}));
    EXPECT_EQ(Column(m_path, "events", "level"), json({"error", "warning", "warning"}));
}

TEST_F(History, keeps_the_changes_of_diagnostics) {
    Tell(Diagnostic(kStart, false));
    for (int i = 1; i < 100; ++i) {
        Tell(Diagnostic(kStart + i, i % 50 < 25));
    }
    m_history.reset();
    EXPECT_EQ(Column(m_path, "diagnostics", "time"),
              json({kStart + 75, kStart + 50, kStart + 25, kStart + 1}));
}

TEST_F(History, keeps_a_status_that_changes_all_the_time_once_in_ten_seconds) {
    for (int i = 0; i < 250; ++i) {
        Tell(Status(kStart + 0.1 * i, "counter", std::to_string(i)));
        m_history->EndPass();
        m_clock.Advance(Core::Time::FromMilliseconds(100));
    }
    m_history.reset();
    // At its first pass, and from then on with the pass in each second when ten are over.
    EXPECT_EQ(Column(m_path, "statuses", "value"), json({"249", "200", "100", "0"}));
}

TEST_F(History, writes_at_most_a_second_after_it_was_told) {
    Tell(Event(kStart, "first"));
    m_history->EndPass();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const auto count = [&] {
        const json answer = Answer(m_path, "events");
        return answer.is_null() ? 0 : answer.at("events").size();
    };
    while (count() < 1 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(count(), 1U);
}

TEST_F(History, drops_and_counts_what_is_told_too_quickly) {
    testing::internal::CaptureStderr();
    for (int i = 0; i < 30; ++i) {
        Tell(Event(kStart + i, std::string(100'000, 'x')));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The history: more is told in a second than it takes; some of it is left out\n");
    const std::uint64_t dropped = m_history->Dropped();
    EXPECT_GE(dropped, 8U); // 2 MiB of 3,000,000 bytes
    EXPECT_LE(dropped, 9U);
    m_history.reset();
    EXPECT_EQ(Column(m_path, "events", "time").size(), 30U - dropped);
}

TEST_F(History, passes_over_a_time_that_no_clock_shows) {
    Tell(Event(1e300, "never"), Event(kStart, "now"));
    Tell(Solution(-1e300), Solution(kStart));
    EXPECT_EQ(Positions().at("time"), json({kStart}));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"now"}));
}
