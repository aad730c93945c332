#include "Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelCOMCONFIG;
using Novatel::CNovatelCOMCONFIGB;
using Sentences::Comconfig;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const char* const kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB:26: void "
    "Novatel::CNovatelCOMCONFIGB::ParseSentenceData(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&): Assertion `sentenceData.size() == "
    "(m_header.m_headerLength + 4 + (m_numberOfPorts * 44) + 4)' failed.";

/// Port i of a test, with values of its own in every field.
CNovatelCOMCONFIG::SPort Port(std::uint32_t i) {
    return {.port = 0x81000001 + i,
            .baudRate = 0x82000002 + i,
            .parity = 0x83000003 + i,
            .dataBits = 0x84000004 + i,
            .stopBits = 0x85000005 + i,
            .handshaking = 0x86000006 + i,
            .echo = i == 0,
            .breakDetection = i == 1,
            .receiveMode = 0x87000007 + i,
            .transmitMode = 0x88000008 + i,
            .responses = i == 2};
}

Comconfig ThreePorts() {
    return Comconfig().port(Port(0)).port(Port(1)).port(Port(2));
}

void ExpectPort(const CNovatelCOMCONFIG::SPort& actual, const CNovatelCOMCONFIG::SPort& expected) {
    EXPECT_EQ(actual.port, expected.port);
    EXPECT_EQ(actual.baudRate, expected.baudRate);
    EXPECT_EQ(actual.parity, expected.parity);
    EXPECT_EQ(actual.dataBits, expected.dataBits);
    EXPECT_EQ(actual.stopBits, expected.stopBits);
    EXPECT_EQ(actual.handshaking, expected.handshaking);
    EXPECT_EQ(actual.echo, expected.echo);
    EXPECT_EQ(actual.breakDetection, expected.breakDetection);
    EXPECT_EQ(actual.receiveMode, expected.receiveMode);
    EXPECT_EQ(actual.transmitMode, expected.transmitMode);
    EXPECT_EQ(actual.responses, expected.responses);
}

void ExpectThreePorts(const CNovatelCOMCONFIGB& log) {
    EXPECT_EQ(log.GetNumberOfPorts(), 3U);
    ASSERT_THAT(log.GetPorts(), SizeIs(3));
    for (std::uint32_t i = 0; i < 3; ++i) {
        ExpectPort(log.GetPorts()[i], Port(i));
    }
}

/// The one port of a log whose three booleans are sent as `value`.
CNovatelCOMCONFIG::SPort WithBooleans(std::uint32_t value) {
    constexpr std::size_t kBlock = 4;
    const CNovatelCOMCONFIGB log(Comconfig()
                                     .port({})
                                     .u32(kBlock + 24, value)
                                     .u32(kBlock + 28, value)
                                     .u32(kBlock + 40, value));
    return log.GetPorts().at(0);
}

} // namespace

TEST(NovatelCOMCONFIGB, decodes_every_field_of_every_port) {
    ExpectThreePorts(CNovatelCOMCONFIGB(ThreePorts()));
}

TEST(NovatelCOMCONFIGB, decodes_every_field_behind_a_long_header) {
    ExpectThreePorts(CNovatelCOMCONFIGB(ThreePorts().headerLength(32)));
}

TEST(NovatelCOMCONFIGB, takes_1_alone_for_true) {
    for (const std::uint32_t value : {0U, 2U, 3U, 0x00000100U, 0x80000001U, 0xFFFFFFFFU}) {
        const auto port = WithBooleans(value);
        EXPECT_FALSE(port.echo) << value;
        EXPECT_FALSE(port.breakDetection) << value;
        EXPECT_FALSE(port.responses) << value;
    }
    EXPECT_TRUE(WithBooleans(1).echo);
    EXPECT_TRUE(WithBooleans(1).breakDetection);
    EXPECT_TRUE(WithBooleans(1).responses);
}

TEST(NovatelCOMCONFIGB, accepts_no_ports) {
    EXPECT_THAT(CNovatelCOMCONFIGB(Comconfig()).GetPorts(), IsEmpty());
}

TEST(NovatelCOMCONFIGBDeathTest, fails_an_assertion_when_the_length_is_not_that_of_its_ports) {
    ExpectFailedAssertion(ThreePorts().announcing(2), kAssertion);
    ExpectFailedAssertion(ThreePorts().announcing(4), kAssertion);
    ExpectFailedAssertion(ThreePorts().bodySize(4 + 3 * 44 + 1), kAssertion);
    ExpectFailedAssertion(Comconfig().bodySize(3), kAssertion);
}

TEST(NovatelCOMCONFIGBDeathTest, fails_the_assertion_at_once_for_any_number_of_ports) {
    ExpectFailedAssertion(Comconfig().announcing(4294967295), kAssertion);
    // The size that 32 bits would take for right.
    ExpectFailedAssertion(Comconfig().announcing(0x40000000), kAssertion);
}
