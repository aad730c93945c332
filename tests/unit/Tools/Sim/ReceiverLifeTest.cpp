// Resets, start-up, faults and firmware of the simulated receiver.
#include "ReceiverTesting.h"

namespace {

using Sim::EPort;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr Sim::Milliseconds kBoot = Sim::CReceiver::kBootTime;

class SimReceiverLife : public CSimReceiver {
protected:
    struct SHeader {
        std::uint8_t idle;
        std::uint8_t timeStatus;
        std::uint16_t week;
        std::uint32_t status;
    };

    /// Of any log.
    SHeader Header() {
        const std::string said = Ask("log versionb once", EPort::usb3);
        const std::size_t at = said.find("\xAA\x44\x12");
        const Bytes::Sentence log(said.begin() + static_cast<std::ptrdiff_t>(at), said.end());
        return {log.at(12), log.at(13), Bytes::ReadUInt16(log, 14), Bytes::ReadUInt32(log, 20)};
    }
    std::uint32_t ErrorWord() { return Bytes::ReadUInt32(BodyOf("rxstatus"), 0); }
    std::uint32_t SetInUse() { return Bytes::ReadUInt32(BodyOf("chanconfiglist"), 0); }

    /// A whole load up to its commit.
    void Load() {
        Type("log softloadstatusa onchanged\r\n"
             "softloadreset\r\n"
             "softloadsrec \"S0~V~OEM060400RN0000\"\r\n"
             "softloadsrec \"S30600000000AA4F\"\r\n"
             "softloadcommit\r\n");
    }

    /// The states that were told, one behind the other with commas.
    std::string States() {
        std::string states;
        const std::string said = Said();
        for (std::size_t at = said.find("#SOFTLOADSTATUSA"); at != std::string::npos;
             at = said.find("#SOFTLOADSTATUSA", at + 1)) {
            const std::size_t begin = said.find(';', at) + 1;
            states += said.substr(begin, said.find('*', at) - begin) + ",";
        }
        return states;
    }
};

} // namespace

TEST_F(SimReceiverLife, a_reset_is_answered_and_then_it_is_silent) {
    ExpectOK("log timeb ontime 1");
    EXPECT_EQ(Ask("reset"), Answer("OK"));
    Pass(kBoot - 1);
    EXPECT_EQ(Said(), "");
    EXPECT_EQ(Ask("unlogall"), "");
    Pass(1);
    EXPECT_EQ(Said(), "\r\n[COM1]");
    EXPECT_EQ(Said(EPort::usb2), "\r\n[USB2]");
}

TEST_F(SimReceiverLife, a_reset_with_a_delay_waits_for_it) {
    ExpectOK("reset 5");
    Pass(4000);
    EXPECT_EQ(Ask("unlogall"), Answer("OK"));
    Pass(1000);
    EXPECT_EQ(Ask("unlogall"), "");
}

TEST_F(SimReceiverLife, a_reset_takes_speeds_modes_and_logs_back) {
    ExpectOK("com com2 115200");
    ExpectOK("interfacemode usb1 zq2 zq2");
    ExpectOK("log timeb ontime 1");
    ExpectOK("reset");
    Pass(kBoot);
    EXPECT_EQ(m_receiver->Baud(EPort::com2), 9600U);
    EXPECT_EQ(Ask("unlogall com3", EPort::usb1), Answer("OK", "USB1"));
    Said();
    Pass(5000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverLife, a_reset_leaves_what_was_saved_and_a_factory_reset_does_not) {
    ExpectOK("log timeb ontime 1");
    ExpectOK("com com2 115200");
    ExpectOK("saveconfig");
    ExpectOK("com com2 57600");
    ExpectOK("reset");
    Pass(kBoot + 1000);
    EXPECT_EQ(m_receiver->Baud(EPort::com2), 115200U);
    EXPECT_EQ(LogsIn(Said()).size(), 1U);
    ExpectOK("freset standard");
    Pass(kBoot + 2000);
    EXPECT_EQ(m_receiver->Baud(EPort::com2), 9600U);
    EXPECT_EQ(LogsIn(Said()).size(), 0U);
}

TEST_F(SimReceiverLife, a_start_is_without_time_then_without_satellites_then_without_integers) {
    ExpectOK("reset");
    Pass(kBoot);
    EXPECT_EQ(Header().timeStatus, 20);
    EXPECT_EQ(Header().week, 0);
    EXPECT_EQ(Header().status, 0x004C0000U);
    Pass(3000);
    EXPECT_EQ(Header().timeStatus, 180);
    EXPECT_EQ(Header().week, kWeek);
    EXPECT_EQ(Bytes::ReadUInt32(BodyOf("bestpos"), 0), 1U);
    EXPECT_EQ(Bytes::ReadUInt32(BodyOf("range"), 0), 0U);
    Pass(Sim::CReceiver::kAcquisitionTime - 3000);
    EXPECT_EQ(Header().status, 0U);
    EXPECT_EQ(Bytes::ReadUInt32(BodyOf("rtkxyz"), 4), 34U);
    Pass(Sim::CReceiver::kConvergenceTime);
    EXPECT_EQ(Bytes::ReadUInt32(BodyOf("rtkxyz"), 4), 50U);
}

TEST_F(SimReceiverLife, another_channel_configuration_starts_it_anew) {
    EXPECT_EQ(Ask("selectchanconfig 1"), Answer("OK"));
    Pass(1);
    EXPECT_EQ(Ask("selectchanconfig 4"), Answer("OK"));
    EXPECT_EQ(Ask("unlogall"), "");
    Pass(kBoot);
    EXPECT_EQ(SetInUse(), 4U);
    ExpectOK("reset");
    Pass(kBoot);
    EXPECT_EQ(SetInUse(), 4U) << "it is kept";
    ExpectOK("freset");
    Pass(kBoot);
    EXPECT_EQ(SetInUse(), 1U);
}

TEST_F(SimReceiverLife, a_channel_configuration_that_there_is_not_is_refused) {
    ExpectError("selectchanconfig 7", "Parameter 1 is out of range");
    ExpectError("selectchanconfig 0", "Parameter 1 is out of range");
    Start({.model = "L12LRVA"});
    ExpectError("selectchanconfig 3", "Parameter 1 is out of range");
    ExpectOK("selectchanconfig 2");
}

TEST_F(SimReceiverLife, a_fault_sets_its_bits_for_its_time) {
    Start({.faults = {{.at = 1000, .duration = 500, .statusBits = 0x80},
                      {.at = 1000, .duration = 500, .errorBits = 0x8000}}});
    EXPECT_EQ(Header().status, 0U);
    Pass(1000);
    EXPECT_EQ(Header().status, 0x81U) << "bit 0 tells of an error";
    EXPECT_EQ(Header().idle, 0) << "bit 7 is an overload of the processor";
    EXPECT_EQ(ErrorWord(), 0x8000U);
    Pass(500);
    EXPECT_EQ(Header().status, 0U);
    EXPECT_EQ(Header().idle, 130);
    EXPECT_EQ(ErrorWord(), 0U);
}

TEST_F(SimReceiverLife, a_load_tells_its_states_in_their_order) {
    Load();
    Pass(20'000);
    EXPECT_EQ(States(), "NOT_STARTED,READY_FOR_SETUP,READY_FOR_DATA,VERIFYING_DATA,DATA_VERIFIED,"
                        "WRITING_FLASH,WROTE_FLASH,WROTE_AUTHCODE,"
                        "WROTE_TRANSACTION_TABLE,COMPLETE,");
}

TEST_F(SimReceiverLife, a_load_runs_after_the_next_reset_and_not_before) {
    Load();
    EXPECT_EQ(ErrorWord(), 1U << 20U);
    Pass(20'000);
    EXPECT_EQ(ErrorWord(), 0U);
    EXPECT_THAT(Ask("log versiona"), HasSubstr("\"3.907\""));
    ExpectOK("freset");
    Pass(kBoot);
    EXPECT_THAT(Ask("log versiona"), HasSubstr("\"OEM060400RN0000\""));
    ExpectOK("log softloadstatusa onchanged");
}

TEST_F(SimReceiverLife, a_load_that_was_not_written_is_lost_with_a_reset) {
    Load();
    ExpectOK("reset");
    Pass(kBoot);
    EXPECT_THAT(Ask("log versiona"), HasSubstr("\"3.907\""));
    EXPECT_THAT(Ask("log softloadstatusa once"), HasSubstr(";NOT_STARTED*"));
}

TEST_F(SimReceiverLife, the_next_event_is_never_in_the_past) {
    ExpectOK("log timeb ontime 1");
    for (int step = 0; step < 5; ++step) {
        EXPECT_GT(m_receiver->NextEvent(), Moment());
        m_now += m_receiver->NextEvent() - Moment();
        m_receiver->Advance(Moment());
    }
    EXPECT_EQ(m_now, 5000);
    ExpectOK("unlogall");
    EXPECT_EQ(m_receiver->NextEvent(), Sim::kNever);
}
