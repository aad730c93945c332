// What the simulated receiver answers, and what its commands change.
#include "ReceiverTesting.h"

#include "Support/BinarySentence.h"

namespace {

using Sim::EPort;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class SimReceiverCommand : public CSimReceiver {};

} // namespace

TEST_F(SimReceiverCommand, is_answered_with_the_prompt_of_its_port) {
    EXPECT_EQ(Ask("unlogall thisport"), "\r\n<OK\r\n[COM1]");
    EXPECT_EQ(Ask("unlogall thisport", EPort::usb2), "\r\n<OK\r\n[USB2]");
    EXPECT_EQ(Ask(""), "\r\n[COM1]");
}

TEST_F(SimReceiverCommand, that_does_not_exist_is_told_so) {
    ExpectError("frobnicate 1", "Invalid message ID");
    ExpectError("logg bestposb", "Invalid message ID");
}

TEST_F(SimReceiverCommand, with_wrong_arguments_is_refused_with_the_reason) {
    ExpectError("dynamics", "Message missing field");
    ExpectError("dynamics water", "Invalid message. Field = 1");
    ExpectError("dynamics air land", "Invalid message. Field = 2");
    ExpectError("rtktimeout 4", "Parameter 1 is out of range");
    ExpectError("rtktimeout 61", "Parameter 1 is out of range");
    ExpectError("sbascontrol enable waas 121 bad", "Invalid message. Field = 4");
    ExpectError("sbascontrol enable waas 119", "Parameter 3 is out of range");
    ExpectError("assign 31 auto", "Channel is invalid");
    ExpectError("ecutoff 91.0", "Parameter 1 is out of range");
    ExpectError("ecutoff low", "Invalid message. Field = 1");
    ExpectError("rtktimeout 5.5", "Invalid message. Field = 1");
    ExpectError("interfacemode usb1 novatel zq3", "Invalid message. Field = 3");
    ExpectError("interfacemode usb1 21 1", "Parameter 2 is out of range");
}

TEST_F(SimReceiverCommand, of_every_kind_that_has_no_effect_here_is_accepted) {
    for (const std::string command :
         {"psrdiffsource none", "psrdiffsource auto \"ANY\"", "rtksource auto",
          "rtkdynamics dynamic", "rtknetwork auto", "rtkqualitylevel extra_safe", "rtktimeout 60",
          "setionotype grid", "pdpmode relative auto", "dynamics air", "dynamics 2",
          "assign 0 idle", "ecutoff 5.5", "sbascontrol enable egnos 120 none",
          "sbascontrol disable auto 0"}) {
        EXPECT_EQ(Ask(command), Answer("OK")) << command;
    }
}

TEST_F(SimReceiverCommand, for_rtk_is_refused_by_a_model_without_it) {
    Start({.model = "LXGDMTS"});
    ExpectError("rtkcommand reset", "Message is invalid for this model");
    ExpectError("rtksource auto", "Message is invalid for this model");
    ExpectOK("psrdiffsource none");
}

TEST_F(SimReceiverCommand, com_changes_the_speed_behind_its_answer) {
    m_bauds.clear();
    EXPECT_EQ(Ask("com thisport 115200 n 8 1 n off on"), Answer("OK"));
    EXPECT_EQ(m_bauds, std::vector<std::uint32_t>{9600});
    EXPECT_EQ(m_receiver->Baud(EPort::com1), 115200U);
    EXPECT_EQ(Ask("com com2 460800"), Answer("OK"));
    EXPECT_EQ(m_receiver->Baud(EPort::com2), 460800U);
    EXPECT_EQ(m_receiver->Baud(EPort::com1), 115200U);
}

TEST_F(SimReceiverCommand, com_refuses_speeds_and_ports_that_there_are_not) {
    ExpectError("com 123", "Invalid baud rate");
    ExpectError("com 9601", "Invalid baud rate");
    ExpectError("com com3 460800", "Invalid baud rate");
    ExpectError("com usb1 9600", "COM port not supported");
    ExpectError("com com4 9600", "Unknown COM port requested");
    EXPECT_EQ(m_receiver->Baud(EPort::com1), 9600U);
}

TEST_F(SimReceiverCommand, that_stands_behind_a_change_of_speed_came_at_the_wrong_one) {
    Said();
    Type("com 115200\r\nunlogall\r\n");
    EXPECT_EQ(Said(), Answer("OK"));
}

TEST_F(SimReceiverCommand, echo_gives_back_what_is_typed) {
    ExpectOK("com 9600 n 8 1 n on");
    EXPECT_EQ(Ask("unlogall"), "unlogall\r\n" + Answer("OK"));
    EXPECT_EQ(Ask("com 9600 n 8 1 n off"), "com 9600 n 8 1 n off\r\n" + Answer("OK"));
    EXPECT_EQ(Ask("unlogall"), Answer("OK"));
}

TEST_F(SimReceiverCommand, is_not_understood_on_a_port_in_another_mode) {
    EXPECT_EQ(Ask("interfacemode zq2 zq2"), Answer("OK"));
    EXPECT_EQ(Ask("unlogall"), "");
    EXPECT_EQ(Ask("interfacemode com1 novatel novatel", EPort::usb1), Answer("OK", "USB1"));
    EXPECT_EQ(Ask("unlogall"), Answer("OK"));
}

TEST_F(SimReceiverCommand, is_not_answered_on_a_port_without_responses) {
    EXPECT_EQ(Ask("interfacemode novatel novatel off"), Answer("OK"));
    EXPECT_EQ(Ask("unlogall"), "");
    EXPECT_EQ(Ask(""), "");
    EXPECT_THAT(Ask("log versiona"), StartsWith("#VERSIONA,COM1,"));
}

TEST_F(SimReceiverCommand, escape_brings_a_port_back_to_9600_baud_and_without_logs) {
    ExpectOK("com 115200");
    ExpectOK("log gpzda ontime 1");
    ExpectOK("interfacemode zq2 zq2 off");
    Pass(1000);
    Type("+++");
    Pass(1000);
    Said();
    Type("+++\r\n");
    EXPECT_THAT(Said(), StartsWith("\r\n[COM1]"));
    EXPECT_EQ(m_receiver->Baud(EPort::com1), 9600U);
    EXPECT_EQ(Ask("unlogall com2"), Answer("OK"));
    Pass(5000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverCommand, escape_is_passed_over_where_commands_are_understood) {
    Pass(1500);
    Type("+++");
    Pass(1500);
    Type("+++\r\n");
    EXPECT_EQ(Said(), "");
    EXPECT_EQ(Ask("unlogall"), Answer("OK"));
}

TEST_F(SimReceiverCommand, is_lost_when_noise_comes_in_the_middle_of_it) {
    Type("unlog");
    m_receiver->HearNoise(EPort::com1, Moment());
    EXPECT_EQ(Ask("all"), Answer("ERROR:Invalid message ID"));
}

TEST_F(SimReceiverCommand, in_the_ascii_form_is_answered_in_it) {
    const std::string answer =
        Ask("#LOGA,THISPORT,0,0,UNKNOWN,0,0.0,0,0,0;COM1,BESTPOSB,ONTIME,1.0,0.0,NOHOLD*a2a23f0c");
    EXPECT_THAT(answer, StartsWith("\r\n#LOGR,COM1,0,65.0,FINESTEERING,2370,302480.000,00000000,"));
    const std::size_t begin = answer.find('#') + 1;
    const std::size_t star = answer.find('*');
    const std::string covered = answer.substr(begin, star - begin);
    EXPECT_EQ(covered.substr(covered.find(';')), ";OK");
    char crc[9];
    std::snprintf(crc, sizeof crc, "%08x",
                  Sentences::CRC32(Bytes::Sentence(covered.begin(), covered.end())));
    EXPECT_EQ(answer.substr(star), "*" + std::string(crc) + "\r\n[COM1]");
    Pass(1000);
    EXPECT_EQ(LogsIn(Said()).size(), 1U);
}

TEST_F(SimReceiverCommand, with_a_wrong_checksum_is_refused) {
    EXPECT_THAT(Ask("#UNLOGALLA,THISPORT,0,0,UNKNOWN,0,0.0,0,0,0;COM1*00000000"),
                HasSubstr(";ERROR:Invalid checksum*"));
}

TEST_F(SimReceiverCommand, in_binary_form_is_answered_in_it) {
    // LOG of BESTPOSB (42) on this port (192), every second: the receiver's manual, "LOG".
    Sentences::CByteWriter message;
    message.Text(0, "\xAA\x44\x12\x1C");
    message.U16(4, 1);
    message.U16(8, 32);
    message.U32(28, 192);
    message.U16(32, 42);
    message.U32(36, 2); // ONTIME
    message.F64(40, 1.0);
    message.F64(48, 0.0);
    message.U32(56, 0);
    message.U32(60, Sentences::CRC32(message.bytes));
    Type(std::string(message.bytes.begin(), message.bytes.end()));
    const std::string said = Said();
    ASSERT_EQ(said.size(), 28U + 4U + 2U + 4U);
    const Bytes::Sentence answer(said.begin(), said.end());
    EXPECT_EQ(Bytes::ReadUInt16(answer, 4), 1U);
    EXPECT_EQ(answer[6], 0x80);
    EXPECT_EQ(Bytes::ReadUInt32(answer, 28), 1U);
    EXPECT_EQ(said.substr(32, 2), "OK");
    Pass(1000);
    EXPECT_EQ(LogsIn(Said()), (std::vector<SSaidLog>{{42, kStart + 1000}}));
}

TEST_F(SimReceiverCommand, in_binary_form_has_numbers_for_names) {
    Sentences::CByteWriter message; // COM of COM2 (2): 57600 baud, N, 8, 1, N, OFF, ON
    message.Text(0, "\xAA\x44\x12\x1C");
    message.U16(4, 4);
    message.U16(8, 32);
    std::size_t at = 28;
    for (const std::uint32_t value : {2U, 57600U, 0U, 8U, 1U, 0U, 0U, 1U}) {
        message.U32(at, value);
        at += 4;
    }
    message.U32(at, Sentences::CRC32(message.bytes));
    Type(std::string(message.bytes.begin(), message.bytes.end()));
    EXPECT_EQ(m_receiver->Baud(EPort::com2), 57600U);
    EXPECT_EQ(Said().substr(32, 2), "OK");
}

TEST_F(SimReceiverCommand, in_binary_form_is_all_that_a_binary_port_understands) {
    ExpectOK("interfacemode novatelbinary novatel");
    EXPECT_EQ(Ask("unlogall"), "");
}
