// How the upgrade streams the firmware file and has it committed.
#include "Control/SoftloadTesting.h"

#include <cstdio>
#include <fstream>

#include <unistd.h>

namespace {

using Lines = std::vector<std::string>;

class SoftloadStream : public CSoftloadTesting {
protected:
    /// "S10000", "S10001" ...: with its line feed each has seven bytes.
    static std::string Record(int number) {
        return "S1" + std::to_string(10000 + number).substr(1);
    }
    static std::string Records(int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += Record(i) + "\n";
        }
        return text;
    }
    static Lines WrittenRecords(int first, int last) {
        Lines lines;
        for (int i = first; i <= last; ++i) {
            lines.push_back(Written(Record(i)));
        }
        return lines;
    }
    std::string FirmwarePath() const { return m_folder.Path("firmware"); }

    /// Passes until the upgrade has ended or committed; how many commits were sent.
    int CommitsUntilTheEnd() {
        int commits = 0;
        for (int pass = 0; pass < 1000 && m_manager.IsUpgrading() && commits == 0; ++pass) {
            ServiceLater();
            for (const std::string& what : m_source.done) {
                commits += what == kCommit ? 1 : 0;
            }
        }
        return commits;
    }
    /// The upgrade has been given up and stays so, whatever the receiver says.
    void ExpectFileLost() {
        EXPECT_FALSE(m_manager.IsUpgrading());
        EXPECT_EQ(Progress().substr(0, 5), "ended");
        EXPECT_EQ(Progress().substr(Progress().size() - 5), "badly");
        Report("READY_FOR_DATA");
        EXPECT_EQ(DoneByServiceLater(), Lines{});
        EXPECT_EQ(ServiceLater(), 3);
        EXPECT_EQ(m_source.done, Lines{});
    }
};

} // namespace

TEST_F(SoftloadStream, sends_30_lines_in_a_burst_and_the_next_ones_80_ms_later) {
    StartLoading(Records(45), "READY_FOR_SETUP");
    EXPECT_EQ(DoneByService(), WrittenRecords(0, 29));
    EXPECT_EQ(DoneByService(), Lines{});
    m_clock.Advance(Core::Time::FromNanoseconds(79'999'999));
    EXPECT_EQ(DoneByService(), Lines{});
    m_clock.Advance(Core::Time::FromNanoseconds(1));
    EXPECT_EQ(DoneByService(), WrittenRecords(30, 44));
    EXPECT_EQ(DoneByService(), Lines{kCommit});
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(DoneByServiceLater(), Lines{});
}

TEST_F(SoftloadStream, sends_in_both_statuses_that_take_data) {
    StartLoading(Records(45), "READY_FOR_SETUP");
    EXPECT_EQ(Service(), 2);
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), WrittenRecords(30, 44));
    EXPECT_EQ(Service(), 3);
    EXPECT_EQ(m_source.done.back(), kCommit);
}

TEST_F(SoftloadStream, goes_on_where_it_was_when_the_receiver_is_ready_again) {
    StartLoading(Records(45));
    Service();
    Report("DATA_VERIFIED");
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByService(), WrittenRecords(30, 44));
}

TEST_F(SoftloadStream, counts_the_pause_from_the_burst_that_was_sent_last) {
    StartLoading(Records(95));
    Service();
    m_clock.Advance(Core::Time::FromMilliseconds(130));
    EXPECT_EQ(DoneByService(), WrittenRecords(30, 59));
    m_clock.Advance(Core::Time::FromMilliseconds(79));
    EXPECT_EQ(DoneByService(), Lines{});
    m_clock.Advance(Core::Time::FromMilliseconds(1));
    EXPECT_EQ(DoneByService(), WrittenRecords(60, 89));
}

TEST_F(SoftloadStream, sends_a_new_upgrades_first_burst_without_a_pause) {
    StartLoading(Records(45));
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    m_manager.Service(now);
    StartLoading(Records(2));
    EXPECT_EQ(Done([&] { m_manager.Service(now); }), WrittenRecords(0, 1));
}

TEST_F(SoftloadStream, commits_in_the_pass_after_the_one_that_met_the_end) {
    StartLoading("S0\nS9");
    EXPECT_EQ(DoneByService(), (Lines{Written("S0"), Written("S9")}));
    Forget();
    EXPECT_EQ(Service(), 3);
    EXPECT_EQ(m_source.done, Lines{kCommit});
    EXPECT_EQ(Events(), Lines{"error: SoftloadManager sent command <SOFTLOADCOMMIT>"});
    EXPECT_EQ(Status("softload_status"), Lines{});
}

TEST_F(SoftloadStream, commits_once_in_an_upgrade) {
    for (int upgrade = 0; upgrade < 2; ++upgrade) {
        StartLoading("S0\n");
        ServiceLater();
        EXPECT_EQ(DoneByServiceLater(), Lines{kCommit});
        Forget();
        Report("READY_FOR_SETUP");
        EXPECT_EQ(ServiceLater(), 2);
        Report("READY_FOR_DATA");
        EXPECT_EQ(ServiceLater(), 3);
        EXPECT_EQ(m_source.done, Lines{});
        EXPECT_EQ(Status("softload_status"), Lines{});
    }
}

TEST_F(SoftloadStream, does_not_commit_while_the_receiver_takes_no_data) {
    StartLoading("S0\n");
    Service();
    Report("DATA_VERIFIED");
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    Report("READY_FOR_SETUP");
    EXPECT_EQ(DoneByServiceLater(), Lines{kCommit});
}

TEST_F(SoftloadStream, needs_one_more_burst_to_meet_the_end_behind_a_last_line_feed) {
    StartLoading(Records(30));
    EXPECT_EQ(DoneByService(), WrittenRecords(0, 29));
    EXPECT_EQ(DoneByService(), Lines{});
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(DoneByService(), Lines{kCommit});
}

TEST_F(SoftloadStream, meets_the_end_with_the_last_line_when_no_line_feed_ends_it) {
    std::string records = Records(30);
    records.pop_back();
    StartLoading(records);
    EXPECT_EQ(DoneByService(), WrittenRecords(0, 29));
    EXPECT_EQ(DoneByService(), Lines{kCommit});
}

TEST_F(SoftloadStream, commits_an_empty_file) {
    StartLoading("");
    EXPECT_EQ(DoneByService(), Lines{});
    EXPECT_EQ(Status("softload_status"), Lines{"0,0,3"});
    EXPECT_EQ(DoneByService(), Lines{kCommit});
    EXPECT_EQ(Progress(), "going on 0 well");
}

TEST_F(SoftloadStream, trims_its_lines) {
    StartLoading(" \tS0 03 \r\nS9\r\n");
    EXPECT_EQ(DoneByService(), (Lines{Written("S0 03"), Written("S9")}));
}

TEST_F(SoftloadStream, counts_blank_lines_but_does_not_send_them) {
    StartLoading("S0\n\n \t\r\n\r\nS9\n");
    EXPECT_EQ(DoneByService(), (Lines{Written("S0"), Written("S9")}));
    EXPECT_EQ(Status("softload_status"), Lines{"13,13,3"});
    EXPECT_EQ(Progress(), "going on 100 well");
}

TEST_F(SoftloadStream, takes_blank_lines_for_lines_of_the_burst) {
    StartLoading(std::string(29, '\n') + "S1\nS9\n");
    EXPECT_EQ(DoneByService(), Lines{Written("S1")});
    EXPECT_EQ(DoneByServiceLater(), Lines{Written("S9")});
}

TEST_F(SoftloadStream, sends_the_rest_of_a_line_over_1023_characters_as_the_next_line) {
    const std::string full(1023, 'F');
    StartLoading(full + "\n" + full + "A\nS9");
    EXPECT_EQ(DoneByService(), (Lines{Written(full), Written(full), Written("A"), Written("S9")}));
}

TEST_F(SoftloadStream, publishes_bytes_size_and_status_until_it_has_met_the_end) {
    StartLoading(Records(65), "READY_FOR_SETUP");
    Service();
    EXPECT_EQ(Status("softload_status"), Lines{"210,455,2"});
    m_clock.Advance(Core::Time::FromMilliseconds(1));
    Service();
    EXPECT_EQ(Status("softload_status"), (Lines{"210,455,2", "210,455,2"}));
    Report("READY_FOR_DATA");
    Forget();
    ServiceLater();
    ServiceLater();
    EXPECT_EQ(Status("softload_status"), (Lines{"420,455,3", "455,455,3"}));
    Forget();
    ServiceLater();
    ServiceLater();
    EXPECT_EQ(Status("softload_status"), Lines{});
}

TEST_F(SoftloadStream, tells_the_sent_part_in_whole_percent) {
    StartLoading(Records(65));
    EXPECT_EQ(Progress(), "going on 0 well");
    ServiceLater();
    EXPECT_EQ(Progress(), "going on 46 well"); // 210 of 455 bytes are 46.15 %
    ServiceLater();
    EXPECT_EQ(Progress(), "going on 92 well"); // 420 of 455 bytes are 92.3 %
    ServiceLater();
    EXPECT_EQ(Progress(), "going on 100 well");
}

TEST_F(SoftloadStream, ends_at_100_percent_whatever_ends_the_lines) {
    for (const std::string bytes : {"S0\nS9", "S0\nS9\n", "S0\r\nS9\r\n", "S0\n\n\n", "\n", "S"}) {
        StartLoading(bytes);
        ServiceLater();
        EXPECT_EQ(Progress(), "going on 100 well");
        Report("COMPLETE");
        Service();
        EXPECT_EQ(Progress(), "ended 100 well");
    }
}

TEST_F(SoftloadStream, tells_the_percentage_of_a_file_whose_hundredfold_32_bits_do_not_hold) {
    StartLoading(std::string(22'000'000, ' '));
    while (m_manager.IsUpgrading() && Progress() != "going on 100 well") {
        const std::string before = Progress();
        ASSERT_EQ(before.find('-'), std::string::npos) << before;
        ServiceLater();
        ASSERT_FALSE(Status("softload_status").empty());
        m_published.Forget();
    }
    EXPECT_EQ(m_source.done, Lines{});
    EXPECT_EQ(Progress(), "going on 100 well");
}

TEST_F(SoftloadStream, takes_no_burst_while_earlier_bytes_wait) {
    StartLoading(Records(45));
    m_source.hasWaitingBytes = true;
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(Status("softload_status"), (Lines{"0,315,3", "0,315,3"}));
    m_source.hasWaitingBytes = false;
    EXPECT_EQ(DoneByService(), WrittenRecords(0, 29));
}

TEST_F(SoftloadStream, goes_on_after_a_failed_write) {
    StartLoading(Records(2));
    m_source.canWrite = false;
    EXPECT_EQ(DoneByService(), WrittenRecords(0, 1));
    EXPECT_EQ(Events(), Lines(2, "error: SoftloadManager::SendCommand: write failed"));
    EXPECT_EQ(DoneByService(), Lines{kCommit});
}

TEST_F(SoftloadStream, reopens_a_source_that_was_lost) {
    StartLoading(Records(3));
    m_source.isOpen = false;
    EXPECT_EQ(DoneByService(),
              (Lines{"open", Written(Record(0)), Written(Record(1)), Written(Record(2))}));
    m_source.isOpen = false;
    EXPECT_EQ(DoneByService(), (Lines{"open", kCommit}));
}

TEST_F(SoftloadStream, reads_on_without_a_source) {
    SoftloadManager manager(nullptr, m_logger);
    ASSERT_TRUE(manager.StartUpgrade(m_folder.Write("firmware", "S0\n")));
    const std::unique_ptr<CGPSRecord> record(
        CreateRecord(Sentences::AsciiLog("SOFTLOADSTATUSA", "READY_FOR_DATA")));
    manager.NewRecord(record.get());
    EXPECT_EQ(manager.Service(Core::MonotonicTime::Now()), 3);
    EXPECT_EQ(Status("softload_status"), Lines{"3,3,3"});
}

TEST_F(SoftloadStream, sends_nothing_of_a_load_that_is_somebody_elses) {
    Report("READY_FOR_SETUP");
    EXPECT_EQ(DoneByService(), Lines{});
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(Status("softload_status"), (Lines{"0,0,2", "0,0,3", "0,0,3"}));
    EXPECT_TRUE(m_manager.IsUpgrading());
}

TEST_F(SoftloadStream, sends_nothing_more_of_an_upgrade_that_has_ended) {
    StartLoading(Records(45));
    Service();
    Report("BAD_SRECORD");
    Report("READY_FOR_DATA");
    Forget();
    EXPECT_EQ(DoneByServiceLater(), Lines{});
    EXPECT_EQ(Status("softload_status"), Lines{"210,315,3"});
}

TEST_F(SoftloadStream, never_commits_a_file_that_shrinks) {
    StartLoading(Records(10'000));
    Service();
    ASSERT_EQ(truncate(FirmwarePath().c_str(), 35'000), 0);
    EXPECT_EQ(CommitsUntilTheEnd(), 0);
    ExpectFileLost();
}

TEST_F(SoftloadStream, never_commits_a_file_that_grows) {
    StartLoading(Records(45));
    Service();
    std::ofstream(FirmwarePath(), std::ios::app) << Records(1);
    EXPECT_EQ(CommitsUntilTheEnd(), 0);
    ExpectFileLost();
}

TEST_F(SoftloadStream, never_commits_a_file_that_cannot_be_read) {
    // A regular file whose first page cannot be read, for nothing is mapped there.
    ASSERT_TRUE(Start("/proc/self/mem"));
    Report("READY_FOR_DATA");
    EXPECT_EQ(CommitsUntilTheEnd(), 0);
    ExpectFileLost();
}

TEST_F(SoftloadStream, gives_up_in_the_pass_that_loses_the_file) {
    StartLoading(Records(2));
    ASSERT_EQ(truncate(FirmwarePath().c_str(), 7), 0);
    EXPECT_EQ(Service(), 0);
    EXPECT_EQ(m_source.done, WrittenRecords(0, 0));
    const Lines events = Events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_NE(events[0].find("cannot be read to its end"), std::string::npos) << events[0];
    EXPECT_EQ(events[1], "error: SoftloadManager::EndUpgrade: upgrade complete");
    EXPECT_EQ(Progress(), "ended 50 badly");
}

TEST_F(SoftloadStream, ends_with_a_status_of_its_own_when_it_gives_up) {
    EXPECT_EQ(SoftloadManager::kFileLost, 24);
}

TEST_F(SoftloadStream, upgrades_again_after_it_gave_up) {
    StartLoading(Records(2));
    ASSERT_EQ(truncate(FirmwarePath().c_str(), 7), 0);
    Service();
    StartLoading(Records(2));
    EXPECT_EQ(DoneByServiceLater(), WrittenRecords(0, 1));
    EXPECT_EQ(DoneByServiceLater(), Lines{kCommit});
}
