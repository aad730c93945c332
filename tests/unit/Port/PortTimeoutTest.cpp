#include "Port/PortHandlerTesting.h"

namespace {

using Sentences::Bestpos;
using Texts = std::vector<std::string>;

constexpr char kResetting[] = "CorvanePortTimeout resetting receiver";
constexpr char kSettingUp[] = "CorvanePortTimeout reset sleep complete, setting up receiver";

class PortTimeout : public PortHandler {
protected:
    using PortHandler::PortHandler;

    int TimeoutDiagnostics() const {
        return m_published.Count(
            R"(diagnostics.raise "name":"Port","code":90001,"sub":0,"value":1)");
    }
    int RepeatDiagnostics() const {
        return m_published.Count(
            R"(diagnostics.raise "name":"Port","code":90002,"sub":0,"value":1)");
    }
};

class ShortPortTimeout : public PortTimeout {
protected:
    ShortPortTimeout() : PortTimeout("[Corvane]\nserial_port_timeout = 2\n") {}
};

} // namespace

TEST_F(PortTimeout, leaves_a_port_30_seconds_before_its_first_record) {
    Pass(29.99);
    EXPECT_EQ(Events(kResetting), 0);
    Pass(0.01);
    EXPECT_EQ(Events(kResetting), 1);
    EXPECT_EQ(TimeoutDiagnostics(), 1);
}

TEST_F(PortTimeout, resets_after_10_seconds_of_silence_by_default) {
    m_handler.Start();
    Pass(9.99);
    EXPECT_EQ(Events(kResetting), 0);
    Pass(0.01);
    EXPECT_EQ(Events(kResetting), 1);
}

TEST_F(ShortPortTimeout, takes_the_silence_allowed_from_the_configuration) {
    m_handler.Start();
    Pass(1.99);
    EXPECT_EQ(Events(kResetting), 0);
    Pass(0.01);
    EXPECT_EQ(Events(kResetting), 1);
}

TEST_F(PortTimeout, counts_every_record_as_a_sign_of_life) {
    m_handler.Start();
    Pass(9.0);
    Receive(Bestpos().bytes());
    Pass(9.99);
    EXPECT_EQ(Events(kResetting), 0);
    Pass(0.01);
    EXPECT_EQ(Events(kResetting), 1);
}

TEST_F(PortTimeout, does_not_count_bytes_rejected_or_unknown_sentences_as_a_sign_of_life) {
    m_handler.Start();
    Pass(9.0);
    Receive(std::string_view("noise"));
    Receive(Bestpos().wrongCRC().bytes());
    Receive(std::string(reinterpret_cast<const char*>(Sentences::AsciiLog("BESTPOSA", "x").data()),
                        Sentences::AsciiLog("BESTPOSA", "x").size()) +
            "\n");
    Pass(1.0);
    EXPECT_EQ(Events(kResetting), 1);
}

TEST_F(PortTimeout, neither_reads_nor_repeats_itself_while_the_receiver_resets) {
    m_handler.Start();
    Pass(10.0);
    m_source.Bring(Bestpos().bytes());
    m_clock.Advance(Core::Time::FromSeconds(29.9));
    EXPECT_TRUE(m_handler.HandlePort(true));
    EXPECT_EQ(m_source.reads, 0);
    EXPECT_EQ(Events(kResetting), 1);
    EXPECT_EQ(TimeoutDiagnostics(), 1);
    EXPECT_EQ(m_source.closes, 0);
}

TEST_F(PortTimeout, closes_the_source_and_initialises_again_30_seconds_after_the_reset) {
    m_handler.Start();
    Pass(10.0);
    Pass(30.0);
    EXPECT_EQ(Events(kSettingUp), 1);
    EXPECT_EQ(m_source.closes, 1);
    EXPECT_EQ(Status("receiver_initialisations"), (Texts{"1", "2"}));
    // The timer is armed again: the next silence starts from here.
    Pass(9.99);
    EXPECT_EQ(Events(kResetting), 1);
    Pass(0.01);
    EXPECT_EQ(Events(kResetting), 2);
}

TEST_F(PortTimeout, raises_a_diagnostic_from_the_tenth_initialisation_on) {
    for (int i = 0; i < 9; ++i) {
        m_handler.Start();
    }
    EXPECT_EQ(RepeatDiagnostics(), 0);
    m_handler.Start();
    EXPECT_EQ(RepeatDiagnostics(), 1);
    m_handler.Start();
    EXPECT_EQ(RepeatDiagnostics(), 2);
    EXPECT_EQ(Status("receiver_initialisations").back(), "11");
}
