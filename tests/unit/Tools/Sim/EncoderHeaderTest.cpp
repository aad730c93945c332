#include "Tools/Sim/EncoderTesting.h"

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryResponse.h"

#include <gmock/gmock.h>

using namespace SimTesting;
using Novatel::CNovatelBinaryRecord;
using testing::ElementsAre;

namespace {

struct SIdentifier {
    const char* name;
    std::uint16_t messageID;
    std::size_t size; ///< whole, of the state without any satellite
};

/// By the receiver's manual; sizes are 32 bytes around the body.
constexpr SIdentifier kIdentifiers[] = {
    {"VERSION", 37, 144},
    {"BESTPOS", 42, 104},
    {"RANGE", 43, 36},
    {"PSRPOS", 47, 104},
    {"TRACKSTAT", 83, 2248},
    {"RXSTATUS", 93, 104},
    {"TIME", 101, 76},
    {"RTKPOS", 141, 104},
    {"PSRDOP", 174, 60},
    {"REFSTATION", 175, 76},
    {"BESTXYZ", 241, 144},
    {"PSRXYZ", 243, 144},
    {"RTKXYZ", 244, 144},
    {"COMCONFIG", 317, 36},
    {"PDPPOS", 469, 104},
    {"PDPXYZ", 471, 144},
    {"OMNIHPPOS", 495, 104},
    {"LBANDINFO", 730, 76},
    {"LBANDSTAT", 731, 80},
    {"PDPSTAT", 1085, 76},
    {"CHANCONFIGLIST", 1148, 40},
    {"PSRSATS", 1162, 36},
    {"RTKSATS", 1174, 36},
    {"PDPSATS", 1234, 36},
    {"SOFTLOADSTATUS", 1235, 36},
};

Sim::SState StateWithoutSatellites() {
    Sim::SState state = State();
    state.satellites.clear();
    return state;
}

} // namespace

TEST(EncoderHeader, every_log_has_its_own_identifier_and_length) {
    for (const SIdentifier& log : kIdentifiers) {
        SCOPED_TRACE(log.name);
        const CDecoded<CNovatelBinaryRecord> record(log.name, StateWithoutSatellites());
        EXPECT_EQ(record->GetMessageID(), log.messageID);
        EXPECT_EQ(record->GetHeader().m_messageLength, log.size - 32);
        EXPECT_EQ(Binary(log.name, StateWithoutSatellites()).size(), log.size);
    }
}

TEST(EncoderHeader, carries_port_sequence_time_and_the_state_of_the_receiver) {
    Sim::SReceiverInfo info;
    info.statusWord = 0x004C0020;
    info.idleTime = 97;
    info.timeStatus = 120;
    info.softwareBuild = 5587;
    const CDecoded<CNovatelBinaryRecord> record("BESTXYZ", State(), info,
                                                {.portAddress = 0xA0, .sequence = 3});
    const Novatel::SNovatelHeader& header = record->GetHeader();
    EXPECT_THAT(header.m_sync, ElementsAre(0xAA, 0x44, 0x12));
    EXPECT_EQ(header.m_headerLength, 28);
    EXPECT_EQ(header.m_messageType, 0x02);
    EXPECT_EQ(header.m_portAddress, 0xA0);
    EXPECT_EQ(header.m_sequence, 3);
    EXPECT_EQ(header.m_idleTime, 97);
    EXPECT_EQ(header.m_timeStatus, Novatel::ETimeStatus::coarseSteering);
    EXPECT_EQ(header.m_week, 1828);
    EXPECT_EQ(header.m_milliseconds, 477312250U);
    EXPECT_EQ(header.m_receiverStatus, 0x004C0020U);
    EXPECT_EQ(header.m_reserved, 0xD821); // the check value of BESTXYZ
    EXPECT_EQ(header.m_softwareVersion, 5587);
}

TEST(EncoderHeader, a_receiver_in_normal_running_steers_its_clock) {
    const CDecoded<CNovatelBinaryRecord> record("TIME");
    EXPECT_EQ(record->GetHeader().m_timeStatus, Novatel::ETimeStatus::fineSteering);
    EXPECT_EQ(record->GetReceiverStatus(), 0U);
}

TEST(EncoderHeader, a_log_that_is_not_known_has_no_encoding) {
    EXPECT_EQ(Sim::EncodeBinary("RAWEPHEM", State(), {}, {}), std::nullopt);
    EXPECT_EQ(Sim::EncodeBinary("bestpos", State(), {}, {}), std::nullopt);
    EXPECT_EQ(Sim::EncodeASCII("BESTPOS", State(), {}, {}), std::nullopt);
    EXPECT_EQ(Sim::EncodeNMEA("GPALM", State()), std::nullopt);
}

TEST(EncoderHeader, a_body_made_elsewhere_is_framed_as_any_other) {
    const Sim::Bytes log = Sim::EncodeBinaryLog(5, {1, 2, 3}, State(), {}, {.portAddress = 0x40});
    const auto sentences = Framed<Novatel::CNovatelBinarySentenceConstructor>(log);
    ASSERT_THAT(sentences, ElementsAre(log));
    const CNovatelBinaryRecord record(log);
    EXPECT_EQ(record.GetMessageID(), 5);
    EXPECT_EQ(record.GetHeader().m_portAddress, 0x40);
    EXPECT_EQ(record.GetHeader().m_messageLength, 3);
    EXPECT_THAT(std::vector(log.begin() + 28, log.end() - 4), ElementsAre(1, 2, 3));
}

// As a receiver has sent it.
TEST(EncoderHeader, a_response_is_byte_for_byte_that_of_a_receiver) {
    const Sim::Bytes expected = {0xAA, 0x44, 0x12, 0x1C, 0x01, 0x00, 0x80, 0x20, 0x06, 0x00,
                                 0x00, 0x00, 0xFF, 0xB4, 0x97, 0x06, 0x1D, 0x3D, 0xFD, 0x18,
                                 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x01, 0x00,
                                 0x00, 0x00, 0x4F, 0x4B, 0xEA, 0x24, 0x78, 0x92};
    Sim::SState state;
    state.time = {1687, 0x18FD3D1D};
    EXPECT_EQ(Sim::EncodeResponse(1, 1, "OK", state, {}, {.portAddress = 0x20}), expected);
}

TEST(EncoderHeader, a_response_is_decoded_as_one) {
    const Sim::Bytes log = Sim::EncodeResponse(493, 11, "Parameter 1 is out of range", State(), {},
                                               {.portAddress = 0x60});
    const auto record = CreateRecord(log);
    const auto& response = dynamic_cast<const Novatel::CNovatelBinaryResponse&>(*record);
    EXPECT_EQ(response.GetMessageID(), 493);
    EXPECT_EQ(response.GetResponseID(), 11U);
    EXPECT_STREQ(response.GetResponseText().c_str(), "Parameter 1 is out of range");
    EXPECT_EQ(response.GetHeader().m_portAddress, 0x60);
}
