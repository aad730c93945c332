// How the upgrade begins, what it sends its commands through, and whose records it takes.
#include "Control/SoftloadManager.h"

#include "Control/SoftloadTesting.h"
#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include <sys/stat.h>

namespace {

using Lines = std::vector<std::string>;

class Softload : public CSoftloadTesting {
protected:
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
        wasUpgrading.push_back(IsUpgrading());
        return true;
    }
    void DispatchLog(const CGPSRecord&) override { ++dispatched; }

    Lines sent;
    std::vector<bool> wasUpgrading; ///< with each command
    int dispatched = 0;
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
    EXPECT_EQ(Status("softload_status"), Lines(5, "0,6,3"));
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

TEST_F(Softload, is_not_upgrading_between_a_complete_upgrade_and_the_start_of_the_next) {
    class CFollowing : public CDerivedManager {
    public:
        using CDerivedManager::CDerivedManager;
        void DispatchLog(const CGPSRecord& record) override {
            SoftloadManager::DispatchLog(record);
        }
    };
    CFollowing manager(&m_source, m_logger);
    const std::unique_ptr<CGPSRecord> record(
        CreateRecord(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")));
    manager.NewRecord(record.get());
    EXPECT_TRUE(manager.IsUpgrading());
    EXPECT_TRUE(manager.StartUpgrade(m_folder.Write("firmware", "S0\n")));
    EXPECT_EQ(manager.wasUpgrading, std::vector<bool>(9, false));
    EXPECT_TRUE(manager.IsUpgrading());
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
