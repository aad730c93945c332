#include "Logs/GPSRecord.h"

#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSTATB.h"
#include "Logs/StoppedWallClock.h"
#include "Support/LogSentences.h"

#include <gtest/gtest.h>

namespace {

const Core::Time kReceived = Core::Time::FromMilliseconds(1'400'000'000'250);

std::unique_ptr<CGPSRecord> RecordReceivedThen() {
    const CStoppedWallClock clock(kReceived);
    return std::make_unique<Novatel::CNovatelPDPSTATB>(Sentences::Pdpstat());
}

} // namespace

TEST(GPSRecord, writes_its_reception_time_in_seconds_and_returns_0) {
    double seconds = 0;
    EXPECT_EQ(RecordReceivedThen()->GetReceptionTime(seconds), 0);
    EXPECT_DOUBLE_EQ(seconds, 1400000000.25);
}

TEST(GPSRecord, returns_its_reception_time_in_seconds) {
    EXPECT_DOUBLE_EQ(RecordReceivedThen()->GetReceptionSeconds(), 1400000000.25);
}

TEST(GPSRecord, writes_its_reception_time_as_a_moment) {
    Core::UnixTime time;
    RecordReceivedThen()->GetReceptionUnixTime(time);
    EXPECT_EQ(time, Core::UnixTime(kReceived));
}

TEST(GPSRecord, takes_the_clock_s_time_when_it_is_made) {
    const Core::UnixTime before = Core::UnixTime::Now();
    const Novatel::CNovatelPDPSTATB record{Sentences::Pdpstat()};
    const Core::UnixTime after = Core::UnixTime::Now();
    Core::UnixTime time;
    record.GetReceptionUnixTime(time);
    EXPECT_LE(before, time);
    EXPECT_LE(time, after);
}

TEST(GPSRecord, keeps_its_reception_time_and_contents_in_a_copy) {
    const auto record = RecordReceivedThen();
    const auto copy = dynamic_cast<const Novatel::CNovatelPDPSTATB&>(*record);
    EXPECT_DOUBLE_EQ(copy.GetReceptionSeconds(), 1400000000.25);
    EXPECT_EQ(copy.GetMessageID(), 1085);
    EXPECT_TRUE(copy.IsValid());
}
