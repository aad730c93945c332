#include "hub/history/Store.h"

#include "HistoryTesting.h"
#include "Support/TemporaryFolder.h"
#include "platform/Time.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace HistoryTesting;
using Hub::CHistoryStore;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kDays = 36500;

class HistoryStore : public testing::Test {
protected:
    CHistoryStore Store(int megabytes = 512) { return CHistoryStore(m_path, kDays, megabytes); }

    std::string ReadFile(const std::string& path) const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Of the database and of what SQLite keeps beside it.
    std::uintmax_t Bytes() const {
        std::uintmax_t bytes = 0;
        for (const auto& file : std::filesystem::directory_iterator(m_folder.Path())) {
            bytes += file.file_size();
        }
        return bytes;
    }

    /// What is said on standard error.
    template <class TWork>
    std::string ToldBy(TWork work) const {
        testing::internal::CaptureStderr();
        work();
        return testing::internal::GetCapturedStderr();
    }

    const CTemporaryFolder m_folder;
    const std::string m_path = m_folder.Path("history.db");
};

} // namespace

TEST_F(HistoryStore, keeps_what_it_was_given_over_restarts) {
    Store().Write(Rows(Event(kStart, "first")));
    Store().Write(Rows(Event(kStart + 1, "second")));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"second", "first"}));
}

TEST_F(HistoryStore, makes_the_folders_that_are_missing) {
    const std::string path = m_folder.Path("a/b/history.db");
    CHistoryStore(path, kDays, 1).Write(Rows(Event(kStart, "text")));
    EXPECT_EQ(Column(path, "events", "text"), json({"text"}));
    struct stat status {};
    ASSERT_EQ(::stat(m_folder.Path("a/b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0755U);
}

TEST_F(HistoryStore, keeps_one_position_a_second_the_first_one) {
    auto second = Located(kStart + 0.9);
    second.height = 1000.0;
    Store().Write(Rows(Located(kStart + 0.1), second, Located(kStart + 1.5)));
    const json answer = Answer(m_path, "positions", {{"from", "0"}, {"to", "2000000000"}});
    const json fine = Answer(m_path, "positions",
                             {{"from", "1763749600"}, {"to", "1763749602"}, {"points", "5"}});
    EXPECT_EQ(fine.at("time"), json({kStart + 0.1, kStart + 1.5}));
    EXPECT_EQ(fine.at("height"), json({48.9, 48.9}));
    EXPECT_EQ(answer.at("time"), json({kStart + 0.1}));
}

TEST_F(HistoryStore, replaces_a_second_without_a_position_by_one_with_it_and_not_the_other_way) {
    const Hub::TQuery query{{"from", "1763749600"}, {"to", "1763749602"}, {"points", "5"}};
    auto store = Store();
    store.Write(Rows(Unlocated(kStart), Located(kStart + 1.0)));
    EXPECT_EQ(Answer(m_path, "positions", query).at("quality"), json({0, 3}));
    store.Write(Rows(Located(kStart + 0.2), Unlocated(kStart + 1.2)));
    EXPECT_EQ(Answer(m_path, "positions", query).at("quality"), json({3, 3}));
    EXPECT_EQ(Answer(m_path, "positions", query).at("time"), json({kStart + 0.2, kStart + 1.0}));
}

TEST_F(HistoryStore, keeps_diagnostics_that_change_and_knows_them_over_restarts) {
    Store().Write(Rows(Diagnostic(kStart, false), Diagnostic(kStart + 1, true),
                       Diagnostic(kStart + 2, true)));
    Store().Write(Rows(Diagnostic(kStart + 3, true), Diagnostic(kStart + 4, false),
                       Diagnostic(kStart + 5, false)));
    EXPECT_EQ(Column(m_path, "diagnostics", "time"), json({kStart + 4, kStart + 1}));
    EXPECT_EQ(Column(m_path, "diagnostics", "isRaised"), json({false, true}));
}

TEST_F(HistoryStore, tells_diagnostics_apart_by_name_code_and_sub) {
    auto name = Diagnostic(kStart, true);
    name.name = "other";
    auto code = Diagnostic(kStart + 1, true);
    code.code = 1;
    auto sub = Diagnostic(kStart + 2, true);
    sub.sub = 1;
    Store().Write(Rows(name, code, sub, Diagnostic(kStart + 3, true)));
    EXPECT_EQ(Answer(m_path, "diagnostics").at("diagnostics").size(), 4U);
}

TEST_F(HistoryStore, keeps_statuses_whose_value_has_changed_and_knows_them_over_restarts) {
    Store().Write(Rows(Status(kStart, "a", "1"), Status(kStart, "b", "1")));
    Store().Write(Rows(Status(kStart, "a", "1"), Status(kStart + 20, "a", "1"),
                       Status(kStart + 40, "a", "2")));
    const Hub::TQuery query{{"key", "a"}};
    EXPECT_EQ(Column(m_path, "statuses", "value", query), json({"2", "1"}));
    EXPECT_EQ(Column(m_path, "statuses", "time", query), json({kStart + 40, kStart}));
}

TEST_F(HistoryStore, removes_what_is_older_than_its_days) {
    const double now = Core::UnixTime::Now().AsSeconds();
    const double old = now - 2 * 86'400.0 - 10.0;
    CHistoryStore(m_path, 2, 512)
        .Write(Rows(Event(old, "old"), Event(old + 100.0, "young"), Located(old),
                    Located(old + 100.0), Diagnostic(old, true), Diagnostic(old + 100.0, false),
                    Status(old, "key", "old"), Status(old + 100.0, "key", "young")));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"young"}));
    EXPECT_EQ(Column(m_path, "diagnostics", "isRaised"), json({false}));
    EXPECT_EQ(Column(m_path, "statuses", "value"), json({"young"}));
    const json positions =
        Answer(m_path, "positions", {{"from", "0"}, {"to", "9000000000"}, {"points", "1"}});
    EXPECT_EQ(positions.at("time"), json({old + 100.0}));
}

TEST_F(HistoryStore, stays_within_its_megabytes_by_removing_the_oldest_of_all_kinds) {
    auto store = Store(1);
    constexpr int kSeconds = 30'000;
    constexpr int kBatch = 500;
    std::uintmax_t most = 0;
    for (int i = 0; i < kSeconds; i += kBatch) {
        Hub::SHistoryRows rows;
        for (int j = i; j < i + kBatch; ++j) {
            const double time = kStart + j;
            rows.Add(Located(time));
            rows.Add(Status(time, "counter", std::to_string(j)));
        }
        rows.Add(Event(kStart + i, "event " + std::to_string(i)));
        rows.Add(Diagnostic(kStart + i, i / kBatch % 2 == 0));
        store.Write(rows);
        most = std::max(most, Bytes());
    }
    EXPECT_LE(most, 1'000'000U);
    const Hub::TQuery ever{{"from", "0"}, {"to", "9000000000"}, {"limit", "1000"}};
    const json events = Column(m_path, "events", "time", ever);
    const json diagnostics = Column(m_path, "diagnostics", "time", ever);
    EXPECT_EQ(events.front(), kStart + kSeconds - kBatch);
    EXPECT_EQ(diagnostics.front(), kStart + kSeconds - kBatch);
    EXPECT_EQ(Column(m_path, "statuses", "value").front(), std::to_string(kSeconds - 1));
    // All kinds reach back equally far: about as far as fits, and no further than that.
    const json positions = Answer(
        m_path, "positions", {{"from", "1763749600"}, {"to", "1763779600"}, {"points", "5000"}});
    const double oldest = positions.at("time").front();
    EXPECT_GT(oldest, kStart + 10'000);
    EXPECT_LT(oldest, kStart + kSeconds - 3'000);
    EXPECT_NEAR(events.back(), oldest, kBatch);
    EXPECT_NEAR(diagnostics.back(), oldest, kBatch);
}

TEST_F(HistoryStore, shrinks_its_file_when_it_is_given_less_room) {
    Hub::SHistoryRows rows;
    for (int i = 0; i < 40'000; ++i) {
        rows.Add(Located(kStart + i));
    }
    Store(100).Write(rows);
    ASSERT_GT(Bytes(), 3'000'000U);
    auto store = Store(1);
    store.Write(Rows(Event(kStart + 40'000, "last")));
    store.Write(Rows(Event(kStart + 40'001, "very last")));
    EXPECT_LE(std::filesystem::file_size(m_path), 1'000'000U);
    EXPECT_EQ(Column(m_path, "events", "text"), json({"very last", "last"}));
}

TEST_F(HistoryStore, moves_aside_what_is_no_database) {
    const std::string garbage = std::string(10'000, 'x');
    m_folder.Write("history.db", garbage);
    const std::string told = ToldBy([&] {
        auto store = Store();
        store.Write(Rows(Event(kStart, "first")));
        store.Write(Rows(Event(kStart + 1, "second")));
    });
    EXPECT_EQ(told, "The history: " + m_path +
                        " is of no use (file is not a database); it is now " + m_path +
                        ".aside and a new one is begun\n");
    EXPECT_EQ(ReadFile(m_path + ".aside"), garbage);
    EXPECT_EQ(Column(m_path, "events", "text"), json({"second", "first"}));
}

TEST_F(HistoryStore, moves_aside_a_database_that_is_damaged_inside) {
    Hub::SHistoryRows rows;
    for (int i = 0; i < 5000; ++i) {
        rows.Add(Event(kStart + i, "event " + std::to_string(i)));
    }
    Store().Write(rows);
    {
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(20 * 4096);
        file << std::string(10 * 4096, 'x');
    }
    const std::string told = ToldBy([&] { Store().Write(Rows(Event(kStart, "new"))); });
    EXPECT_THAT(told, StartsWith("The history: " + m_path + " is of no use ("));
    EXPECT_THAT(told, HasSubstr("; it is now " + m_path + ".aside and a new one is begun\n"));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"new"}));
}

TEST_F(HistoryStore, moves_aside_a_database_of_another_version) {
    {
        Hub::CDatabase other;
        ASSERT_EQ(other.Open(m_path, Hub::CDatabase::EAccess::write), "");
        ASSERT_TRUE(other.Execute("PRAGMA application_id = 0x436F7276; PRAGMA user_version = 2; "
                                  "CREATE TABLE event(id)"));
    }
    const std::string told = ToldBy([&] { Store().Write(Rows(Event(kStart, "new"))); });
    EXPECT_EQ(told, "The history: " + m_path +
                        " is of no use (it is no history of this version); it is now " + m_path +
                        ".aside and a new one is begun\n");
    EXPECT_EQ(Column(m_path, "events", "text"), json({"new"}));
}

TEST_F(HistoryStore, moves_aside_a_database_that_lacks_a_table) {
    Store().Write(Rows(Event(kStart, "old")));
    {
        Hub::CDatabase database;
        ASSERT_EQ(database.Open(m_path, Hub::CDatabase::EAccess::write), "");
        ASSERT_TRUE(database.Execute("DROP TABLE diagnostic"));
    }
    const std::string told = ToldBy([&] { Store().Write(Rows(Event(kStart, "new"))); });
    EXPECT_THAT(told, HasSubstr("(its tables are not those of a history)"));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"new"}));
}

TEST_F(HistoryStore, moves_aside_what_was_damaged_while_it_was_in_use) {
    auto store = Store();
    store.Write(Rows(Event(kStart, "old")));
    {
        Hub::CDatabase database;
        ASSERT_EQ(database.Open(m_path, Hub::CDatabase::EAccess::write), "");
        ASSERT_TRUE(database.Execute("PRAGMA wal_checkpoint(truncate)"));
    }
    {
        std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(4096);
        file << std::string(40 * 4096, 'x');
    }
    {
        // Another connection's change, so that the store does not rely on the pages that it has.
        Hub::CDatabase database;
        ASSERT_EQ(database.Open(m_path, Hub::CDatabase::EAccess::write), "");
        ASSERT_TRUE(database.Execute("PRAGMA user_version = 1"));
    }
    const std::string told = ToldBy([&] {
        for (int i = 1; i < 4; ++i) {
            store.Write(Rows(Event(kStart + i, "new " + std::to_string(i))));
        }
    });
    EXPECT_THAT(told, HasSubstr("is of no use (database disk image is malformed)"));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"new 3", "new 2", "new 1"}));
}

TEST_F(HistoryStore, begins_anew_when_its_file_is_removed) {
    auto store = Store();
    store.Write(Rows(Event(kStart, "old")));
    std::filesystem::remove(m_path);
    store.Write(Rows(Event(kStart + 1, "new")));
    EXPECT_EQ(Column(m_path, "events", "text"), json({"new"}));
}

TEST_F(HistoryStore, tells_once_that_it_cannot_write_and_keeps_the_rows_until_it_can) {
    const std::string file = m_folder.Write("file", "");
    const std::string path = file + "/history.db";
    CHistoryStore store(path, kDays, 1);
    const std::string told = ToldBy([&] {
        store.Write(Rows(Event(kStart, "first")));
        store.Write(Rows(Event(kStart + 1, "second")));
    });
    EXPECT_EQ(told, "The history: cannot open " + path + ": " + file + " is no folder\n");
    EXPECT_TRUE(store.HasWaiting());
    std::filesystem::remove(file);
    EXPECT_EQ(ToldBy([&] { store.Write({}); }), "The history: " + path + " is written again\n");
    EXPECT_FALSE(store.HasWaiting());
    EXPECT_EQ(Column(path, "events", "text"), json({"second", "first"}));
}

TEST_F(HistoryStore, forgets_the_oldest_of_what_waits_too_long_for_a_disk) {
    const std::string file = m_folder.Write("file", "");
    const std::string path = file + "/history.db";
    CHistoryStore store(path, kDays, 100);
    const std::string text(CHistoryStore::kMostWaitingBytes / 10, 'x');
    ToldBy([&] {
        for (int i = 0; i < 15; ++i) {
            store.Write(Rows(Event(kStart + i, text)));
        }
    });
    std::filesystem::remove(file);
    ToldBy([&] { store.Write(Rows(Event(kStart + 15, "last"))); });
    const json times = Column(path, "events", "time");
    EXPECT_EQ(times.size(), 10U); // nine of a tenth of the room each, and the last one
    EXPECT_EQ(times.front(), kStart + 15);
    EXPECT_EQ(times.back(), kStart + 6);
}

TEST_F(HistoryStore, keeps_what_is_no_number_as_unknown) {
    auto position = Located(kStart);
    position.sigmaUp = std::nan("");
    Store().Write(Rows(position, Diagnostic(kStart, true, std::nan(""))));
    const json positions =
        Answer(m_path, "positions", {{"from", "1763749600"}, {"to", "1763749601"}});
    EXPECT_EQ(positions.at("sigmaUp"), json::array({nullptr}));
    EXPECT_EQ(Column(m_path, "diagnostics", "value"), json::array({nullptr}));
}
