// The upgrade's beginning and end, its commands and the receiver's statuses.
#include "Control/SoftloadManager.h"

#include "Control/SoftloadTesting.h"
#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include <sys/stat.h>

namespace {

using Lines = std::vector<std::string>;

class Softload : public CSoftloadTesting {
protected:
    /// An upgrade that waits for the receiver.
    void StartWaiting() {
        ASSERT_TRUE(Start(m_folder.Write("firmware", "S0\nS1\n")));
        Forget();
    }
    /// What the receiver's status makes of a fresh upgrade.
    void StartAgainWith(const std::string& status) {
        ASSERT_TRUE(Start(m_folder.Write("firmware", "S0\nS1\n")));
        Forget();
        Report(status);
    }
    void ExpectNoUpgrade(const std::string& path) {
        Forget();
        EXPECT_FALSE(Start(path)) << path;
        EXPECT_EQ(m_source.done, Lines{}) << path;
        EXPECT_EQ(m_clock.Pauses().size(), 0U) << path;
        EXPECT_EQ(Status("firmware_file_used"), Lines{path});
        ASSERT_FALSE(Events().empty());
        EXPECT_EQ(Events()[0], "error: SoftloadManager::StartUpgrade: failed to open file");
        EXPECT_FALSE(m_manager.IsUpgrading());
        EXPECT_EQ(Service(), 0);
        EXPECT_EQ(Progress(), "going on 0 well");
    }
};

/// Sends commands its own way, and takes records so.
class CDerivedManager : public SoftloadManager {
public:
    using SoftloadManager::SoftloadManager;
    bool SendCommand(const std::string& text) override {
        sent.push_back(text);
        return true;
    }
    void DispatchLog(const CGPSRecord&) override { ++dispatched; }

    Lines sent;
    int dispatched = 0;
};

struct SStatus {
    const char* text;
    int value;
};

constexpr SStatus kPassingStatuses[] = {
    {"NOT_STARTED", 1},          {"READY_FOR_SETUP", 2},
    {"READY_FOR_DATA", 3},       {"DATA_VERIFIED", 4},
    {"WRITING_FLASH", 5},        {"VERIFYING_DATA", 8},
    {"NOT_READY_FOR_SETUP", 11}, {"WROTE_TRANSACTION_TABLE", 10},
};
constexpr SStatus kResettingStatuses[] = {{"WROTE_FLASH", 6}, {"COMPLETE", 12}};
constexpr SStatus kFinalStatuses[] = {
    {"RESET_ERROR", 13},   {"BAD_SRECORD", 14},     {"BAD_PLATFORM", 15},    {"BAD_MODULE", 16},
    {"NO_MODULE", 18},     {"MODULE_MISMATCH", 19}, {"OUT_OF_MEMORY", 20},   {"DATA_OVERLAP", 21},
    {"BAD_IMAGE_CRC", 22}, {"IMAGE_OVERSIZE", 23},  {"BAD_FLASH_ERASE", 25}, {"NO_PLATFORM", 26},
};

} // namespace

TEST_F(Softload, is_idle_at_first) {
    EXPECT_FALSE(m_manager.IsUpgrading());
    EXPECT_FALSE(m_manager.IsComplete());
    EXPECT_EQ(Progress(), "going on 0 well");
    EXPECT_EQ(Service(), 0);
    EXPECT_EQ(m_source.done, Lines{});
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(Softload, sends_a_command_as_it_is) {
    EXPECT_TRUE(m_manager.SendCommand("anything"));
    EXPECT_EQ(m_source.done, Lines{"write anything"});
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(Softload, sends_nothing_without_a_source) {
    SoftloadManager manager(nullptr, m_logger);
    EXPECT_FALSE(manager.SendCommand("anything"));
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(Softload, reopens_a_closed_source_for_a_command) {
    m_source.isOpen = false;
    EXPECT_TRUE(m_manager.SendCommand("x"));
    EXPECT_EQ(m_source.done, (Lines{"open", "write x"}));
    EXPECT_EQ(Events(), Lines{"error: SoftloadManager::Has to reopen port"});
    EXPECT_TRUE(m_manager.SendCommand("y"));
    EXPECT_EQ(m_source.done, (Lines{"open", "write x", "write y"}));
}

TEST_F(Softload, does_not_write_to_a_source_that_cannot_be_opened) {
    m_source.isOpen = false;
    m_source.canOpen = false;
    EXPECT_FALSE(m_manager.SendCommand("x"));
    EXPECT_EQ(m_source.done, Lines{"open"});
    EXPECT_EQ(Events(), Lines{"error: SoftloadManager::Has to reopen port"});
}

TEST_F(Softload, tells_that_a_write_failed_and_goes_on) {
    m_source.canWrite = false;
    EXPECT_TRUE(m_manager.SendCommand("x"));
    EXPECT_EQ(Events(), Lines{"error: SoftloadManager::SendCommand: write failed"});
}

TEST_F(Softload, puts_the_receiver_into_its_loading_mode_three_times_over) {
    static CFakeByteSource* source = nullptr;
    source = &m_source;
    m_clock.AtPause([] { source->done.emplace_back("pause"); });
    EXPECT_TRUE(Start(m_folder.Write("firmware", "S0\n")));
    const Lines once = {
        "pause", "write UNLOGALL\r\n",      "pause", "write LOG SOFTLOADSTATUSA ONCHANGED\r\n",
        "pause", "write SOFTLOADRESET\r\n", "pause"};
    Lines expected;
    for (int i = 0; i < 3; ++i) {
        expected.insert(expected.end(), once.begin(), once.end());
    }
    EXPECT_EQ(m_source.done, expected);
    EXPECT_EQ(m_clock.Pauses(), std::vector<Core::Time>(12, Core::Time::FromMilliseconds(50)));
}

TEST_F(Softload, tells_the_file_and_its_size) {
    const std::string path = m_folder.Write("firm%sware.hex", "S0\r\nS1");
    EXPECT_TRUE(Start(path));
    EXPECT_EQ(Status("firmware_file_used"), Lines{path});
    EXPECT_EQ(Events(), Lines{"error: SoftloadManager::StartUpgrade openned file <" + path +
                              ">  command <SOFTLOADRESET>, FileSize:6"});
}

TEST_F(Softload, is_upgrading_from_its_start) {
    EXPECT_TRUE(Start(m_folder.Write("firmware", "S0\n")));
    EXPECT_TRUE(m_manager.IsUpgrading());
    EXPECT_FALSE(m_manager.IsComplete());
    EXPECT_EQ(Service(), 1);
    EXPECT_EQ(Progress(), "going on 0 well");
}

TEST_F(Softload, waits_for_the_receiver_to_be_ready) {
    StartWaiting();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(ServiceLater(), 1);
    }
    EXPECT_EQ(m_source.done, Lines{});
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(Softload, starts_even_when_nothing_can_be_sent) {
    const std::string path = m_folder.Write("firmware", "S0\n");
    SoftloadManager manager(nullptr, m_logger);
    EXPECT_TRUE(manager.StartUpgrade(path));
    EXPECT_TRUE(manager.IsUpgrading());
    m_source.isOpen = false;
    m_source.canOpen = false;
    EXPECT_TRUE(Start(path));
    EXPECT_EQ(m_source.done, Lines(9, "open"));
}

TEST_F(Softload, does_not_start_without_a_file) {
    ExpectNoUpgrade(m_folder.Path("missing"));
    ExpectNoUpgrade("");
}

TEST_F(Softload, takes_regular_files_alone_for_firmware) {
    const std::string pipe = m_folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ExpectNoUpgrade(m_folder.Path());
    ExpectNoUpgrade(pipe);
    ExpectNoUpgrade("/dev/null");
}

TEST_F(Softload, tells_nothing_but_errors) {
    m_source.isOpen = false;
    EXPECT_FALSE(Start(m_folder.Path("missing")));
    EXPECT_TRUE(Start(m_folder.Write("firmware", "S0")));
    for (const char* const status : {"READY_FOR_DATA", "REBOOTING", "COMPLETE", "NO_PLATFORM"}) {
        Report(status);
        ServiceLater();
        ServiceLater();
    }
    ASSERT_GT(Events().size(), 10U);
    for (const std::string& event : Events()) {
        EXPECT_EQ(event.substr(0, 7), "error: ") << event;
    }
}

TEST_F(Softload, loses_the_running_upgrades_file_to_one_that_cannot_be_opened) {
    StartLoading("S0\nS1\n");
    EXPECT_FALSE(Start(m_folder.Path("missing")));
    EXPECT_EQ(Done([this] {
                  for (int i = 0; i < 5; ++i) {
                      EXPECT_EQ(ServiceLater(), 3);
                  }
              }),
              Lines{});
}

TEST_F(Softload, keeps_the_last_upgrades_progress_when_the_next_one_does_not_start) {
    StartLoading("S0\nS1\n");
    ServiceLater();
    Report("COMPLETE");
    Service();
    ASSERT_EQ(Progress(), "ended 100 well");
    EXPECT_FALSE(Start(m_folder.Path("missing")));
    EXPECT_EQ(Progress(), "ended 100 well");
}

TEST_F(Softload, begins_the_next_upgrade_with_the_next_file) {
    StartLoading("S0\nS1\n");
    EXPECT_TRUE(Start(m_folder.Write("other", "S9\n")));
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), Lines{Written("S9")});
}

TEST_F(Softload, forgets_how_the_last_upgrade_ended) {
    StartLoading("S0\nS1\n");
    ServiceLater();
    Report("BAD_SRECORD");
    ASSERT_EQ(Progress(), "ended 100 badly");
    StartWaiting();
    EXPECT_EQ(Progress(), "going on 0 well");
}

TEST_F(Softload, forgets_a_reset_that_the_last_upgrade_asked_for) {
    StartAgainWith("COMPLETE");
    StartWaiting();
    EXPECT_EQ(DoneByService(), Lines{});
    EXPECT_EQ(Service(), 1);
}

TEST_F(Softload, still_resets_the_receiver_when_the_next_upgrade_does_not_start) {
    StartAgainWith("COMPLETE");
    EXPECT_FALSE(Start(m_folder.Path("missing")));
    EXPECT_TRUE(m_manager.IsComplete());
    EXPECT_EQ(DoneByService(), Lines{kReset});
}

TEST_F(Softload, follows_the_receivers_status) {
    for (const auto& [text, value] : kPassingStatuses) {
        StartAgainWith(text);
        const std::string number = std::to_string(value);
        EXPECT_EQ(Events(),
                  (Lines{"error: SoftloadManager::DispatchLog status is " + number,
                         "error: SoftloadManager::updateSoftloadStatus set status to " + number}));
        EXPECT_TRUE(m_manager.IsUpgrading()) << text;
        EXPECT_FALSE(m_manager.IsComplete()) << text;
        EXPECT_EQ(Progress(), "going on 0 well");
        EXPECT_EQ(Service(), value);
    }
}

TEST_F(Softload, sends_nothing_in_statuses_that_take_nothing) {
    for (const char* const text :
         {"NOT_STARTED", "DATA_VERIFIED", "WRITING_FLASH", "VERIFYING_DATA", "NOT_READY_FOR_SETUP",
          "WROTE_TRANSACTION_TABLE"}) {
        StartAgainWith(text);
        EXPECT_EQ(DoneByServiceLater(), Lines{}) << text;
        EXPECT_EQ(Status("softload_status"), Lines{}) << text;
    }
}

TEST_F(Softload, resets_the_receiver_with_the_pass_after_it_asked) {
    for (const auto& [text, value] : kResettingStatuses) {
        StartAgainWith(text);
        const std::string number = std::to_string(value);
        EXPECT_EQ(Events(),
                  (Lines{"error: SoftloadManager::DispatchLog status is " + number,
                         "error: SoftloadManager::updateSoftloadStatus set status to " + number,
                         "error: SoftloadManager::updateSoftloadStatus triggering reset"}));
        EXPECT_TRUE(m_manager.IsUpgrading()) << text;
        EXPECT_EQ(m_manager.IsComplete(), value == 12);
        EXPECT_EQ(m_source.done, Lines{});
        EXPECT_EQ(Progress(), "going on 0 well");
        Forget();
        EXPECT_EQ(Service(), 0);
        EXPECT_EQ(m_source.done, Lines{kReset});
        EXPECT_EQ(Events(), (Lines{"error: SoftloadManager sent command <FRESET>",
                                   "error: SoftloadManager::EndUpgrade: upgrade complete"}));
        EXPECT_FALSE(m_manager.IsUpgrading()) << text;
        EXPECT_FALSE(m_manager.IsComplete()) << text;
        EXPECT_EQ(Progress(), "ended 0 well");
        EXPECT_EQ(DoneByService(), Lines{});
    }
}

TEST_F(Softload, ends_at_once_with_a_final_status) {
    for (const auto& [text, value] : kFinalStatuses) {
        StartAgainWith(text);
        const std::string number = std::to_string(value);
        EXPECT_EQ(Events(),
                  (Lines{"error: SoftloadManager::DispatchLog status is " + number,
                         "error: SoftloadManager::updateSoftloadStatus set status to " + number,
                         "error: Ending upgrade because status is " + number,
                         "error: SoftloadManager::EndUpgrade: upgrade complete"}));
        EXPECT_FALSE(m_manager.IsUpgrading()) << text;
        EXPECT_FALSE(m_manager.IsComplete()) << text;
        EXPECT_EQ(Progress(), "ended 0 badly") << text;
        EXPECT_EQ(DoneByService(), Lines{});
        EXPECT_EQ(Service(), 0);
    }
}

TEST_F(Softload, neither_ends_nor_sends_with_an_unknown_status_but_names_it) {
    StartLoading("S0\nS1\n");
    for (const std::string text : {"REBOOTING", "", "complete", "COMPLETE "}) {
        Forget();
        Report(text);
        EXPECT_EQ(Events(),
                  (Lines{"error: SoftloadManager::DispatchLog status is -1",
                         "error: SoftloadManager: the receiver reports the unknown status \"" +
                             text + "\"",
                         "error: SoftloadManager::updateSoftloadStatus set status to -1"}));
        EXPECT_EQ(DoneByServiceLater(), Lines{});
        EXPECT_EQ(Service(), -1);
        EXPECT_TRUE(m_manager.IsUpgrading());
        EXPECT_FALSE(m_manager.IsComplete());
        EXPECT_EQ(Progress(), "going on 0 well");
    }
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), (Lines{Written("S0"), Written("S1")}));
}

TEST_F(Softload, resets_the_receiver_later_when_it_takes_data_meanwhile) {
    StartLoading("S0\n");
    Report("WROTE_FLASH");
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), Lines{Written("S0")});
    Report("WRITING_FLASH");
    EXPECT_TRUE(m_manager.IsUpgrading());
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(Progress(), "ended 100 well");
}

TEST_F(Softload, keeps_no_end_of_an_upgrade_that_the_receiver_has_not_begun) {
    for (const char* const status : {"NOT_STARTED", "REBOOTING"}) {
        StartAgainWith("WROTE_FLASH");
        Report(status);
        EXPECT_EQ(DoneByService(), Lines{kReset});
        EXPECT_FALSE(m_manager.IsUpgrading());
        EXPECT_EQ(Progress(), "going on 0 well") << status;
    }
}

TEST_F(Softload, still_resets_a_receiver_that_asked_before_it_failed) {
    StartAgainWith("WROTE_FLASH");
    Report("BAD_IMAGE_CRC");
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(Progress(), "ended 0 badly");
    EXPECT_EQ(DoneByService(), Lines{});
}

TEST_F(Softload, resets_the_receiver_once_however_often_it_asks) {
    StartAgainWith("WROTE_FLASH");
    Report("COMPLETE");
    Report("COMPLETE");
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(DoneByService(), Lines{});
}

TEST_F(Softload, passes_over_other_records) {
    StartWaiting();
    Offer(Sentences::BinaryLog(1235));
    Offer(Sentences::Version());
    m_manager.NewRecord(nullptr);
    const Novatel::CNovatelSoftLoadStatusRecord other(Sentences::AsciiLog("OTHERA", "COMPLETE"));
    m_manager.DispatchLog(other);
    EXPECT_EQ(Service(), 1);
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(Softload, lets_a_derived_class_send_and_dispatch) {
    CDerivedManager manager(&m_source, m_logger);
    EXPECT_TRUE(manager.StartUpgrade(m_folder.Write("firmware", "S0\n")));
    EXPECT_EQ(manager.sent.size(), 9U);
    EXPECT_EQ(m_source.done, Lines{});
    const std::unique_ptr<CGPSRecord> record(
        CreateRecord(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")));
    manager.NewRecord(record.get());
    EXPECT_EQ(manager.dispatched, 1);
}
