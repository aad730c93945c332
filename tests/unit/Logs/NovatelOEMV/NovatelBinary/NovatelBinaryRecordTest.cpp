#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"

#include "Support/BinarySentence.h"

#include <gtest/gtest.h>

using Novatel::CNovatelBinaryRecord;
using Novatel::SNovatelHeader;
using Sentences::BinaryLog;

namespace {

Bytes::Sentence EveryHeaderFieldSet() {
    return BinaryLog(0x0102)
        .messageType(0x03)
        .portAddress(0x04)
        .messageLength(0x0506)
        .sequence(0x0708)
        .idleTime(0x09)
        .timeStatus(0x0A)
        .week(0x0B0C)
        .milliseconds(0x0D0E0F10)
        .receiverStatus(0x91121314)
        .reserved(0x1516)
        .softwareVersion(0x1718)
        .bodySize(8);
}

struct SHeaderField {
    std::size_t end; ///< the offset behind the field
    std::uint32_t value;
    std::uint32_t (*get)(const SNovatelHeader&);
};

const SHeaderField kHeaderFields[] = {
    {1, 0xAA, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_sync[0]; }},
    {2, 0x44, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_sync[1]; }},
    {3, 0x12, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_sync[2]; }},
    {4, 28, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_headerLength; }},
    {6, 0x0102, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_messageID; }},
    {7, 0x03, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_messageType; }},
    {8, 0x04, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_portAddress; }},
    {10, 0x0506, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_messageLength; }},
    {12, 0x0708, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_sequence; }},
    {13, 0x09, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_idleTime; }},
    {14, 0x0A, [](const SNovatelHeader& h) { return static_cast<std::uint32_t>(h.m_timeStatus); }},
    {16, 0x0B0C, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_week; }},
    {20, 0x0D0E0F10, [](const SNovatelHeader& h) { return h.m_milliseconds; }},
    {24, 0x91121314, [](const SNovatelHeader& h) { return h.m_receiverStatus; }},
    {26, 0x1516, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_reserved; }},
    {28, 0x1718, [](const SNovatelHeader& h) -> std::uint32_t { return h.m_softwareVersion; }},
};

bool GPSTimeCounts(const CNovatelBinaryRecord& record) {
    std::uint32_t week = 0;
    double seconds = 0;
    return record.GetGPSTime(week, seconds);
}

} // namespace

TEST(NovatelBinaryRecord, decodes_every_field_of_its_header) {
    const CNovatelBinaryRecord record(EveryHeaderFieldSet());
    for (const SHeaderField& field : kHeaderFields) {
        EXPECT_EQ(field.get(record.GetHeader()), field.value) << "ending at " << field.end;
    }
}

TEST(NovatelBinaryRecord, has_zero_for_every_header_field_that_a_short_sentence_lacks) {
    const Bytes::Sentence whole = EveryHeaderFieldSet();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const CNovatelBinaryRecord record(Bytes::Sentence(whole.data(), whole.data() + size));
        for (const SHeaderField& field : kHeaderFields) {
            EXPECT_EQ(field.get(record.GetHeader()), field.end <= size ? field.value : 0U)
                << "ending at " << field.end << " of " << size;
        }
    }
}

TEST(NovatelBinaryRecord, gives_its_GPS_time_as_week_and_seconds) {
    const CNovatelBinaryRecord record(BinaryLog(999).week(1800).milliseconds(345600500));
    std::uint32_t week = 0;
    double seconds = 0;
    EXPECT_TRUE(record.GetGPSTime(week, seconds));
    EXPECT_EQ(week, 1800U);
    EXPECT_EQ(seconds, 345600.5);
}

TEST(NovatelBinaryRecord, offers_what_observers_need_of_the_header) {
    const CNovatelBinaryRecord record(EveryHeaderFieldSet());
    EXPECT_EQ(record.GetMessageID(), 0x0102);
    EXPECT_EQ(record.GetWeek(), 0x0B0C);
    EXPECT_EQ(record.GetSecondsOfWeek(), 0x0D0E0F10 / 1000.0);
    EXPECT_EQ(record.GetReceiverStatus(), 0x91121314U);
    EXPECT_EQ(record.GetIdleTime(), 0x09);
}

TEST(NovatelBinaryRecord, is_valid_when_its_CRC_is_right) {
    const CNovatelBinaryRecord record{BinaryLog(999)};
    EXPECT_TRUE(record.IsValid());
    EXPECT_TRUE(GPSTimeCounts(record));
}

TEST(NovatelBinaryRecord, is_not_valid_when_its_CRC_is_wrong) {
    const CNovatelBinaryRecord record(BinaryLog(999).wrongCRC());
    EXPECT_FALSE(record.IsValid());
    EXPECT_FALSE(GPSTimeCounts(record));
}

TEST(NovatelBinaryRecord, still_gives_the_time_of_a_header_with_a_wrong_CRC) {
    const CNovatelBinaryRecord record(BinaryLog(999).week(1800).milliseconds(1500).wrongCRC());
    std::uint32_t week = 0;
    double seconds = 0;
    EXPECT_FALSE(record.GetGPSTime(week, seconds));
    EXPECT_EQ(week, 1800U);
    EXPECT_EQ(seconds, 1.5);
}

TEST(NovatelBinaryRecord, believes_a_caller_who_has_checked_the_CRC) {
    const CNovatelBinaryRecord record(BinaryLog(999).wrongCRC(), ECRCCheck::alreadyPassed);
    EXPECT_TRUE(record.IsValid());
    EXPECT_TRUE(GPSTimeCounts(record));
}

TEST(NovatelBinaryRecord, is_not_valid_without_room_for_a_CRC) {
    for (std::size_t size = 0; size < 4; ++size) {
        EXPECT_FALSE(CNovatelBinaryRecord(Bytes::Sentence(size)).IsValid()) << size;
    }
}
