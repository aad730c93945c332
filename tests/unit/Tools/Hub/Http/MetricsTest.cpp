#include "hub/http/Metrics.h"

#include "../State/StateTesting.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <map>
#include <set>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::Not;

class Metrics : public HubTesting::CStateTesting {
protected:
    std::string Text() const { return Hub::MetricsText(m_state, Now(), 12.5); }
    /// Every sample by its name and labels.
    std::map<std::string, double> Samples() const {
        std::map<std::string, double> samples;
        std::istringstream lines(Text());
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with('#')) {
                const std::size_t blank = line.rfind(' ');
                const auto [entry, isNew] = samples.emplace(
                    line.substr(0, blank), std::strtod(line.c_str() + blank + 1, nullptr));
                EXPECT_TRUE(isNew) << line;
            }
        }
        return samples;
    }
    void ExpectSamples(const std::map<std::string, double>& wanted) const {
        const auto samples = Samples();
        for (const auto& [name, value] : wanted) {
            const auto found = samples.find(name);
            ASSERT_NE(found, samples.end()) << name;
            EXPECT_NEAR(found->second, value, 1e-9) << name;
        }
    }
    void TellEverything() {
        Register("P");
        m_state.NewMessage(Fixed());
        auto sky = Message<Hub::SSky>("CPositionAPI");
        sky.channels = {
            {7, 0, 0, 47.5}, {7, 0, 0, 38.0}, {45, 0, 0, 40.0}, {131, 0, 0, std::nullopt}};
        m_state.NewMessage(sky);
        Data("QRS_42");
        Data("QRS_42");
        Status("checksum_stats", "1204,3");
        Status("ReceiverCPUIdlePercentage", "43.5", "NovatelReceiverStatus");
        Status("dropped_messages", "7", "PlatformLink");
        Activity(40, 160);
        Activity(2, 2);
        Diagnostic(79141, true);
        Event("w");
        Event("e", Hub::EEventLevel::error);
        auto block = Message<Hub::SRawBlock>("P");
        block.bytes = "12345";
        m_state.NewMessage(block);
        m_state.MessageRefused();
        Advance(0.5);
    }
};

} // namespace

TEST_F(Metrics, tell_little_before_there_is_anything) {
    ExpectSamples({{"corvane_health{state=\"gone\"}", 1},
                   {"corvane_health{state=\"live\"}", 0},
                   {"corvane_solutions_total", 0},
                   {"corvane_diagnostics_raised", 0},
                   {"corvane_hub_uptime_seconds", 12.5}});
    EXPECT_THAT(Text(), Not(HasSubstr("corvane_solution_age_seconds")));
    EXPECT_THAT(Text(), Not(HasSubstr("corvane_signal_cn0_dbhz")));
    EXPECT_THAT(Text(), Not(HasSubstr("corvane_receiver_idle_ratio")));
}

TEST_F(Metrics, tell_everything_that_there_is) {
    TellEverything();
    ExpectSamples({
        {"corvane_health{state=\"live\"}", 1},
        {"corvane_health{state=\"no position\"}", 0},
        {"corvane_health{state=\"old\"}", 0},
        {"corvane_health{state=\"silent\"}", 0},
        {"corvane_health{state=\"gone\"}", 0},
        {"corvane_solutions_total", 1},
        {"corvane_solution_age_seconds", 0.5},
        {"corvane_position_quality", 3},
        {"corvane_fix_indicator", 4},
        {"corvane_satellites_used", 14},
        {"corvane_differential_age_seconds", 1.5},
        {"corvane_position_horizontal_sigma_meters", 5},
        {"corvane_position_vertical_sigma_meters", 0.5},
        {"corvane_speed_meters_per_second", 5},
        {"corvane_satellites_tracked{system=\"GPS\"}", 1},
        {"corvane_satellites_tracked{system=\"GLONASS\"}", 1},
        {"corvane_satellites_tracked{system=\"SBAS\"}", 1},
        {"corvane_satellites_tracked{system=\"unknown\"}", 0},
        {"corvane_signal_cn0_dbhz{system=\"GPS\",prn=\"7\",signal=\"1\"}", 47.5},
        {"corvane_signal_cn0_dbhz{system=\"GPS\",prn=\"7\",signal=\"2\"}", 38},
        {"corvane_signal_cn0_dbhz{system=\"GLONASS\",prn=\"45\",signal=\"1\"}", 40},
        {"corvane_sky_age_seconds", 0.5},
        {"corvane_records_total{port=\"P\",id=\"42\",log=\"BESTPOS\"}", 2},
        {"corvane_sentences_total{port=\"P\",result=\"good\"}", 1204},
        {"corvane_sentences_total{port=\"P\",result=\"rejected\"}", 3},
        {"corvane_port_chunks_total{port=\"P\"}", 42},
        {"corvane_port_silence_seconds{port=\"P\"}", 0.5},
        {"corvane_receiver_idle_ratio", 0.435},
        {"corvane_diagnostics_raised", 1},
        {"corvane_diagnostic_raised{name=\"CPositionManager\",code=\"79141\",sub=\"2\"}", 1},
        {"corvane_events_total{level=\"warning\"}", 1},
        {"corvane_events_total{level=\"error\"}", 1},
        {"corvane_link_dropped_messages_total", 7},
        {"corvane_programs_connected{process=\"corvane\"}", 1},
        {"corvane_hub_messages_total", 14},
        {"corvane_hub_refused_messages_total", 1},
        {"corvane_hub_raw_bytes_total", 5},
        {"corvane_hub_uptime_seconds", 12.5},
        {"corvane_hub_build_info{version=\"" CORVANE_VERSION "\"}", 1},
    });
    EXPECT_EQ(Samples().size(), 39U);
}

TEST_F(Metrics, describe_every_family_once_and_before_its_samples) {
    TellEverything();
    std::set<std::string> described;
    std::string family;
    std::istringstream lines(Text());
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("# HELP ")) {
            family = line.substr(7, line.find(' ', 7) - 7);
            EXPECT_TRUE(described.insert(family).second) << family << " twice";
            EXPECT_GT(line.size(), 7 + family.size() + 1) << "no help";
        } else if (line.starts_with("# TYPE ")) {
            const bool isCounter = family.ends_with("_total");
            EXPECT_EQ(line, "# TYPE " + family + (isCounter ? " counter" : " gauge"));
        } else {
            EXPECT_EQ(line.substr(0, line.find_first_of("{ ")), family);
        }
    }
    EXPECT_TRUE(Text().ends_with('\n'));
}

TEST_F(Metrics, tell_no_accuracy_of_a_position_that_is_not_there) {
    m_state.NewMessage(NoPosition());
    ExpectSamples({{"corvane_position_quality", 0}, {"corvane_fix_indicator", 0}});
    EXPECT_THAT(Text(), Not(HasSubstr("corvane_position_horizontal_sigma_meters")));
}

TEST_F(Metrics, tell_no_silence_of_a_port_that_never_spoke) {
    Activity(0, 0);
    ExpectSamples({{"corvane_port_chunks_total{port=\"P\"}", 0}});
    EXPECT_THAT(Text(), Not(HasSubstr("corvane_port_silence_seconds{")));
}

TEST_F(Metrics, count_the_connections_of_a_program) {
    Register("P", 1);
    Register("P", 2);
    Register("Q", 3, "other");
    m_state.ProcessGone(2);
    m_state.ProcessGone(3);
    ExpectSamples({{"corvane_programs_connected{process=\"corvane\"}", 1},
                   {"corvane_programs_connected{process=\"other\"}", 0}});
}

TEST_F(Metrics, escape_what_programs_tell) {
    Activity(1, 1, "a\"b\\c");
    ExpectSamples({{R"(corvane_port_chunks_total{port="a\"b\\c"})", 1}});
}
