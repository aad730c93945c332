#include "Logs/NovatelOEMV/NovatelASCIIRecord.h"

#include "Support/TextSentences.h"

#include <gtest/gtest.h>

using Novatel::CNovatelASCIIRecord;
using Sentences::AsciiLog;
using Sentences::BytesOf;

namespace {

/// An ASCII log with a binary CRC behind it, which no receiver sends.
Bytes::Sentence WithBinaryCRC(Bytes::Sentence sentence) {
    Sentences::CByteWriter writer;
    writer.bytes = sentence;
    writer.U32(sentence.size(), Sentences::CRC32(sentence));
    return writer.bytes;
}

} // namespace

TEST(NovatelASCIIRecord, finds_the_log_s_name_between_the_first_character_and_the_first_comma) {
    EXPECT_EQ(CNovatelASCIIRecord::LogName(BytesOf("#BESTPOSA,COM1,0")), "BESTPOSA");
}

TEST(NovatelASCIIRecord, finds_no_name_without_a_comma) {
    EXPECT_EQ(CNovatelASCIIRecord::LogName(BytesOf("#SOFTLOADSTATUSA")), "");
    EXPECT_EQ(CNovatelASCIIRecord::LogName(BytesOf("#")), "");
    EXPECT_EQ(CNovatelASCIIRecord::LogName({}), "");
}

TEST(NovatelASCIIRecord, finds_an_empty_name_when_the_comma_comes_too_early) {
    EXPECT_EQ(CNovatelASCIIRecord::LogName(BytesOf(",A,")), "");
    EXPECT_EQ(CNovatelASCIIRecord::LogName(BytesOf("#,A,")), "");
}

TEST(NovatelASCIIRecord, knows_the_identifier_of_the_soft_load_status_alone) {
    EXPECT_EQ(CNovatelASCIIRecord::MessageIDOf("SOFTLOADSTATUSA"), 1235);
    EXPECT_EQ(CNovatelASCIIRecord::MessageIDOf("SOFTLOADSTATUS"), -1);
    EXPECT_EQ(CNovatelASCIIRecord::MessageIDOf("softloadstatusa"), -1);
    EXPECT_EQ(CNovatelASCIIRecord::MessageIDOf("BESTPOSA"), -1);
    EXPECT_EQ(CNovatelASCIIRecord::MessageIDOf(""), -1);
}

TEST(NovatelASCIIRecord, has_the_identifier_of_its_name) {
    EXPECT_EQ(CNovatelASCIIRecord(AsciiLog("SOFTLOADSTATUSA", "COMPLETE")).GetMessageID(), 1235);
    EXPECT_EQ(CNovatelASCIIRecord(AsciiLog("BESTPOSA", "")).GetMessageID(), 65535);
}

TEST(NovatelASCIIRecord, has_a_header_of_zeros_but_for_its_identifier) {
    const CNovatelASCIIRecord record(AsciiLog("SOFTLOADSTATUSA", "COMPLETE"));
    std::uint32_t week = 1;
    double seconds = 1;
    record.GetGPSTime(week, seconds);
    EXPECT_EQ(week, 0U);
    EXPECT_EQ(seconds, 0.0);
    EXPECT_EQ(record.GetWeek(), 0);
    EXPECT_EQ(record.GetSecondsOfWeek(), 0.0);
    EXPECT_EQ(record.GetReceiverStatus(), 0U);
    EXPECT_EQ(record.GetIdleTime(), 0);
    const Novatel::SNovatelHeader& header = record.GetHeader();
    EXPECT_EQ(header.m_sync, (std::array<std::uint8_t, 3>{}));
    EXPECT_EQ(header.m_headerLength, 0);
    EXPECT_EQ(header.m_messageType, 0);
    EXPECT_EQ(header.m_portAddress, 0);
    EXPECT_EQ(header.m_messageLength, 0);
    EXPECT_EQ(header.m_sequence, 0);
    EXPECT_EQ(static_cast<std::uint32_t>(header.m_timeStatus), 0U);
    EXPECT_EQ(header.m_reserved, 0);
    EXPECT_EQ(header.m_softwareVersion, 0);
}

TEST(NovatelASCIIRecord, is_not_valid_with_its_own_checksum_right) {
    const CNovatelASCIIRecord record(AsciiLog("SOFTLOADSTATUSA", "COMPLETE"));
    std::uint32_t week = 0;
    double seconds = 0;
    EXPECT_FALSE(record.IsValid());
    EXPECT_FALSE(record.GetGPSTime(week, seconds));
}

TEST(NovatelASCIIRecord, is_valid_by_the_binary_CRC) {
    const CNovatelASCIIRecord record(WithBinaryCRC(AsciiLog("SOFTLOADSTATUSA", "COMPLETE")));
    std::uint32_t week = 0;
    double seconds = 0;
    EXPECT_TRUE(record.IsValid());
    EXPECT_TRUE(record.GetGPSTime(week, seconds));
}
