// What the receiver's soft-load statuses make of an upgrade.
#include "Control/SoftloadTesting.h"

namespace {

using Lines = std::vector<std::string>;
using SoftloadStatus = CSoftloadTesting;

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

TEST_F(SoftloadStatus, follows_the_receivers_status) {
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

TEST_F(SoftloadStatus, sends_nothing_in_statuses_that_take_nothing) {
    for (const char* const text :
         {"NOT_STARTED", "DATA_VERIFIED", "WRITING_FLASH", "VERIFYING_DATA", "NOT_READY_FOR_SETUP",
          "WROTE_TRANSACTION_TABLE"}) {
        StartAgainWith(text);
        EXPECT_EQ(DoneByServiceLater(), Lines{}) << text;
        EXPECT_EQ(Status("softload_status"), Lines{}) << text;
    }
}

TEST_F(SoftloadStatus, resets_the_receiver_with_the_pass_after_it_asked) {
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

TEST_F(SoftloadStatus, ends_at_once_with_a_final_status) {
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

TEST_F(SoftloadStatus, neither_ends_nor_sends_with_an_unknown_status_but_names_it) {
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

TEST_F(SoftloadStatus, resets_the_receiver_later_when_it_takes_data_meanwhile) {
    StartLoading("S0\n");
    Report("WROTE_FLASH");
    Report("READY_FOR_DATA");
    EXPECT_EQ(DoneByServiceLater(), Lines{Written("S0")});
    Report("WRITING_FLASH");
    EXPECT_TRUE(m_manager.IsUpgrading());
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(Progress(), "ended 100 well");
}

TEST_F(SoftloadStatus, keeps_no_end_of_an_upgrade_that_the_receiver_has_not_begun) {
    for (const char* const status : {"NOT_STARTED", "REBOOTING"}) {
        StartAgainWith("WROTE_FLASH");
        Report(status);
        EXPECT_EQ(DoneByService(), Lines{kReset});
        EXPECT_FALSE(m_manager.IsUpgrading());
        EXPECT_EQ(Progress(), "going on 0 well") << status;
    }
}

TEST_F(SoftloadStatus, still_resets_a_receiver_that_asked_before_it_failed) {
    StartAgainWith("WROTE_FLASH");
    Report("BAD_IMAGE_CRC");
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(Progress(), "ended 0 badly");
    EXPECT_EQ(DoneByService(), Lines{});
}

TEST_F(SoftloadStatus, resets_the_receiver_once_however_often_it_asks) {
    StartAgainWith("WROTE_FLASH");
    Report("COMPLETE");
    Report("COMPLETE");
    EXPECT_EQ(DoneByService(), Lines{kReset});
    EXPECT_EQ(DoneByService(), Lines{});
}
