#include "Logs/NMEARecord.h"

#include "Logs/NovatelOEMV/NovatelRecord.h"
#include "Logs/StoppedWallClock.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

using Sentences::Nmea;

TEST(NMEARecord, has_the_identifier_65535) {
    EXPECT_EQ(CNMEARecord(Nmea("GPZDA,")).GetMessageID(), 65535);
}

TEST(NMEARecord, hands_out_the_sentence_as_it_came) {
    const Bytes::Sentence sentence = Sentences::BytesOf({"$GP\0\xFF*00", 9});
    EXPECT_EQ(CNMEARecord(sentence).GetSentence(), sentence);
}

TEST(NMEARecord, has_the_GPS_time_of_its_reception) {
    // 2014-05-13 16:53:20.5 UTC, 16 leap seconds: GPS week 1792, Tuesday.
    const CStoppedWallClock clock(Core::Time::FromMilliseconds(1'400'000'000'500));
    const CNMEARecord record(Nmea("GPZDA,"));
    std::uint32_t week = 0;
    double seconds = 0;
    EXPECT_TRUE(record.GetGPSTime(week, seconds));
    EXPECT_EQ(week, 1792U);
    EXPECT_NEAR(seconds, 2 * 86400 + 16 * 3600 + 53 * 60 + 20.5 + 16, 1e-6);
}

TEST(NMEARecord, is_no_receiver_record) {
    const std::unique_ptr<CGPSRecord> record = std::make_unique<CNMEARecord>(Nmea("GPZDA,"));
    EXPECT_EQ(dynamic_cast<Novatel::CNovatelRecord*>(record.get()), nullptr);
}
