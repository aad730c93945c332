#include "hub/gpsd/Satellites.h"
#include "GPSDTesting.h"

#include <gtest/gtest.h>

using namespace GPSDTesting;
using namespace Hub::GPSD;

namespace {

class Satellites : public testing::Test {
protected:
    bool Add(const std::string& text) { return m_satellites.Add(Sentence(text, CClocks::Now())); }
    bool AddChannels(std::vector<Hub::SSky::SChannel> channels) {
        return m_satellites.Add(Sky(std::move(channels), CClocks::Now()));
    }
    void AddView() {
        m_clocks.Advance(1);
        Add("GPGSV,1,1,03,07,64,120,47,09,10,300,,50,30,181,40");
    }
    TReport Report() const {
        const auto report = m_satellites.Report(std::nullopt);
        EXPECT_TRUE(report);
        return report.value_or(TReport());
    }
    std::string Listed() const { return Report().at("satellites").dump(); }

    CClocks m_clocks;
    CSatellites m_satellites;
};

} // namespace

TEST_F(Satellites, nothing_is_known_at_first) {
    EXPECT_FALSE(m_satellites.Report(5));
    EXPECT_FALSE(m_satellites.HDOP());
}

TEST_F(Satellites, a_view_is_told_when_it_is_whole) {
    EXPECT_FALSE(Add("GPGSV,2,1,05,07,64,120,47,09,10,300,,11,5,6,30,12,7,8,31"));
    m_clocks.Advance(1);
    EXPECT_TRUE(Add("GPGSV,2,2,05,13,1,2,33"));
    EXPECT_EQ(Report().at("nSat"), 5);
    EXPECT_EQ(Report().at("time"), "2025-11-22T18:06:40.001Z");
}

TEST_F(Satellites, gps_and_sbas_are_told_with_their_places) {
    AddView();
    Add("GPGSA,A,3,07,50,,,,,,,,,,,1.6,0.9,1.3");
    EXPECT_EQ(Listed(), R"([{"PRN":7,"el":64.0,"az":120.0,"ss":47.0,"used":true,)"
                        R"("gnssid":0,"svid":7},)"
                        R"({"PRN":9,"el":10.0,"az":300.0,"used":false,"gnssid":0,"svid":9},)"
                        R"({"PRN":137,"el":30.0,"az":181.0,"ss":40.0,"used":true,)"
                        R"("gnssid":1,"svid":137}])");
}

TEST_F(Satellites, dilutions_come_from_the_receivers_own_sentence) {
    AddView();
    EXPECT_FALSE(Report().contains("hdop"));
    EXPECT_FALSE(Add("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3"));
    EXPECT_EQ(Report().at("pdop"), 1.6);
    EXPECT_EQ(Report().at("hdop"), 0.9);
    EXPECT_EQ(Report().at("vdop"), 1.3);
    EXPECT_EQ(m_satellites.HDOP(), 0.9);
}

TEST_F(Satellites, channels_fill_in_what_the_view_does_not_know) {
    AddView();
    EXPECT_FALSE(AddChannels({Channel(7, 30.0), Channel(9, 25.5), Channel(38, 40.0),
                              Channel(61, 41.5), Channel(120, 33.0), Channel(137, 20.0)}));
    EXPECT_EQ(Listed(), R"([{"PRN":7,"el":64.0,"az":120.0,"ss":47.0,"used":false,)"
                        R"("gnssid":0,"svid":7},)"
                        R"({"PRN":9,"el":10.0,"az":300.0,"ss":25.5,"used":false,)"
                        R"("gnssid":0,"svid":9},)"
                        R"({"PRN":65,"ss":40.0,"used":false,"gnssid":6,"svid":1},)"
                        R"({"PRN":88,"ss":41.5,"used":false,"gnssid":6,"svid":24},)"
                        R"({"PRN":120,"ss":33.0,"used":false,"gnssid":1,"svid":120},)"
                        R"({"PRN":137,"el":30.0,"az":181.0,"ss":40.0,"used":false,)"
                        R"("gnssid":1,"svid":137}])");
}

TEST_F(Satellites, the_strongest_channel_of_a_satellite_counts) {
    EXPECT_TRUE(AddChannels(
        {Channel(38, 30.0), Channel(38, 40.0), Channel(38, 35.0), Channel(38, std::nullopt)}));
    EXPECT_EQ(Listed(), R"([{"PRN":65,"ss":40.0,"used":false,"gnssid":6,"svid":1}])");
}

TEST_F(Satellites, a_channel_without_a_signal_is_a_satellite_without_one) {
    AddChannels({Channel(1, std::nullopt), Channel(138, 0.0)});
    EXPECT_EQ(Listed(), R"([{"PRN":1,"used":false,"gnssid":0,"svid":1},)"
                        R"({"PRN":138,"used":false,"gnssid":1,"svid":138}])");
}

TEST_F(Satellites, channels_with_numbers_of_no_system_are_left_out) {
    AddChannels({Channel(0, 40.0), Channel(33, 40.0), Channel(37, 40.0), Channel(62, 40.0),
                 Channel(119, 40.0), Channel(139, 40.0), Channel(255, 40.0)});
    EXPECT_EQ(Report().at("nSat"), 0);
    EXPECT_EQ(Listed(), "[]");
}

TEST_F(Satellites, channels_set_the_pace_only_while_there_is_no_view) {
    EXPECT_TRUE(AddChannels({Channel(7, 40.0)}));
    AddView();
    EXPECT_FALSE(AddChannels({Channel(7, 40.0)}));
    m_clocks.Advance(10'001);
    EXPECT_TRUE(AddChannels({Channel(7, 40.0)}));
}

TEST_F(Satellites, those_used_are_counted_by_the_solution_or_else_by_their_marks) {
    AddView();
    Add("GPGSA,A,3,07,50,,,,,,,,,,,1.6,0.9,1.3");
    EXPECT_EQ(m_satellites.Report(14).value().at("uSat"), 14);
    EXPECT_EQ(m_satellites.Report(std::nullopt).value().at("uSat"), 2);
}

TEST_F(Satellites, what_is_older_than_10_s_is_not_told) {
    AddView();
    Add("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3");
    m_clocks.Advance(5'000);
    AddChannels({Channel(38, 40.0)});
    m_clocks.Advance(5'001);
    EXPECT_EQ(Listed(), R"([{"PRN":65,"ss":40.0,"used":false,"gnssid":6,"svid":1}])");
    EXPECT_FALSE(Report().contains("hdop"));
    EXPECT_FALSE(m_satellites.HDOP());
    m_clocks.Advance(5'000);
    EXPECT_FALSE(m_satellites.Report(5));
}

TEST_F(Satellites, no_satellite_is_used_by_an_old_word_of_it) {
    Add("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3");
    m_clocks.Advance(10'001);
    AddView();
    EXPECT_EQ(Report().at("uSat"), 0);
}

TEST_F(Satellites, a_damaged_sentence_changes_nothing) {
    AddView();
    const std::string before = Listed();
    m_clocks.Advance(1);
    Hub::SSentence sentence = Sentence("GPGSV,1,1,01,08,64,120,47", CClocks::Now());
    sentence.sentence[15] = '9';
    EXPECT_FALSE(m_satellites.Add(sentence));
    EXPECT_EQ(Listed(), before);
}
