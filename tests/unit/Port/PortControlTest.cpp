#include "Control/CommandManager.h"
#include "Control/SoftloadManager.h"
#include "Port/BreakoutController.h"
#include "Port/PortHandlerTesting.h"

namespace {

using Sentences::Bestpos;
using Texts = std::vector<std::string>;

std::string SoftloadStatus(const std::string& status) {
    const Bytes::Sentence sentence = Sentences::AsciiLog("SOFTLOADSTATUSA", status);
    return std::string(sentence.begin(), sentence.end()) + "\r\n";
}

class PortControl : public PortHandler {
protected:
    PortControl() {
        m_commands.SetByteSource(&m_source);
        m_handler.SetCommandManager(&m_commands);
        m_handler.SetUpgradeManager(&m_upgrade);
        m_observers.push_back(&m_upgrade);
    }

    void Queue(const std::string& command) { m_commands.QueueCommand(command); }
    void Pass(double seconds = 0.0) { PortHandler::Pass(seconds); }

    int Warnings(const std::string& text) const {
        return m_published.Count("\"level\":\"warning\",\"text\":\"" + text + "\"");
    }

    CCommandManager m_commands{m_config};
    CRemoteLogger m_logger{"Upgrade"};
    SoftloadManager m_upgrade{&m_source, m_logger};
};

} // namespace

TEST_F(PortControl, sends_one_waiting_command_a_pass_in_their_order) {
    Queue("first\r\n");
    Queue("second\r\n");
    Pass();
    EXPECT_EQ(m_source.texts, Texts{"first\r\n"});
    Pass();
    EXPECT_EQ(m_source.texts, (Texts{"first\r\n", "second\r\n"}));
    Pass();
    EXPECT_EQ(m_source.texts.size(), 2U);
}

TEST_F(PortControl, tells_each_command_as_a_warning) {
    Queue("log versionb once\r\n");
    Pass();
    EXPECT_EQ(Warnings(R"(Sending buffered command: log versionb once\r\n)"), 1);
}

TEST_F(PortControl, reads_nothing_in_a_pass_that_sends) {
    Queue("first\r\n");
    EXPECT_TRUE(Receive(Bestpos().bytes()));
    EXPECT_EQ(m_source.reads, 0);
    EXPECT_TRUE(m_handler.HandlePort(true));
    EXPECT_EQ(m_observer.messageIDs, std::vector<int>{42});
}

TEST_F(PortControl, looks_at_an_empty_queue_every_100_ms) {
    Pass();
    Queue("late\r\n");
    Pass(0.099);
    EXPECT_TRUE(m_source.texts.empty());
    Pass(0.001);
    EXPECT_EQ(m_source.texts, Texts{"late\r\n"});
}

TEST_F(PortControl, takes_no_command_while_earlier_bytes_wait) {
    Queue("first\r\n");
    m_source.hasWaitingBytes = true;
    Pass();
    EXPECT_TRUE(m_source.texts.empty());
    EXPECT_TRUE(Receive(Bestpos().bytes()));
    EXPECT_EQ(m_observer.messageIDs, std::vector<int>{42});
    m_source.hasWaitingBytes = false;
    Pass();
    EXPECT_EQ(m_source.texts, Texts{"first\r\n"});
}

TEST_F(PortControl, tells_the_command_manager_what_was_sent) {
    class CWitness : public CCommandManager {
    public:
        using CCommandManager::CCommandManager;
        void InspectCommand(const std::string& text) override { sent.push_back(text); }
        Texts sent;
    };
    CWitness commands(m_config);
    m_handler.SetCommandManager(&commands);
    commands.QueueCommand("selectchanconfig 3\r\n");
    Pass();
    EXPECT_EQ(commands.sent, Texts{"selectchanconfig 3\r\n"});
}

TEST_F(PortControl, sends_nothing_without_a_command_manager) {
    m_handler.SetCommandManager(nullptr);
    Queue("first\r\n");
    Pass();
    EXPECT_TRUE(m_source.texts.empty());
}

TEST_F(PortControl, queues_the_configuration_when_it_starts) {
    m_commands.BuildConfiguration();
    m_handler.Start();
    EXPECT_EQ(m_commands.PendingCount(), 61U);
    Pass();
    EXPECT_EQ(m_source.texts, Texts{"unlogall thisport\r\n"});
}

TEST_F(PortControl, breaks_out_before_it_counts_the_initialisation) {
    BreakoutController breakout(m_source, BreakoutController::softBreak);
    breakout.SetBaudRate(115200);
    m_handler.SetBreakoutController(&breakout);
    m_handler.SetCommandManager(nullptr);
    static const CPublished* published = nullptr;
    static int countedAtPauses = 0;
    published = &m_published;
    countedAtPauses = 0; // when the tests are repeated
    m_clock.AtPause([] { countedAtPauses += published->Count("receiver_initialisations"); });
    EXPECT_TRUE(m_handler.Start());
    EXPECT_EQ(m_source.texts.back(), "log comconfig\r\n");
    EXPECT_FALSE(m_clock.Pauses().empty());
    EXPECT_EQ(countedAtPauses, 0);
    EXPECT_EQ(Status("receiver_initialisations"), Texts{"1"});
}

TEST_F(PortControl, a_breakout_that_fails_does_not_keep_it_from_starting) {
    BreakoutController breakout(m_source, 7);
    m_handler.SetBreakoutController(&breakout);
    EXPECT_TRUE(m_handler.Start());
    EXPECT_EQ(Status("receiver_initialisations"), Texts{"1"});
}

TEST_F(PortControl, the_time_of_the_breakout_does_not_count_as_silence) {
    BreakoutController breakout(m_source, BreakoutController::softBreak);
    m_handler.SetBreakoutController(&breakout);
    m_handler.Start();
    Pass(9.99);
    EXPECT_EQ(Events("CorvanePortTimeout resetting receiver"), 0);
    Pass(0.01);
    EXPECT_EQ(Events("CorvanePortTimeout resetting receiver"), 1);
}

TEST_F(PortControl, a_silent_receiver_is_reset_at_once_and_set_up_again_after_30_s) {
    BreakoutController breakout(m_source, BreakoutController::lineBreak);
    m_handler.SetBreakoutController(&breakout);
    m_commands.SendCommand("log com1 bestposb once\r\n");
    m_handler.Start();
    Pass();
    Pass();
    m_source.texts.clear();
    m_source.done.clear();
    Pass(10.0);
    EXPECT_EQ(m_commands.PendingCount(), 1U);
    Pass(0.1); // the queue was just found empty
    EXPECT_EQ(m_source.texts, Texts{"RESET\r\n"});
    Pass(29.8);
    EXPECT_EQ(m_source.done, Texts{"write RESET\r\n"});
    Pass(0.1);
    m_source.done.resize(4);
    EXPECT_EQ(m_source.done, (Texts{"write RESET\r\n", "close", "open", "break 0.300000"}));
    EXPECT_EQ(Status("receiver_initialisations"), (Texts{"1", "2"}));
    Pass();
    EXPECT_EQ(m_source.texts.back(), "log com1 bestposb once\r\n");
}

TEST_F(PortControl, a_silent_port_is_left_alone_while_firmware_is_loaded) {
    Receive(SoftloadStatus("READY_FOR_DATA"));
    Pass(1000.0);
    Pass(1000.0);
    EXPECT_EQ(Events("CorvanePortTimeout resetting receiver"), 0);
}

TEST_F(PortControl, commands_wait_while_firmware_is_loaded) {
    Receive(SoftloadStatus("READY_FOR_DATA"));
    Queue("first\r\n");
    Pass(1.0);
    EXPECT_TRUE(m_source.texts.empty());
    Receive(SoftloadStatus("BAD_IMAGE_CRC"));
    Pass(1.0);
    EXPECT_EQ(m_source.texts, Texts{"first\r\n"});
}

TEST_F(PortControl, only_the_primary_handler_drives_a_load) {
    m_upgrade.StartUpgrade(m_folder.Write("firmware", "S0\n"));
    Receive(SoftloadStatus("READY_FOR_SETUP"));
    m_handler.SetPrimary(false);
    m_source.texts.clear();
    Pass();
    EXPECT_TRUE(m_source.texts.empty());
    m_handler.SetPrimary(true);
    Pass();
    EXPECT_EQ(m_source.texts, Texts{"SOFTLOADSREC \"S0\"\r\n"});
}

TEST_F(PortControl, ascii_sentences_during_a_load_are_told_and_dispatched) {
    Receive(SoftloadStatus("READY_FOR_DATA"));
    const std::string sentence = SoftloadStatus("DATA_VERIFIED");
    Receive(sentence);
    EXPECT_EQ(Events("sentence data during upgrade: " + sentence.substr(0, sentence.size() - 2)),
              1);
    EXPECT_EQ(m_observer.messageIDs, (std::vector<int>{1235, 1235}));
    Receive(Bestpos().bytes());
    EXPECT_EQ(m_published.Count("sentence data during upgrade"), 1);
}

TEST_F(PortControl, ascii_sentences_without_a_load_are_not_told) {
    Receive(SoftloadStatus("NOT_A_STATUS") + SoftloadStatus("BAD_SRECORD"));
    Receive(SoftloadStatus("BAD_SRECORD"));
    EXPECT_EQ(m_published.Count("sentence data during upgrade"), 0);
}
