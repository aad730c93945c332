#include "Control/ReferenceBandwidthManager.h"

#include "Control/ChannelManager.h"
#include "Control/CommandManager.h"
#include "Support/FakeByteSource.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"
#include "platform/Published.h"
#include "platform/RemoteLogger.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <optional>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;

struct SFormatCase {
    const char* format;
    std::int32_t bytesPerSecond;
    std::int32_t satellites;
};

class ReferenceBandwidth : public testing::Test {
protected:
    /// Starts anew with section "Corvane" of the settings.
    void Start(const std::string& settings, ChannelManager* gps = nullptr,
               ChannelManager* glonass = nullptr) {
        m_folder.Write("corvane.conf", "[Corvane]\n" + settings);
        m_commands.SetByteSource(&m_source);
        m_commands.BuildConfiguration();
        m_manager.emplace(m_logger, m_config, m_commands, gps, glonass);
        m_published.Forget();
    }
    /// With room for 20 satellites of RTCM3: (660 - 17.9) / 32.
    void StartWithRoomFor20(bool hasGlonass, ChannelManager* gps, ChannelManager* glonass) {
        Start("bandwidth_limit = 660\nreference_format_real = RTCM3\nglonass_corrections = " +
                  std::to_string(hasGlonass) + "\n",
              gps, glonass);
    }

    Lines Apply(std::int32_t gpsTotal, std::int32_t glonassTotal) {
        m_published.Forget();
        m_source.texts.clear();
        m_manager->Apply(gpsTotal, glonassTotal);
        return m_published.All();
    }
    void PassSeconds(double seconds) { m_clock.Advance(Core::Time::FromSeconds(seconds)); }

    static std::string Status(const std::string& key, const std::string& value) {
        return R"(logger.status "name":"Bandwidth","level":"essential","key":")" + key + "\" " +
               value;
    }
    static std::string Max(const std::string& value) {
        return Status("bandwidth_max_satellites", value);
    }
    static std::string GPS(const std::string& value) {
        return Status("bandwidth_limited_gps_channels", value);
    }
    static std::string Glonass(const std::string& value) {
        return Status("bandwidth_limited_glonass_channels", value);
    }

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CConfig m_config{m_folder.Path("corvane.conf")};
    CPublished m_published;
    CRemoteLogger m_logger{"Bandwidth"};
    CFakeByteSource m_source;
    CCommandManager m_commands{m_config};
    ChannelManager m_gps{&m_commands, 0, 11};
    ChannelManager m_glonass{&m_commands, 20, 33};
    std::optional<ReferenceBandwidthManager> m_manager;
};

class ReferenceBandwidthFormat : public ReferenceBandwidth,
                                 public testing::WithParamInterface<SFormatCase> {};

} // namespace

TEST_P(ReferenceBandwidthFormat, leaves_room_for_so_many_satellites) {
    const SFormatCase& row = GetParam();
    Start("");
    EXPECT_EQ(m_manager->MaxSatellites(row.format, row.bytesPerSecond), row.satellites)
        << row.format << " " << row.bytesPerSecond;
}

// Worked out by hand: VARN1 (B - 21.4) / 28, CMR (B - 19.5) / 28, RTCM3 (B - 17.9) / 32.
INSTANTIATE_TEST_SUITE_P(
    All, ReferenceBandwidthFormat,
    testing::Values(
        SFormatCase{"VARN1", 1000, 34}, SFormatCase{"VARN1", 100'000, 3570},
        SFormatCase{"VARN1", 49, 0}, SFormatCase{"VARN1", 50, 1}, SFormatCase{"VARN1", 22, 0},
        SFormatCase{"VARN1", 21, -1}, SFormatCase{"VARN1", 0, -1}, SFormatCase{"VARN1", -1000, -37},
        SFormatCase{"CMR", 1000, 35}, SFormatCase{"CMR", 999, 34},
        SFormatCase{"CMR", 100'000, 3570}, SFormatCase{"CMR", 47, 0}, SFormatCase{"CMR", 48, 1},
        SFormatCase{"CMR", 20, 0}, SFormatCase{"CMR", 19, -1}, SFormatCase{"CMR", 0, -1},
        SFormatCase{"CMR", -1000, -37}, SFormatCase{"RTCM3", 100'000, 3124},
        SFormatCase{"RTCM3", 49, 0}, SFormatCase{"RTCM3", 50, 1}, SFormatCase{"RTCM3", 18, 0},
        SFormatCase{"RTCM3", 17, -1}, SFormatCase{"RTCM3", -1000, -32},
        SFormatCase{"RTCM3", std::numeric_limits<std::int32_t>::max(), 67'108'863},
        SFormatCase{"RTCM3", std::numeric_limits<std::int32_t>::min(), -67'108'865},
        SFormatCase{"RTCM2", 1000, 1000}, SFormatCase{"NONE", 0, 1000}, SFormatCase{"", 1, 1000},
        SFormatCase{"varn1", 1000, 1000}, SFormatCase{"CMR ", 1000, 1000}));

TEST_F(ReferenceBandwidth, is_split_between_gps_and_glonass) {
    struct SRow {
        std::int32_t max;
        double share;
        std::int32_t gps;
        std::int32_t glonass;
    };
    Start("");
    for (const SRow& row : {SRow{10, 0.25, 8, 2}, SRow{7, 0.25, 6, 1}, SRow{8, 0.25, 6, 2},
                            SRow{3, 0.25, 3, 0}, SRow{10, 0.0, 10, 0}, SRow{-1, 0.25, 0, -1},
                            SRow{-5, 0.25, -3, -2}, SRow{9, 1.0, 0, 9}}) {
        std::int32_t gps = 77;
        std::int32_t glonass = 77;
        m_manager->SplitSatellites(row.max, row.share, gps, glonass);
        EXPECT_EQ(gps, row.gps) << row.max << " " << row.share;
        EXPECT_EQ(glonass, row.glonass) << row.max << " " << row.share;
    }
}

TEST_F(ReferenceBandwidth, is_limited_to_100000_bytes_a_second_unless_set) {
    Start("reference_format_real = RTCM3\nglonass_corrections = 0\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("3124,3124,1000")});
}

TEST_F(ReferenceBandwidth, has_a_limit_in_the_settings) {
    Start("bandwidth_limit = 1000\nreference_format_real = VARN1\nglonass_corrections = 0\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("34,34,1000")});
}

TEST_F(ReferenceBandwidth, gives_glonass_a_quarter_where_it_is_corrected) {
    Start("bandwidth_limit = 1000\nreference_format_real = CMR\nglonass_corrections = 1\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("35,27,8")});
}

TEST_F(ReferenceBandwidth, is_told_for_a_format_without_limit_and_for_one_that_does_not_fit) {
    Start("bandwidth_limit = 0\nreference_format_real = NONE\nglonass_corrections = 1\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("1000,750,250")});
    Start("bandwidth_limit = 0\nreference_format_real = RTCM2\nglonass_corrections = 0\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("1000,1000,1000")});
    Start("bandwidth_limit = 0\nreference_format_real = RTCM3\nglonass_corrections = 1\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("-1,0,-1")});
    Start("bandwidth_limit = 0\nreference_format_real = RTCM3\nglonass_corrections = 0\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("-1,-1,1000")});
}

TEST_F(ReferenceBandwidth, follows_the_command_managers_format_and_flag) {
    Start("reference_format_real = NONE\nglonass_corrections = 0\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("1000,1000,1000")});
    m_commands.SetGlonassCorrections(true);
    EXPECT_EQ(Apply(12, 14), Lines{Max("1000,750,250")});
    m_commands.SetReferenceFormat("RTCM3");
    EXPECT_EQ(Apply(12, 14), Lines{Max("3124,2343,781")});
}

TEST_F(ReferenceBandwidth, idles_the_gps_channels_that_it_has_no_room_for) {
    ChannelManager channels(&m_commands, 3, 6);
    Start("bandwidth_limit = 60\nreference_format_real = CMR\nglonass_corrections = 0\n",
          &channels);
    EXPECT_EQ(Apply(4, 14), (Lines{Max("1,1,1000"), GPS("4,1,1")}));
    EXPECT_EQ(m_source.texts,
              (Lines{"assign 3 auto\n", "assign 4 idle\n", "assign 5 idle\n", "assign 6 idle\n"}));
}

TEST_F(ReferenceBandwidth, tells_the_receivers_total_and_not_what_is_managed) {
    StartWithRoomFor20(true, &m_gps, nullptr);
    EXPECT_EQ(Apply(40, 14), (Lines{Max("20,15,5"), GPS("40,15,15")}));
}

TEST_F(ReferenceBandwidth, idles_the_glonass_channels_that_it_has_no_room_for) {
    StartWithRoomFor20(true, nullptr, &m_glonass);
    EXPECT_EQ(Apply(15, 14), (Lines{Max("20,15,5"), Glonass("14,5,0,5")}));
    ASSERT_EQ(m_source.texts.size(), 14U);
    EXPECT_EQ(m_source.texts[4], "assign 24 auto\n");
    EXPECT_EQ(m_source.texts[5], "assign 25 idle\n");
}

TEST_F(ReferenceBandwidth, gives_glonass_what_the_gps_channels_cannot_use) {
    struct SRow {
        std::int32_t gpsTotal;
        const char* told;
    };
    for (const SRow& row : {SRow{12, "14,5,3,8"}, SRow{14, "14,5,1,6"}, SRow{15, "14,5,0,5"},
                            SRow{16, "14,5,0,5"}, SRow{0, "14,5,15,20"}}) {
        StartWithRoomFor20(true, nullptr, &m_glonass);
        PassSeconds(5);
        EXPECT_EQ(Apply(row.gpsTotal, 14).back(), Glonass(row.told)) << row.gpsTotal;
    }
}

TEST_F(ReferenceBandwidth, leaves_nothing_spare_where_glonass_is_not_corrected) {
    StartWithRoomFor20(false, nullptr, &m_glonass);
    EXPECT_EQ(Apply(12, 14), (Lines{Max("20,20,1000"), Glonass("14,1000,0,1000")}));
    EXPECT_EQ(m_source.texts, Lines{}) << "all are tracking already";
}

TEST_F(ReferenceBandwidth, limits_gps_before_glonass) {
    StartWithRoomFor20(true, &m_gps, &m_glonass);
    EXPECT_EQ(Apply(16, 14), (Lines{Max("20,15,5"), GPS("16,15,15"), Glonass("14,5,0,5")}));
    ASSERT_EQ(m_source.texts.size(), 26U);
    EXPECT_EQ(m_source.texts.front(), "assign 0 auto\n");
    EXPECT_EQ(m_source.texts.back(), "assign 33 idle\n");
}

TEST_F(ReferenceBandwidth, tells_of_channels_only_when_they_change) {
    StartWithRoomFor20(true, &m_gps, &m_glonass);
    EXPECT_EQ(Apply(16, 14).size(), 3U);
    PassSeconds(4.999);
    EXPECT_EQ(Apply(16, 14), Lines{Max("20,15,5")});
    EXPECT_EQ(m_source.texts, Lines{});
    PassSeconds(0.001);
    EXPECT_EQ(Apply(16, 14).size(), 3U);
    PassSeconds(5);
    EXPECT_EQ(Apply(15, 5), Lines{Max("20,15,5")}) << "so many are tracking already";
}

TEST_F(ReferenceBandwidth, says_whether_a_limit_has_changed_channels) {
    StartWithRoomFor20(true, nullptr, nullptr);
    EXPECT_TRUE(m_manager->LimitChannels(m_gps, 3, 12));
    EXPECT_EQ(m_gps.ActiveCount(), 3);
    EXPECT_FALSE(m_manager->LimitChannels(m_gps, 4, 12));
    PassSeconds(5);
    EXPECT_TRUE(m_manager->LimitChannels(m_gps, 4, 4));
    EXPECT_EQ(m_source.texts.back(), "assign 3 auto\n");
}

TEST_F(ReferenceBandwidth, that_is_set_holds_at_once_is_kept_and_told_as_an_error) {
    Start("reference_format_real = RTCM3\nglonass_corrections = 0\nbandwidth_limit = 5\n");
    m_manager->SetBandwidth(660);
    EXPECT_EQ(m_published.All(), Lines{R"(logger.event "name":"Bandwidth","level":"error","text":)"
                                       R"("ReferenceBandwidthManager Set New Bandwidth 660Bps" )"});
    std::stringstream settings;
    settings << std::ifstream(m_folder.Path("corvane.conf")).rdbuf();
    EXPECT_EQ(settings.str(), "[Corvane]\nreference_format_real = RTCM3\nglonass_corrections = 0\n"
                              "bandwidth_limit = 660\n");
    EXPECT_EQ(Apply(12, 14), Lines{Max("20,20,1000")});
}
