#include "Tools/Sim/EncoderTesting.h"

#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"
#include "Logs/NovatelOEMV/NovatelCOMCONFIG.h"
#include "Logs/NovatelOEMV/NovatelLBANDINFO.h"
#include "Logs/NovatelOEMV/NovatelLBANDSTAT.h"
#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"
#include "Logs/NovatelOEMV/NovatelVERSION.h"

#include <gmock/gmock.h>

using namespace SimTesting;
using testing::SizeIs;

namespace {

Sim::SReceiverInfo Info() {
    Sim::SReceiverInfo info;
    info.model = "L12LRVA";
    info.serialNumber = "DAB06210079";
    info.hardwareVersion = "OEMV3G-4.00-X2T"; // 15 characters: the field's whole width but one
    info.softwareVersion = "3.701";
    info.bootVersion = "3.001";
    info.compileDate = "2010/Apr/29";
    info.compileTime = "16:11:14";
    info.ports = {{.port = 1, .baud = 115200, .receiveMode = 14, .transmitMode = 0},
                  {.port = 15, .baud = 460800, .hasResponses = false}};
    return info;
}

} // namespace

TEST(EncoderReceiver, version_is_that_of_the_card) {
    const CDecoded<Novatel::CNovatelVERSION> log("VERSION", State(), Info());
    ASSERT_THAT(log->GetComponents(), SizeIs(1));
    const auto& card = log->GetComponents()[0];
    EXPECT_EQ(card.type, 1U);
    EXPECT_STREQ(card.model.c_str(), "L12LRVA");
    EXPECT_STREQ(card.serialNumber.c_str(), "DAB06210079");
    EXPECT_STREQ(card.hardwareVersion.c_str(), "OEMV3G-4.00-X2T");
    EXPECT_STREQ(card.softwareVersion.c_str(), "3.701");
    EXPECT_STREQ(card.bootVersion.c_str(), "3.001");
    EXPECT_STREQ(card.compileDate.c_str(), "2010/Apr/29");
    EXPECT_STREQ(card.compileTime.c_str(), "16:11:14");
}

TEST(EncoderReceiver, rxstatus_has_error_and_status_words) {
    Sim::SReceiverInfo info;
    info.errorWord = 0x00100000;
    info.statusWord = 0x00080001;
    const CDecoded<Novatel::CNovatelRXSTATUS> log("RXSTATUS", State(), info);
    EXPECT_EQ(log->GetErrorWord(), 0x00100000U);
    ASSERT_THAT(log->GetStatuses(), SizeIs(4));
    EXPECT_EQ(log->GetStatuses()[0].status, 0x00080001U);
    EXPECT_EQ(log->GetStatuses()[3].eventClearMask, 0x6FFU);
}

TEST(EncoderReceiver, comconfig_lists_the_ports_as_they_are_set) {
    const CDecoded<Novatel::CNovatelCOMCONFIG> log("COMCONFIG", State(), Info());
    ASSERT_THAT(log->GetPorts(), SizeIs(2));
    const auto& com = log->GetPorts()[0];
    EXPECT_EQ(com.port, 1U);
    EXPECT_EQ(com.baudRate, 115200U);
    EXPECT_EQ(com.parity, 0U);
    EXPECT_EQ(com.dataBits, 8U);
    EXPECT_EQ(com.stopBits, 1U);
    EXPECT_EQ(com.handshaking, 0U);
    EXPECT_FALSE(com.echo);
    EXPECT_TRUE(com.breakDetection);
    EXPECT_EQ(com.receiveMode, 14U);
    EXPECT_EQ(com.transmitMode, 0U);
    EXPECT_TRUE(com.responses);
    const auto& usb = log->GetPorts()[1];
    EXPECT_EQ(usb.port, 15U);
    EXPECT_EQ(usb.baudRate, 460800U);
    EXPECT_EQ(usb.receiveMode, 1U);
    EXPECT_EQ(usb.transmitMode, 1U);
    EXPECT_FALSE(usb.responses);
}

TEST(EncoderReceiver, chanconfiglist_lists_the_sets_and_the_one_in_use) {
    Sim::SReceiverInfo info;
    info.channelConfigurations = {{{14, 1}, {2, 4}, {12, 8}}, {{16, 7}}};
    info.channelConfigurationInUse = 2;
    const CDecoded<Novatel::CNovatelCHANCONFIGLIST> log("CHANCONFIGLIST", State(), info);
    EXPECT_EQ(log->GetSetInUse(), 2U);
    ASSERT_THAT(log->GetSets(), SizeIs(2));
    ASSERT_EQ(log->GetSets()[0].number_signals, 3U);
    EXPECT_EQ(log->GetSets()[0].signals[2].numberOfChannels, 12U);
    EXPECT_EQ(log->GetSets()[0].signals[2].signalType, 8U);
    ASSERT_EQ(log->GetSets()[1].number_signals, 1U);
    EXPECT_EQ(log->GetSets()[1].signals[0].signalType, 7U);
}

TEST(EncoderReceiver, the_l_band_channel_is_idle_and_without_subscription) {
    const CDecoded<Novatel::CNovatelLBANDINFO> info("LBANDINFO");
    EXPECT_EQ(info->GetFrequency(), 1547547000U);
    EXPECT_EQ(info->GetBaudRate(), 1200U);
    EXPECT_EQ(info->GetVBSSubscription().state, 0U);
    EXPECT_EQ(info->GetHPSubscription().state, 0U);
    const CDecoded<Novatel::CNovatelLBANDSTAT> status("LBANDSTAT");
    EXPECT_EQ(status->GetFrequency(), 1547547000U);
    EXPECT_EQ(status->GetCarrierToNoise(), 0.0F);
    EXPECT_EQ(status->GetSignalTracking().GetTrackingState(), 3U);
    EXPECT_TRUE(status->GetVBSStatus().IsSubscriptionExpired());
    EXPECT_TRUE(status->GetHPStatus().IsSubscriptionExpired());
    EXPECT_EQ(status->GetHPBytes(), 0U);
}

TEST(EncoderReceiver, softloadstatus_is_numbered_as_the_receiver_does) {
    Sim::SReceiverInfo info;
    EXPECT_EQ(Bytes::ReadUInt32(Binary("SOFTLOADSTATUS", State(), info), 28), 1U);
    info.softloadStatus = "COMPLETE";
    EXPECT_EQ(Bytes::ReadUInt32(Binary("SOFTLOADSTATUS", State(), info), 28), 8U);
    info.softloadStatus = "no such text";
    EXPECT_EQ(Bytes::ReadUInt32(Binary("SOFTLOADSTATUS", State(), info), 28), 16U);
}

TEST(EncoderReceiver, rxconfig_wraps_each_setting_s_own_command) {
    const auto logs = Framed<Novatel::CNovatelBinarySentenceConstructor>(
        Sim::EncodeBinary("RXCONFIG", State(), Info(), {}).value());
    ASSERT_THAT(logs, SizeIs(4)); // line and mode of two ports
    const std::uint16_t commands[] = {4, 3, 4, 3};
    for (std::size_t i = 0; i < logs.size(); ++i) {
        const Novatel::CNovatelBinaryRecord outer(logs[i]);
        EXPECT_EQ(outer.GetMessageID(), 128);
        EXPECT_EQ(outer.GetHeader().m_sequence, 3 - i);
        const Bytes::Sentence wrapped(logs[i].begin() + 28, logs[i].end() - 4);
        const Novatel::CNovatelBinaryRecord inner(wrapped);
        EXPECT_EQ(inner.GetMessageID(), commands[i]);
    }
    EXPECT_EQ(Bytes::ReadUInt32(logs[0], 56), 1U); // COM1
    EXPECT_EQ(Bytes::ReadUInt32(logs[0], 60), 115200U);
    EXPECT_EQ(Bytes::ReadUInt32(logs[1], 60), 14U); // takes RTCMV3
    EXPECT_EQ(Bytes::ReadUInt32(logs[1], 64), 0U);  // sends nothing
}

TEST(EncoderReceiver, rxconfig_of_no_port_is_empty) {
    EXPECT_EQ(Sim::EncodeBinary("RXCONFIG", State(), {}, {}), Sim::Bytes());
}
