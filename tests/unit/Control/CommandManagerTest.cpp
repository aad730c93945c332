#include "Control/CommandManagerTesting.h"

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"

namespace {

using CommandManager = CCommandManagerTesting;
using Lines = std::vector<std::string>;

/// Keeps what it is told to queue and to send.
class CRecordingCommandManager : public CCommandManager {
public:
    using CCommandManager::CCommandManager;
    void QueueCommand(const std::string& text) override { queued.push_back(text); }
    bool SendCommand(const std::string& text) override {
        sent.push_back(text);
        return true;
    }

    Lines queued;
    Lines sent;
};

} // namespace

TEST_F(CommandManager, begins_with_no_commands_and_the_defaults) {
    EXPECT_EQ(Configuration(), Lines{});
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_FALSE(m_commands.GPSLoggingEnabled());
    EXPECT_EQ(m_commands.IonosphereMode(), 0U);
    EXPECT_EQ(m_commands.SBASPrn(), 0);
    EXPECT_EQ(m_commands.ReferenceFormat(), "VARN1");
    EXPECT_FALSE(m_commands.ReferencePosition().isValid);
    EXPECT_EQ(m_commands.ReferencePosition().latitude, 0.0);
    EXPECT_EQ(m_commands.ReferencePosition().longitude, 0.0);
    EXPECT_EQ(m_commands.ReferencePosition().height, 0.0);
    EXPECT_TRUE(m_commands.GlonassCorrections());
    EXPECT_EQ(m_commands.LastError(), "");
}

TEST_F(CommandManager, reads_no_settings_before_it_is_told_to) {
    WriteSettings("gps_logging_enabled = 1\nionosphere_mode = 2\nsbas_prn = 122\n");
    const CCommandManager commands(m_config);
    EXPECT_FALSE(commands.GPSLoggingEnabled());
    EXPECT_EQ(commands.IonosphereMode(), 0U);
    EXPECT_EQ(commands.SBASPrn(), 0);
}

TEST_F(CommandManager, takes_nothing_from_records) {
    AttachConstellationManager();
    WriteSettings("sbas_prn = 122\n");
    m_commands.QueueCommand("waiting\r\n");
    for (const Bytes::Sentence& sentence :
         {Bytes::Sentence(Sentences::Version()), Bytes::Sentence(Sentences::BinaryLog(999))}) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_commands.NewRecord(record.get());
    }
    m_commands.NewRecord(nullptr);
    EXPECT_EQ(m_commands.SBASPrn(), 0);
    EXPECT_EQ(Configuration(), Lines{});
    EXPECT_EQ(TakePending(), Lines{"waiting\r\n"});
    EXPECT_EQ(m_source.done, Lines{});
}

TEST_F(CommandManager, gives_the_commands_in_the_order_in_which_they_were_queued) {
    m_commands.QueueCommand("first\r\n");
    m_commands.QueueCommand("second\r\n");
    EXPECT_EQ(m_commands.PendingCount(), 2U);
    EXPECT_EQ(m_commands.NextCommand(), "first\r\n");
    EXPECT_EQ(m_commands.PendingCount(), 1U);
    m_commands.QueueCommand("third\r\n");
    EXPECT_EQ(TakePending(), (Lines{"second\r\n", "third\r\n"}));
}

TEST_F(CommandManager, gives_the_empty_text_when_no_command_waits) {
    EXPECT_EQ(m_commands.NextCommand(), "");
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    m_commands.QueueCommand("x\r\n");
    EXPECT_EQ(m_commands.NextCommand(), "x\r\n");
    EXPECT_EQ(m_commands.NextCommand(), "");
}

TEST_F(CommandManager, queues_without_sending_and_without_keeping) {
    m_commands.QueueCommand("as it is");
    EXPECT_EQ(Configuration(), Lines{});
    EXPECT_EQ(m_source.done, Lines{});
    EXPECT_EQ(TakePending(), Lines{"as it is"});
}

TEST_F(CommandManager, queues_resets) {
    m_commands.Reset();
    m_commands.ResetPDPFilter();
    m_commands.ResetRTKFilter();
    EXPECT_EQ(TakePending(), (Lines{"RESET\r\n", "pdpfilter reset\r\n", "rtkcommand reset\r\n"}));
    EXPECT_EQ(Configuration(), Lines{});
    EXPECT_EQ(m_source.done, Lines{});
}

TEST_F(CommandManager, queues_resets_without_a_source) {
    m_commands.SetByteSource(nullptr);
    m_commands.Reset();
    EXPECT_EQ(TakePending(), Lines{"RESET\r\n"});
}

TEST_F(CommandManager, lets_a_derived_class_queue_and_send_otherwise) {
    CRecordingCommandManager commands(m_config);
    commands.Reset();
    commands.ResetPDPFilter();
    commands.ResetRTKFilter();
    EXPECT_EQ(commands.queued, (Lines{"RESET\r\n", "pdpfilter reset\r\n", "rtkcommand reset\r\n"}));
    commands.FactoryReset();
    EXPECT_EQ(commands.sent, Lines{"FRESET STANDARD\r\n"});
}

TEST_F(CommandManager, sends_at_once_and_keeps_the_command) {
    EXPECT_TRUE(m_commands.SendCommand("log com1 bestposb once\r\n"));
    EXPECT_TRUE(m_commands.SendCommand("as it is"));
    EXPECT_EQ(m_source.done, (Lines{"write log com1 bestposb once\r\n", "write as it is"}));
    EXPECT_EQ(Configuration(), (Lines{"log com1 bestposb once\r\n", "as it is"}));
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(CommandManager, keeps_a_sent_command_behind_the_configuration) {
    m_commands.BuildConfiguration();
    m_commands.SendCommand("x\r\n");
    Lines expected = ExpectedCommands({});
    expected.emplace_back("x\r\n");
    EXPECT_EQ(Configuration(), expected);
}

TEST_F(CommandManager, opens_a_closed_source_before_it_sends) {
    m_source.isOpen = false;
    EXPECT_TRUE(m_commands.SendCommand("x\r\n"));
    EXPECT_EQ(m_source.done, (Lines{"open", "write x\r\n"}));
}

TEST_F(CommandManager, sends_even_when_its_source_does_not_open) {
    m_source.isOpen = false;
    m_source.canOpen = false;
    m_source.canWrite = false;
    EXPECT_TRUE(m_commands.SendCommand("x\r\n"));
    EXPECT_EQ(m_source.done, (Lines{"open", "write x\r\n"}));
}

TEST_F(CommandManager, keeps_a_command_that_it_cannot_send_without_a_source) {
    m_commands.SetByteSource(nullptr);
    EXPECT_FALSE(m_commands.SendCommand("x\r\n"));
    EXPECT_EQ(Configuration(), Lines{"x\r\n"});
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(CommandManager, replays_the_whole_configuration_behind_what_waits) {
    m_commands.BuildConfiguration();
    m_commands.QueueCommand("waiting\r\n");
    EXPECT_TRUE(m_commands.ReplayConfiguration());
    Lines expected = ExpectedCommands({});
    EXPECT_EQ(m_commands.PendingCount(), 62U);
    expected.insert(expected.begin(), "waiting\r\n");
    EXPECT_EQ(TakePending(), expected);
    EXPECT_EQ(m_source.done, Lines{});
}

TEST_F(CommandManager, replays_nothing_without_a_source) {
    m_commands.BuildConfiguration();
    m_commands.SetByteSource(nullptr);
    EXPECT_FALSE(m_commands.ReplayConfiguration());
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(Configuration(), ExpectedCommands({}));
}

TEST_F(CommandManager, opens_a_closed_source_before_it_replays) {
    m_commands.BuildConfiguration();
    m_source.isOpen = false;
    m_source.canOpen = false;
    EXPECT_TRUE(m_commands.ReplayConfiguration());
    EXPECT_EQ(m_source.done, Lines{"open"});
    EXPECT_EQ(TakePending(), ExpectedCommands({}));
}

TEST_F(CommandManager, traces_every_command_that_it_replays) {
    m_commands.SendCommand("log com1 bestposb once\r\n");
    m_commands.SendCommand("100%s\r\n");
    Trace("");
    testing::internal::CaptureStderr();
    m_commands.ReplayConfiguration();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Queueing Novatel Command 'log com1 bestposb once\r\n'\n"
              "Queueing Novatel Command '100%s\r\n'\n");
}

TEST_F(CommandManager, replays_commands_for_once_only_once) {
    for (const std::string command :
         {"selectchanconfig 3\r\n", "SELECTCHANCONFIG 3\r\n", "xSelectChanConfigx",
          "FRESET STANDARD\r\n", "freset\r\n", "RESET\r\n", "Reset 5\r\n", "rtkcommand reset\r\n",
          "pdpfilter reset\r\n", "SOFTLOADRESET\r\n", "log presetb once\r\n", "a rEsEt b"}) {
        m_commands.SendCommand(command);
        m_commands.ReplayConfiguration();
        EXPECT_EQ(TakePending(), Lines{command});
        EXPECT_EQ(Configuration(), Lines{});
        m_commands.ReplayConfiguration();
        EXPECT_EQ(TakePending(), Lines{}) << command;
    }
}

TEST_F(CommandManager, replays_every_other_command_always) {
    const Lines commands = {"log com1 bestposb once\r\n",
                            "select chanconfig 3\r\n",
                            "LOG CHANCONFIGLISTB ONCE\r\n",
                            "RES ET\r\n",
                            "rese\r\n",
                            "selectchanconfi 3\r\n",
                            "\r\n",
                            ""};
    for (const std::string& command : commands) {
        m_commands.SendCommand(command);
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_commands.ReplayConfiguration());
        EXPECT_EQ(TakePending(), commands);
        EXPECT_EQ(Configuration(), commands);
    }
}

TEST_F(CommandManager, keeps_the_order_of_what_stays) {
    for (const std::string command : {"1", "reset", "2", "FRESET", "selectchanconfig 1", "3"}) {
        m_commands.SendCommand(command);
    }
    m_commands.ReplayConfiguration();
    EXPECT_EQ(Configuration(), (Lines{"1", "2", "3"}));
}

TEST_F(CommandManager, resets_the_rtk_filter_only_with_the_first_replay_after_a_build) {
    m_commands.BuildConfiguration();
    m_commands.ReplayConfiguration();
    TakePending();
    m_commands.ReplayConfiguration();
    EXPECT_EQ(TakePending(), WithoutReset(ExpectedCommands({})));
    m_commands.BuildConfiguration();
    m_commands.ReplayConfiguration();
    EXPECT_EQ(TakePending(), ExpectedCommands({}));
}

TEST_F(CommandManager, leaves_no_reset_in_the_configuration_after_a_reset_and_a_replay) {
    m_commands.ResetRTKFilter();
    m_commands.ReplayConfiguration();
    EXPECT_EQ(Configuration(), Lines{});
    EXPECT_EQ(TakePending(), Lines{"rtkcommand reset\r\n"});
}

TEST_F(CommandManager, resets_the_receiver_to_its_factory_settings_and_replays) {
    m_commands.BuildConfiguration();
    EXPECT_TRUE(m_commands.FactoryReset());
    EXPECT_EQ(m_source.done, Lines{"write FRESET STANDARD\r\n"});
    Lines expected = ExpectedCommands({});
    expected.emplace_back("FRESET STANDARD\r\n");
    EXPECT_EQ(TakePending(), expected);
    EXPECT_EQ(Configuration(), WithoutReset(ExpectedCommands({})));
}

TEST_F(CommandManager, has_reset_to_factory_settings_even_without_a_source) {
    m_commands.SetByteSource(nullptr);
    EXPECT_TRUE(m_commands.FactoryReset());
    EXPECT_EQ(Configuration(), Lines{"FRESET STANDARD\r\n"});
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(CommandManager, asks_for_the_receivers_information_with_a_pause_after_each_command) {
    static CFakeByteSource* source = nullptr;
    source = &m_source;
    m_clock.AtPause([] { source->done.emplace_back("pause"); });
    m_commands.RequestReceiverInformation(50000);
    EXPECT_EQ(m_source.done,
              (Lines{"write LOG CHANCONFIGLISTB ONCE\r\n", "pause", "write LOG LOGLISTB ONCE\r\n",
                     "pause", "write LOG RXCONFIGB ONCE\r\n", "pause"}));
    EXPECT_EQ(m_clock.Pauses(), std::vector<Core::Time>(3, Core::Time::FromMilliseconds(50)));
    EXPECT_EQ(Configuration(), (Lines{"LOG CHANCONFIGLISTB ONCE\r\n", "LOG LOGLISTB ONCE\r\n",
                                      "LOG RXCONFIGB ONCE\r\n"}));
}

TEST_F(CommandManager, pauses_as_many_microseconds_as_it_is_told) {
    m_commands.RequestReceiverInformation(4'294'967'295U);
    EXPECT_EQ(m_clock.Pauses(),
              std::vector<Core::Time>(3, Core::Time::FromNanoseconds(4'294'967'295'000)));
}

TEST_F(CommandManager, tells_the_constellation_manager_the_selected_channel_configuration) {
    const CConstellationManager& constellation = AttachConstellationManager();
    const std::vector<std::pair<std::string, int>> rows = {
        {"selectchanconfig 3\r\n", 3},   {"selectchanconfig 4", 4},
        {"selectchanconfig 5 more", 5},  {"selectchanconfig 6 7\r\n", 6},
        {"selectchanconfig -1\r\n", -1}, {"selectchanconfig 0\r\n", 0}};
    for (const auto& [command, number] : rows) {
        m_commands.InspectCommand(command);
        EXPECT_EQ(constellation.CurrentConfiguration(), number) << command;
    }
}

TEST_F(CommandManager, tells_the_constellation_manager_nothing_of_other_commands) {
    WriteSettings("current_channel_configuration = 9\n");
    const CConstellationManager& constellation = AttachConstellationManager();
    ASSERT_EQ(constellation.CurrentConfiguration(), 9);
    for (const std::string command :
         {"selectchanconfig", "selectchanconfig ", "selectchanconfig\r\n", "selectchanconfig x\r\n",
          "selectchanconfig  3\r\n", " selectchanconfig 3\r\n", "SELECTCHANCONFIG 3\r\n",
          "Selectchanconfig 3\r\n", "selectchanconfig\t3\r\n", "selectchanconfigs 3\r\n",
          "selectchanconfi 3\r\n", "log selectchanconfig 3\r\n", "selectchanconfig x 3\r\n",
          "selectchanconfig 99999999999\r\n", "3 selectchanconfig", "3", ""}) {
        m_commands.InspectCommand(command);
        EXPECT_EQ(constellation.CurrentConfiguration(), 9) << command;
    }
}

TEST_F(CommandManager, inspects_commands_without_a_constellation_manager) {
    m_commands.InspectCommand("selectchanconfig 3\r\n");
    EXPECT_EQ(SettingsFile(), "");
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(Configuration(), Lines{});
}

TEST_F(CommandManager, does_not_send_or_keep_what_it_inspects) {
    AttachConstellationManager();
    m_commands.InspectCommand("selectchanconfig 3\r\n");
    EXPECT_EQ(m_source.done, Lines{});
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(Configuration(), Lines{});
}
