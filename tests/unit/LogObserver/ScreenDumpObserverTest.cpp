#include "LogObserver/ScreenDumpObserver.h"

#include "Framing/RecordFactory.h"
#include "Logs/GPSRecord.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

std::string Dump(CGPSRecord* record) {
    testing::internal::CaptureStdout();
    CScreenDumpObserver().NewRecord(record);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string Dump(const Bytes::Sentence& sentence) {
    const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
    return Dump(record.get());
}

} // namespace

TEST(ScreenDump, prints_identifier_week_and_seconds_of_every_receiver_record) {
    EXPECT_EQ(Dump(Sentences::Bestpos().week(1800).milliseconds(345600500)),
              "ID = 42, size = 0, week = 1800, seconds = 345600.5\n");
    EXPECT_EQ(Dump(Sentences::BinaryLog(999).week(0).milliseconds(0)),
              "ID = 999, size = 0, week = 0, seconds = 0\n");
}

TEST(ScreenDump, prints_the_shortest_seconds_that_read_back_the_same) {
    EXPECT_EQ(Dump(Sentences::Bestpos().milliseconds(604799999)),
              "ID = 42, size = 0, week = 1800, seconds = 604799.999\n");
    EXPECT_EQ(Dump(Sentences::Bestpos().milliseconds(100)),
              "ID = 42, size = 0, week = 1800, seconds = 0.1\n");
}

TEST(ScreenDump, prints_round_seconds_without_an_exponent) {
    EXPECT_EQ(Dump(Sentences::Bestpos().milliseconds(400000000)),
              "ID = 42, size = 0, week = 1800, seconds = 400000\n");
}

TEST(ScreenDump, keeps_room_for_any_header) {
    EXPECT_EQ(Dump(Sentences::Bestpos().week(65535).milliseconds(4294967295U)),
              "ID = 42, size = 0, week = 65535, seconds = 4294967.295\n");
}

TEST(ScreenDump, prints_the_response_of_a_command) {
    EXPECT_EQ(Dump(Sentences::BinaryLog(1).messageType(0x80).u32(0, 1).text(4, "OK")),
              "ID = 1, size = 0, week = 1800, seconds = 345600.5\n"
              "Response: Log=1, ID=1: \"OK\"\n");
}

TEST(ScreenDump, prints_a_response_up_to_its_first_zero_byte) {
    EXPECT_EQ(Dump(Sentences::BinaryLog(1)
                       .messageType(0x80)
                       .u32(0, 4000000000U)
                       .text(4, std::string_view("a\0b", 3))),
              "ID = 1, size = 0, week = 1800, seconds = 345600.5\n"
              "Response: Log=1, ID=4000000000: \"a\"\n");
}

TEST(ScreenDump, prints_ascii_records_with_their_zero_header) {
    EXPECT_EQ(Dump(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")),
              "ID = 1235, size = 0, week = 0, seconds = 0\n");
}

TEST(ScreenDump, passes_over_nmea_sentences_and_null_records) {
    EXPECT_EQ(Dump(Sentences::Nmea("GPGSV,1")), "");
    EXPECT_EQ(Dump(nullptr), "");
}
