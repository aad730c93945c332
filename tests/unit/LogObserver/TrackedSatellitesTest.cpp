#include "LogObserver/TrackedSatellites.h"

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>

using Sentences::Trackstat;

namespace {

using Channel = Novatel::CNovatelTRACKSTAT::SChannel;

STrackedSatellites Tracked(const Trackstat& log) {
    const std::unique_ptr<CGPSRecord> record(CreateRecord(log));
    return STrackedSatellites::Of(dynamic_cast<const Novatel::CNovatelTRACKSTAT&>(*record));
}

STrackedSatellites TrackedAlone(const Channel& channel) {
    return Tracked(Trackstat().channel(channel));
}

struct SCounts {
    int gpsL1 = 0;
    int gpsL2 = 0;
    int glonassL1 = 0;
    int glonassL2 = 0;
};

void ExpectCounts(const STrackedSatellites& tracked, const SCounts& counts) {
    EXPECT_EQ(tracked.gpsL1, counts.gpsL1);
    EXPECT_EQ(tracked.gpsL2, counts.gpsL2);
    EXPECT_EQ(tracked.glonassL1, counts.glonassL1);
    EXPECT_EQ(tracked.glonassL2, counts.glonassL2);
}

const std::set<std::uint32_t> kL1Signals = {0};
const std::set<std::uint32_t> kL2Signals = {5, 9, 17};

const std::map<int, std::string> kSBASSystems = {
    {120, "EGNOS"}, {122, "WAAS"}, {124, "EGNOS"}, {126, "EGNOS"}, {129, "MSAS"},
    {131, "EGNOS"}, {134, "WAAS"}, {135, "WAAS"},  {137, "MSAS"},  {138, "WAAS"},
};

} // namespace

TEST(TrackedSatellites, count_the_signals_of_each_type_for_gps_and_glonass_alone) {
    for (std::uint32_t type = 0; type < 32; ++type) {
        SCOPED_TRACE("signal type " + std::to_string(type));
        const int l1 = static_cast<int>(kL1Signals.count(type));
        const int l2 = static_cast<int>(kL2Signals.count(type));
        for (const std::uint16_t prn : {1, 32}) {
            ExpectCounts(TrackedAlone({.prn = prn, .trackingStatus = type << 21}),
                         {.gpsL1 = l1, .gpsL2 = l2});
        }
        for (const std::uint16_t prn : {38, 61}) {
            ExpectCounts(TrackedAlone({.prn = prn, .trackingStatus = type << 21}),
                         {.glonassL1 = l1, .glonassL2 = l2});
        }
        for (const std::uint16_t prn : {0, 33, 37, 62, 120, 257, 294}) {
            ExpectCounts(TrackedAlone({.prn = prn, .trackingStatus = type << 21}), {});
        }
    }
}

TEST(TrackedSatellites, tell_the_systems_by_their_numbers) {
    for (int prn = 0; prn < 300; ++prn) {
        SCOPED_TRACE("PRN " + std::to_string(prn));
        ExpectCounts(
            TrackedAlone({.prn = static_cast<std::uint16_t>(prn)}),
            {.gpsL1 = prn >= 1 && prn <= 32 ? 1 : 0, .glonassL1 = prn >= 38 && prn <= 61 ? 1 : 0});
    }
}

TEST(TrackedSatellites, look_at_no_other_bits_of_the_tracking_status) {
    constexpr std::uint32_t kOtherBits = 0xFC1FFFFF;
    ExpectCounts(TrackedAlone({.prn = 3, .trackingStatus = kOtherBits}), {.gpsL1 = 1});
    ExpectCounts(TrackedAlone({.prn = 3, .trackingStatus = kOtherBits | 17U << 21}), {.gpsL2 = 1});
    ExpectCounts(TrackedAlone({.prn = 3, .trackingStatus = kOtherBits | 18U << 21}), {});
}

TEST(TrackedSatellites, leave_out_the_channels_without_a_measurement_alone) {
    for (std::uint32_t code = 0; code <= 100; ++code) {
        const STrackedSatellites tracked = TrackedAlone({.prn = 20, .rejectCode = code});
        EXPECT_EQ(tracked.gpsL1, code == 99 ? 0 : 1) << "reject code " << code;
        EXPECT_EQ(tracked.distinctPRNs, code == 99 ? 0 : 1) << "reject code " << code;
        EXPECT_EQ(TrackedAlone({.prn = 122, .rejectCode = code}).sbas,
                  code == 99 ? "" : "122 (WAAS),")
            << "reject code " << code;
    }
    EXPECT_EQ(TrackedAlone({.prn = 20, .rejectCode = 256 + 99}).distinctPRNs, 1);
}

TEST(TrackedSatellites, count_channels_but_distinct_satellites_once) {
    const STrackedSatellites tracked = Tracked(Trackstat()
                                                   .channel({.prn = 4})
                                                   .channel({.prn = 4, .trackingStatus = 9U << 21})
                                                   .channel({.prn = 40})
                                                   .channel({.prn = 4})
                                                   .channel({.prn = 40})
                                                   .channel({.prn = 4, .rejectCode = 99})
                                                   .channel({.prn = 5, .rejectCode = 99}));
    ExpectCounts(tracked, {.gpsL1 = 2, .gpsL2 = 1, .glonassL1 = 2});
    EXPECT_EQ(tracked.distinctPRNs, 2);
}

TEST(TrackedSatellites, count_distinct_numbers_as_they_stand) {
    EXPECT_EQ(Tracked(Trackstat().channel({.prn = 0}).channel({.prn = 0})).distinctPRNs, 1);
    EXPECT_EQ(Tracked(Trackstat()
                          .channel({.prn = 0})
                          .channel({.prn = 1})
                          .channel({.prn = 257})
                          .channel({.prn = 65535})
                          .channel({.prn = 257}))
                  .distinctPRNs,
              4);
}

TEST(TrackedSatellites, are_none_in_an_empty_log) {
    const STrackedSatellites tracked = Tracked(Trackstat());
    ExpectCounts(tracked, {});
    EXPECT_EQ(tracked.distinctPRNs, 0);
    EXPECT_EQ(tracked.sbas, "");
}

TEST(TrackedSatellites, list_sbas_in_channel_order_each_once) {
    EXPECT_EQ(Tracked(Trackstat().channel({.prn = 122}).channel({.prn = 131})).sbas,
              "122 (WAAS),131 (EGNOS),");
    EXPECT_EQ(Tracked(Trackstat()
                          .channel({.prn = 122, .rejectCode = 99})
                          .channel({.prn = 137})
                          .channel({.prn = 121})
                          .channel({.prn = 122, .rejectCode = 8})
                          .channel({.prn = 137, .trackingStatus = 9U << 21})
                          .channel({.prn = 12}))
                  .sbas,
              "137 (MSAS),122 (WAAS),");
}

TEST(SBASSystemName, is_known_for_the_satellites_of_three_systems) {
    for (int prn = 0; prn <= 255; ++prn) {
        const auto system = kSBASSystems.find(prn);
        EXPECT_EQ(std::string(SBASSystemName(static_cast<std::uint16_t>(prn))),
                  system == kSBASSystems.end() ? "" : system->second)
            << prn;
    }
    EXPECT_STREQ(SBASSystemName(256 + 122), "");
}
