#include "LogObserver/ReceiverStatusTesting.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <limits>

using Sentences::Trackstat;

namespace {

constexpr std::uint32_t SignalType(std::uint32_t type) {
    return type << 21;
}

constexpr std::uint32_t kL1 = SignalType(0);
constexpr std::uint32_t kL2 = SignalType(9);
constexpr std::uint32_t kNoMeasurement = 99;

class ReceiverStatusTracks : public CReceiverStatusTesting {
protected:
    ReceiverStatusTracks() { Settle(); }

    /// What a TRACKSTAT publishes behind its counter.
    Lines Tracks(const Trackstat& log) {
        Lines lines = PublishedAt(log);
        EXPECT_THAT(lines.at(0), testing::HasSubstr("trackstat_messages"));
        lines.erase(lines.begin());
        return lines;
    }
    std::string SkyOf(const Trackstat& log) { return Tracks(log).back(); }
    std::string SkyOfNoise(float carrierToNoise) {
        return SkyOf(Trackstat().channel({.prn = 7, .carrierToNoise = carrierToNoise}));
    }
    static std::string Satellite(const std::string& prn, const std::string& cn0) {
        return "{\"prn\":" + prn + ",\"word1\":0,\"word2\":0,\"cn0\":" + cn0 + "}";
    }
};

class CWithoutPositionService : public CReceiverStatusObserver {
public:
    CWithoutPositionService() { m_positionAPI.reset(); }
};

void OfferWithoutPositionService() {
    ::unsetenv("CORVANE_TRACE");
    CWithoutPositionService observer;
    const std::unique_ptr<CGPSRecord> record(CreateRecord(Trackstat()));
    observer.NewRecord(record.get());
}

} // namespace

TEST_F(ReceiverStatusTracks, are_published_in_their_order) {
    EXPECT_EQ(PublishedAt(Trackstat()
                              .week(0)
                              .milliseconds(2500)
                              .channel({.prn = 1, .trackingStatus = kL1, .carrierToNoise = 44.9F})
                              .channel({.prn = 1, .trackingStatus = kL2, .carrierToNoise = 31.0F})
                              .channel({.prn = 32, .trackingStatus = kL1, .carrierToNoise = 40.0F})
                              .channel({.prn = 38, .trackingStatus = kL1, .carrierToNoise = 39.5F})
                              .channel({.prn = 61, .trackingStatus = SignalType(5)})
                              .channel({.prn = 61, .trackingStatus = SignalType(17)})
                              .channel({.prn = 122, .trackingStatus = kL1})
                              .channel({.prn = 131, .trackingStatus = kL1})),
              (Lines{Info("trackstat_messages", "1,2.500000"),
                     Essential("sbas_tracking", "122 (WAAS),131 (EGNOS),"),
                     Essential("sats_tracked_gps", "2,1"), Essential("sats_tracked_glonass", "1,2"),
                     Essential("sats_tracked", "6,3,3"), Cleared("79160", "1"),
                     Sky(Satellite("1", "44") + "," + Satellite("1", "31") + "," +
                         Satellite("32", "40") + "," + Satellite("38", "39") + "," +
                         Satellite("61", "0") + "," + Satellite("61", "0") + "," +
                         Satellite("122", "0") + "," + Satellite("131", "0"))}));
}

TEST_F(ReceiverStatusTracks, of_a_log_without_channels_are_none) {
    EXPECT_EQ(Tracks(Trackstat()),
              (Lines{Essential("sbas_tracking", ""), Essential("sats_tracked_gps", "0,0"),
                     Essential("sats_tracked_glonass", "0,0"), Essential("sats_tracked", "0,0,0"),
                     Raised("79160", "1"), Sky("")}));
}

TEST_F(ReceiverStatusTracks, of_rejected_channels_are_none_but_their_sky_is_published) {
    EXPECT_EQ(
        Tracks(Trackstat()
                   .channel({.prn = 5, .carrierToNoise = 45.0F, .rejectCode = kNoMeasurement})
                   .channel({.prn = 0, .rejectCode = kNoMeasurement})
                   .channel({.prn = 122, .carrierToNoise = 38.0F, .rejectCode = kNoMeasurement})),
        (Lines{Essential("sbas_tracking", ""), Essential("sats_tracked_gps", "0,0"),
               Essential("sats_tracked_glonass", "0,0"), Essential("sats_tracked", "0,0,0"),
               Raised("79160", "1"), Sky(Satellite("5", "45") + "," + Satellite("122", "38"))}));
}

TEST_F(ReceiverStatusTracks, raise_or_clear_the_diagnostic_at_every_log) {
    const Trackstat something = Trackstat().channel({.prn = 200});
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(Tracks(Trackstat()), testing::Contains(Raised("79160", "1")));
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(Tracks(something), testing::Contains(Cleared("79160", "1")));
    }
    EXPECT_THAT(Tracks(Trackstat()), testing::Contains(Raised("79160", "1")));
}

TEST_F(ReceiverStatusTracks, have_no_memory) {
    Offer(Trackstat().channel({.prn = 1}).channel({.prn = 120}));
    EXPECT_EQ(Tracks(Trackstat().channel({.prn = 38, .trackingStatus = kL2})),
              (Lines{Essential("sbas_tracking", ""), Essential("sats_tracked_gps", "0,0"),
                     Essential("sats_tracked_glonass", "0,1"), Essential("sats_tracked", "1,0,1"),
                     Cleared("79160", "1"), Sky(Satellite("38", "0"))}));
}

TEST_F(ReceiverStatusTracks, leave_channels_without_a_satellite_out_of_the_sky) {
    EXPECT_EQ(SkyOf(Trackstat()
                        .channel({.prn = 0, .carrierToNoise = 50.0F})
                        .channel({.prn = 9, .carrierToNoise = 50.0F})
                        .channel({.prn = 0})),
              Sky(Satellite("9", "50")));
}

TEST_F(ReceiverStatusTracks, keep_the_lowest_byte_of_a_satellite_in_the_sky) {
    EXPECT_EQ(SkyOf(Trackstat().channel({.prn = 255}).channel({.prn = 300})),
              Sky(Satellite("255", "0") + "," + Satellite("44", "0")));
}

TEST_F(ReceiverStatusTracks, cut_the_carrier_to_noise_density_towards_zero) {
    EXPECT_EQ(SkyOfNoise(44.9F), Sky(Satellite("7", "44")));
    EXPECT_EQ(SkyOfNoise(45.0F), Sky(Satellite("7", "45")));
    EXPECT_EQ(SkyOfNoise(0.99F), Sky(Satellite("7", "0")));
    EXPECT_EQ(SkyOfNoise(-0.5F), Sky(Satellite("7", "0")));
    EXPECT_EQ(SkyOfNoise(-1.9F), Sky(Satellite("7", "-1")));
}

TEST_F(ReceiverStatusTracks, say_so_when_the_carrier_to_noise_density_is_no_number) {
    EXPECT_EQ(SkyOfNoise(std::numeric_limits<float>::quiet_NaN()), Sky(Satellite("7", "null")));
    EXPECT_EQ(SkyOfNoise(std::numeric_limits<float>::infinity()), Sky(Satellite("7", "null")));
    EXPECT_EQ(SkyOfNoise(-std::numeric_limits<float>::infinity()), Sky(Satellite("7", "null")));
}

TEST(ReceiverStatusTracksDeathTest, need_the_position_service) {
    EXPECT_EXIT(OfferWithoutPositionService(), testing::KilledBySignal(SIGABRT),
                testing::HasSubstr(": void CReceiverStatusObserver::NewPacket_TRACKSTAT(const "
                                   "Novatel::CNovatelTRACKSTAT*): Assertion `m_positionAPI' "
                                   "failed.\n"));
}
