#include "hub/history/Reader.h"

#include "HistoryTesting.h"
#include "Support/TemporaryFolder.h"
#include "hub/history/Store.h"
#include "platform/Time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace HistoryTesting;
using testing::HasSubstr;

class HistoryReader : public testing::Test {
protected:
    template <class... TRows>
    void Given(const TRows&... row) {
        m_store.Write(Rows(row...));
    }
    json Positions(const Hub::TQuery& query) { return Answer(m_path, "positions", query); }
    Hub::SReply Reply(const std::string& what, const Hub::TQuery& query) {
        return Hub::CHistoryReader(m_path).Answer(what, query);
    }
    /// What a question that is refused is told.
    std::string Refusal(const std::string& what, const Hub::TQuery& query) {
        const Hub::SReply reply = Reply(what, query);
        return reply.status == 400 ? reply.body : std::to_string(reply.status);
    }

    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("history.db");
    Hub::CHistoryStore m_store{m_path, 36500, 100};
};

} // namespace

TEST_F(HistoryReader, gives_positions_as_columns) {
    Given(Located(kStart + 0.25), Unlocated(kStart + 1.0));
    EXPECT_EQ(Reply("positions", {{"from", "1763749600"}, {"to", "1763749610"}}).body,
              R"({"from":1763749600.0,"to":1763749610.0,"step":1.0,)"
              R"("time":[1763749600.25,1763749601.0],"latitude":[52.1,null],)"
              R"("longitude":[5.2,null],"height":[48.9,null],"quality":[3,0],"satellites":[14,3],)"
              R"("sigmaHorizontal":[0.014,null],"sigmaUp":[0.02,null],)"
              R"("differentialAge":[1.0,null],"cn0":[45.5,null]})");
}

TEST_F(HistoryReader, gives_the_last_hour_unless_told_otherwise) {
    const double now = Core::UnixTime::Now().AsSeconds();
    Given(Located(now - 3700.0), Located(now - 3500.0), Located(now));
    const json positions = Positions({});
    EXPECT_EQ(positions.at("time"), json({now - 3500.0, now}));
    EXPECT_NEAR(positions.at("to"), now, 60.0);
    EXPECT_EQ(positions.at("to").get<double>() - positions.at("from").get<double>(), 3600.0);
    EXPECT_EQ(positions.at("step"), 4.0); // the whole seconds of a thousandth of it
}

TEST_F(HistoryReader, gives_the_hour_before_an_end) {
    Given(Located(kStart), Located(kStart + 3600.0), Located(kStart + 3601.0));
    EXPECT_EQ(Positions({{"to", "1763753200"}}).at("time"), json({kStart, kStart + 3600.0}));
}

TEST_F(HistoryReader, tells_the_worst_of_a_step_with_its_first_position) {
    auto poor = Located(kStart + 1);
    poor.quality = 1;
    poor.sigmaHorizontal = 3.0;
    poor.latitude = 60.0;
    auto tall = Located(kStart + 2);
    tall.sigmaUp = 9.0;
    Given(Located(kStart), poor, tall, Located(kStart + 3), Located(kStart + 10));
    const json positions =
        Positions({{"from", "1763749600"}, {"to", "1763749620"}, {"points", "2"}});
    EXPECT_EQ(positions.at("step"), 10.0);
    EXPECT_EQ(positions.at("time"), json({kStart, kStart + 10}));
    EXPECT_EQ(positions.at("latitude"), json({52.1, 52.1}));
    EXPECT_EQ(positions.at("quality"), json({1, 3}));
    EXPECT_EQ(positions.at("sigmaHorizontal"), json({3.0, 0.014}));
    EXPECT_EQ(positions.at("sigmaUp"), json({9.0, 0.02}));
}

TEST_F(HistoryReader, tells_of_a_gap_within_a_step_by_its_quality) {
    Given(Unlocated(kStart), Located(kStart + 1), Unlocated(kStart + 2));
    const json positions =
        Positions({{"from", "1763749600"}, {"to", "1763749610"}, {"points", "1"}});
    EXPECT_EQ(positions.at("time"), json({kStart + 1}));
    EXPECT_EQ(positions.at("latitude"), json({52.1}));
    EXPECT_EQ(positions.at("quality"), json({0}));
}

TEST_F(HistoryReader, makes_long_steps_of_whole_minutes) {
    // kStart is 40 s after a full minute.
    auto poor = Located(kStart + 30);
    poor.sigmaHorizontal = 3.0;
    poor.quality = 1;
    Given(Unlocated(kStart + 20), Unlocated(kStart + 25), Located(kStart + 79.5));
    Given(Located(kStart + 25.5), poor, Located(kStart + 80));
    const json positions =
        Positions({{"from", "1763749500"}, {"to", "1763749800"}, {"points", "5"}});
    EXPECT_EQ(positions.at("step"), 60.0);
    EXPECT_EQ(positions.at("time"), json({kStart + 25.5, kStart + 80}));
    EXPECT_EQ(positions.at("quality"), json({0, 3}));
    EXPECT_EQ(positions.at("sigmaHorizontal"), json({3.0, 0.014}));
    EXPECT_EQ(positions.at("latitude"), json({52.1, 52.1}));
}

TEST_F(HistoryReader, never_gives_more_points_than_were_asked_for) {
    Hub::SHistoryRows rows;
    for (int i = 0; i <= 1000; ++i) {
        rows.Add(Located(kStart + i));
    }
    m_store.Write(rows);
    for (const int points : {1, 2, 3, 7, 10, 333, 500, 999, 1000}) {
        for (const char* const to : {"1763750600", "1763750599.5", "1763750111"}) {
            const json positions =
                Positions({{"from", "1763749600"}, {"to", to}, {"points", std::to_string(points)}});
            EXPECT_LE(positions.at("time").size(), static_cast<std::size_t>(points)) << to;
            // Never less than half of them either, since a step is of whole seconds.
            EXPECT_GE(positions.at("time").size() * 2, std::min<std::size_t>(points, 512)) << to;
        }
    }
}

TEST_F(HistoryReader, gives_events_newest_first) {
    Given(Event(kStart, "first"), Event(kStart, "second"),
          Event(kStart + 1, "third", Hub::EEventLevel::error));
    EXPECT_EQ(Reply("events", {{"limit", "2"}}).body,
              R"({"events":[{"time":1763749601.0,"level":"error","name":"port","text":"third"},)"
              R"({"time":1763749600.0,"level":"warning","name":"port","text":"second"}]})");
}

TEST_F(HistoryReader, gives_diagnostics_newest_first) {
    Given(Diagnostic(kStart, true, 5.0), Diagnostic(kStart + 1, false));
    EXPECT_EQ(Reply("diagnostics", {}).body,
              R"({"diagnostics":[{"time":1763749601.0,"name":"CPositionManager","code":79141,)"
              R"("sub":2,"isRaised":false,"value":null},)"
              R"({"time":1763749600.0,"name":"CPositionManager","code":79141,"sub":2,)"
              R"("isRaised":true,"value":5.0}]})");
}

TEST_F(HistoryReader, gives_the_values_of_statuses_newest_first) {
    auto other = Status(kStart + 2, "a", "3");
    other.name = "other";
    Given(Status(kStart, "a", "1"), Status(kStart + 1, "b", "2"), other);
    EXPECT_EQ(Reply("statuses", {{"name", "port"}, {"key", "a"}}).body,
              R"({"statuses":[{"time":1763749600.0,"name":"port","key":"a","value":"1"}]})");
    EXPECT_EQ(Column(m_path, "statuses", "value"), json({"3", "2", "1"}));
    EXPECT_EQ(Column(m_path, "statuses", "value", {{"name", "port"}}), json({"2", "1"}));
    EXPECT_EQ(Column(m_path, "statuses", "value", {{"key", "a"}}), json({"3", "1"}));
    EXPECT_EQ(Column(m_path, "statuses", "value", {{"key", "none"}}), json::array());
    EXPECT_EQ(Column(m_path, "statuses", "value", {{"limit", "1"}}), json({"3"}));
}

TEST_F(HistoryReader, gives_what_lies_between_two_moments_themselves_included) {
    for (int i = 0; i < 5; ++i) {
        Given(Event(kStart + i, std::to_string(i)), Diagnostic(kStart + i, i % 2 == 0),
              Status(kStart + i, "a", std::to_string(i)), Located(kStart + i));
    }
    const Hub::TQuery query{{"from", "1763749601"}, {"to", "1763749603"}};
    EXPECT_EQ(Column(m_path, "events", "text", query), json({"3", "2", "1"}));
    EXPECT_EQ(Column(m_path, "diagnostics", "isRaised", query), json({false, true, false}));
    EXPECT_EQ(Column(m_path, "statuses", "value", query), json({"3", "2", "1"}));
    EXPECT_EQ(Positions(query).at("time"), json({kStart + 1, kStart + 2, kStart + 3}));
    EXPECT_EQ(Column(m_path, "events", "text", {{"from", "1763749603.5"}}), json({"4"}));
    EXPECT_EQ(Column(m_path, "events", "text", {{"to", "1763749600.5"}}), json({"0"}));
}

TEST_F(HistoryReader, gives_a_hundred_unless_told_otherwise) {
    Hub::SHistoryRows rows;
    for (int i = 0; i < 2000; ++i) {
        rows.Add(Event(kStart + i, "x"));
    }
    m_store.Write(rows);
    EXPECT_EQ(Column(m_path, "events", "time").size(), 100U);
    EXPECT_EQ(Column(m_path, "events", "time", {{"limit", "1000"}}).size(), 1000U);
}

TEST_F(HistoryReader, refuses_arguments_that_are_wrong) {
    EXPECT_EQ(Refusal("positions", {{"from", "yesterday"}}),
              "Wrong argument: 'from' is no number from -1000000000000 to 1000000000000: "
              "'yesterday'.\n");
    EXPECT_EQ(Refusal("positions", {{"points", "0"}}),
              "Wrong argument: 'points' is no number from 1 to 5000: '0'.\n");
    EXPECT_EQ(Refusal("events", {{"limit", "1001"}}),
              "Wrong argument: 'limit' is no number from 1 to 1000: '1001'.\n");
    EXPECT_EQ(Refusal("events", {{"from", "2"}, {"to", "1"}}),
              "Wrong argument: 'from' is later than 'to'.\n");
    EXPECT_EQ(Refusal("events", {{"points", "5"}}),
              "Wrong argument: there is no argument 'points' of events.\n");
    EXPECT_EQ(Refusal("events", {{"from", "1"}, {"from", "2"}}),
              "Wrong argument: 'from' is there more than once.\n");
    for (const char* const number : {"", " 5", "5 ", "0x5", "nan", "inf", "1e13", "5;", "--5"}) {
        EXPECT_THAT(Refusal("events", {{"to", number}}), HasSubstr("Wrong argument: 'to' is no"))
            << number;
        EXPECT_THAT(Refusal("events", {{"limit", number}}),
                    HasSubstr("Wrong argument: 'limit' is no"))
            << number;
    }
    EXPECT_THAT(Refusal("positions", {{"points", "5001"}}), HasSubstr("'5001'"));
    EXPECT_THAT(Refusal("diagnostics", {{"name", "x"}}), HasSubstr("no argument 'name'"));
}

TEST_F(HistoryReader, takes_the_limits_of_its_arguments) {
    Given(Event(kStart, "x"), Located(kStart));
    EXPECT_EQ(Positions({{"from", "-1e12"}, {"to", "1e12"}, {"points", "5000"}}).at("time"),
              json({kStart}));
    EXPECT_EQ(Positions({{"from", "5"}, {"to", "5"}, {"points", "1"}}).at("time"), json::array());
    EXPECT_EQ(Column(m_path, "events", "text", {{"limit", "1"}, {"from", "-1e12"}, {"to", "1e12"}}),
              json({"x"}));
}

TEST_F(HistoryReader, knows_no_other_question) {
    EXPECT_EQ(Reply("cats", {}).status, 404);
    EXPECT_EQ(Reply("cats", {}).body, "There is no history of 'cats'.\n");
}

TEST_F(HistoryReader, says_when_there_is_no_database_and_finds_it_once_there_is) {
    Hub::CHistoryReader reader(m_path);
    EXPECT_EQ(reader.Answer("events", {}).status, 503);
    EXPECT_EQ(reader.Answer("events", {}).body,
              "The history cannot be read now: unable to open database file.\n");
    Given(Event(kStart, "x"));
    EXPECT_EQ(reader.Answer("events", {}).status, 200);
}

TEST_F(HistoryReader, follows_to_the_database_in_place_of_one_that_was_removed) {
    Hub::CHistoryReader reader(m_path);
    Given(Event(kStart, "old"));
    EXPECT_THAT(reader.Answer("events", {}).body, HasSubstr("old"));
    ASSERT_EQ(std::remove(m_path.c_str()), 0);
    Given(Event(kStart, "new"));
    EXPECT_EQ(json::parse(reader.Answer("events", {}).body).at("events").size(), 1U);
}

TEST_F(HistoryReader, never_writes) {
    Given(Event(kStart, "x"));
    Hub::CDatabase database;
    ASSERT_EQ(database.Open(m_path, Hub::CDatabase::EAccess::read), "");
    EXPECT_FALSE(database.Execute("DELETE FROM event"));
}

TEST_F(HistoryReader, replaces_bytes_that_are_no_text) {
    Given(Event(kStart, "a\xFF"
                        "b"));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"a\xEF\xBF\xBD"
                                                      "b"}));
}

TEST_F(HistoryReader, answers_several_threads_while_rows_are_added) {
    Given(Located(kStart));
    Hub::CHistoryReader reader(m_path);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 50; ++j) {
                wrong += reader.Answer("events", {}).status == 200 ? 0 : 1;
                wrong += reader.Answer("positions", {}).status == 200 ? 0 : 1;
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        Given(Event(kStart + i, "x"), Located(kStart + i));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
