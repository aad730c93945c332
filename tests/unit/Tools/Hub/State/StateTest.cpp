#include "hub/state/State.h"

#include "StateTesting.h"

#include <gmock/gmock.h>

namespace {

using Hub::CState;
using testing::ElementsAre;
using testing::IsEmpty;

class State : public HubTesting::CStateTesting {
protected:
    std::vector<std::string> Keys() const {
        std::vector<std::string> keys;
        for (const auto& [key, kept] : m_state.Statuses()) {
            keys.push_back(key.first + "/" + key.second + "=" + kept.message.value);
        }
        return keys;
    }
    double Age() const { return m_state.Solution()->Age(Now()); }
};

} // namespace

TEST_F(State, knows_nothing_before_it_is_told) {
    EXPECT_FALSE(m_state.Solution());
    EXPECT_FALSE(m_state.Sky());
    EXPECT_FALSE(m_state.Base());
    EXPECT_FALSE(m_state.Geoid());
    EXPECT_EQ(m_state.FindStatus("P", "a"), nullptr);
    EXPECT_FALSE(m_state.IsPublisherConnected());
    EXPECT_EQ(m_state.MessageCount(), 0U);
}

TEST_F(State, keeps_the_last_value_of_a_status) {
    Status("a", "1");
    Status("a", "2");
    Status("a", "3", "Q");
    EXPECT_THAT(Keys(), ElementsAre("P/a=2", "Q/a=3"));
    EXPECT_EQ(m_state.FindStatus("P", "a")->message.value, "2");
    EXPECT_EQ(m_state.FindStatus("Q", "b"), nullptr);
}

TEST_F(State, keeps_the_last_position_sky_base_and_geoid) {
    m_state.NewMessage(NoPosition());
    m_state.NewMessage(Fixed());
    auto base = Message<Hub::SBase>("CPositionAPI");
    base.x = 5.0;
    m_state.NewMessage(base);
    auto geoid = Message<Hub::SGeoid>("CNMEAHandlerAPI");
    geoid.separation = 43.75;
    m_state.NewMessage(geoid);
    auto sky = Message<Hub::SSky>("CPositionAPI");
    sky.channels.push_back({7, 0, 0, 47.0});
    m_state.NewMessage(sky);
    EXPECT_EQ(m_state.Solution()->message.data.positionQuality, 3);
    EXPECT_EQ(m_state.Base()->message.x, 5.0);
    EXPECT_EQ(m_state.Geoid(), 43.75);
    EXPECT_EQ(m_state.Sky()->message.channels.size(), 1U);
    EXPECT_EQ(m_state.SolutionCount(), 2U);
    EXPECT_EQ(m_state.MessageCount(), 5U);
}

TEST_F(State, tells_the_age_since_publication) {
    auto solution = Fixed();
    solution.time = m_wall - 7.0; // told again after a reconnect
    m_state.NewMessage(solution);
    EXPECT_EQ(Age(), 7.0);
    Advance(1.5);
    EXPECT_EQ(Age(), 8.5);
}

TEST_F(State, tells_the_age_since_arrival_when_the_wall_clock_has_been_set_back) {
    m_state.NewMessage(Fixed());
    Advance(2.0);
    m_wall -= 3600.0;
    EXPECT_EQ(Age(), 2.0);
}

TEST_F(State, takes_a_time_that_is_yet_to_come_for_now) {
    auto solution = Fixed();
    solution.time = m_wall + 60.0;
    m_state.NewMessage(solution);
    EXPECT_EQ(Age(), 0.0);
    Advance(1.0);
    EXPECT_EQ(Age(), 1.0);
}

TEST_F(State, tells_the_age_of_the_sky_also_when_the_wall_clock_has_been_set_back) {
    Sentence("GPGSV,1,1,01,07,64,120,47");
    Advance(1.0);
    EXPECT_EQ(m_state.ViewAge(Now()), 1.0);
    m_wall -= 3600.0;
    Advance(4.0);
    EXPECT_EQ(m_state.ViewAge(Now()), 5.0);
    Sentence("GPGSV,2,1,01,07,64,120,47"); // half a view is none
    EXPECT_EQ(m_state.ViewAge(Now()), 5.0);
}

TEST_F(State, lists_the_names_of_a_process_once_each) {
    Register("NovatelPortHandler");
    Register("PlatformLink");
    Register("PlatformLink");
    ASSERT_EQ(m_state.Processes().size(), 1U);
    const CState::SProcess& process = m_state.Processes().at(1);
    EXPECT_THAT(process.names, ElementsAre("NovatelPortHandler", "PlatformLink"));
    EXPECT_EQ(process.process, "corvane");
    EXPECT_EQ(process.pid, 411);
    EXPECT_EQ(process.version, "0.1.0");
    EXPECT_TRUE(process.isConnected);
}

TEST_F(State, knows_since_when_a_process_is_there) {
    Register("a");
    Advance(5.0);
    Register("b");
    EXPECT_EQ(m_state.Processes().at(1).since, HubTesting::kMoment);
}

TEST_F(State, keeps_what_a_process_told_that_is_gone) {
    Register("P");
    Status("a", "1");
    Diagnostic(79141, true);
    m_state.NewMessage(Fixed());
    m_state.ProcessGone(1);
    EXPECT_FALSE(m_state.Processes().at(1).isConnected);
    EXPECT_FALSE(m_state.IsPublisherConnected());
    EXPECT_THAT(Keys(), ElementsAre("P/a=1"));
    EXPECT_EQ(m_state.Diagnostics().size(), 1U);
    EXPECT_TRUE(m_state.Solution());
}

TEST_F(State, forgets_what_its_predecessor_told_when_a_process_comes_back) {
    Register("P", 1);
    Register("Other", 2, "other");
    Status("old", "1", "P", 1);
    Status("kept", "1", "Other", 2);
    Diagnostic(79141, true, 1.0, "P", 1);
    Diagnostic(79141, true, 1.0, "Other", 2);
    m_state.ProcessGone(1);
    Register("P", 3);
    Status("new", "1", "P", 3);
    EXPECT_THAT(Keys(), ElementsAre("Other/kept=1", "P/new=1"));
    EXPECT_EQ(m_state.Diagnostics().size(), 1U);
    EXPECT_EQ(m_state.Processes().size(), 2U);
}

TEST_F(State, keeps_what_another_run_of_the_same_program_tells_that_is_connected) {
    Register("P", 1);
    Status("a", "1", "P", 1);
    Register("Q", 2);
    EXPECT_EQ(m_state.Processes().size(), 2U);
    EXPECT_THAT(Keys(), ElementsAre("P/a=1"));
}

TEST_F(State, sees_the_publisher_while_it_is_connected_whether_it_has_registered_or_not) {
    m_state.NewMessage(NoPosition(7));
    EXPECT_TRUE(m_state.IsPublisherConnected());
    m_state.ProcessGone(6);
    EXPECT_TRUE(m_state.IsPublisherConnected());
    m_state.ProcessGone(7);
    EXPECT_FALSE(m_state.IsPublisherConnected());
    m_state.NewMessage(NoPosition(8));
    EXPECT_TRUE(m_state.IsPublisherConnected());
}

TEST_F(State, knows_since_when_a_diagnostic_is_raised_without_a_break) {
    Diagnostic(79141, true, 1.0);
    Advance(5.0);
    Diagnostic(79141, true, 2.0);
    const auto& raised = m_state.Diagnostics().at({"CPositionManager", 79141, 2});
    EXPECT_EQ(raised.since, HubTesting::kMoment);
    EXPECT_EQ(raised.diagnostic.value, 2.0);
    Diagnostic(79141, false);
    EXPECT_THAT(m_state.Diagnostics(), IsEmpty());
    Diagnostic(79141, true);
    EXPECT_EQ(m_state.Diagnostics().at({"CPositionManager", 79141, 2}).since,
              HubTesting::kMoment + 5.0);
}

TEST_F(State, tells_diagnostics_of_two_names_apart) {
    Diagnostic(79195, true, 1.0, "A");
    Diagnostic(79195, true, 1.0, "B");
    Diagnostic(79195, false, 0.0, "A");
    EXPECT_EQ(m_state.Diagnostics().size(), 1U);
    EXPECT_TRUE(m_state.Diagnostics().contains({"B", 79195, 2}));
}

TEST_F(State, keeps_the_last_hundred_events_and_counts_all) {
    for (int i = 1; i <= 130; ++i) {
        Event(std::to_string(i), i % 13 == 0 ? Hub::EEventLevel::error : Hub::EEventLevel::warning);
    }
    ASSERT_EQ(m_state.Events().size(), 100U);
    EXPECT_EQ(m_state.Events().front().number, 31U);
    EXPECT_EQ(m_state.Events().front().event.text, "31");
    EXPECT_EQ(m_state.Events().back().number, 130U);
    EXPECT_EQ(m_state.EventCount(Hub::EEventLevel::error), 10U);
    EXPECT_EQ(m_state.EventCount(Hub::EEventLevel::warning), 120U);
}

TEST_F(State, keeps_fewer_events_when_they_are_long) {
    for (int i = 0; i < 100; ++i) {
        Event(std::string(65536, 'x'));
    }
    // 256 KiB, of which each takes a quarter and a byte for its name.
    EXPECT_EQ(m_state.Events().size(), 3U);
    EXPECT_EQ(m_state.Events().back().number, 100U);
}

TEST_F(State, adds_up_what_a_port_tells) {
    Activity(40, 160);
    Advance(1.0);
    Activity(0, 2);
    const CState::SPort& port = m_state.Ports().at("P");
    EXPECT_EQ(port.received, 40);
    EXPECT_EQ(port.sentences, 162);
    EXPECT_EQ(port.last.message.received, 0);
    EXPECT_EQ((Now().monotonic - port.lastBytes).AsSeconds(), 1.0);
}

TEST_F(State, knows_of_a_port_that_never_brought_a_byte) {
    Activity(0, 0);
    EXPECT_TRUE(m_state.Ports().at("P").lastBytes.IsZero());
}

TEST_F(State, counts_the_bytes_of_raw_blocks) {
    auto block = Message<Hub::SRawBlock>("P");
    block.bytes = std::string(1000, '\0');
    m_state.NewMessage(block);
    m_state.NewMessage(block);
    EXPECT_EQ(m_state.RawByteCount(), 2000U);
}

TEST_F(State, counts_what_the_services_refused) {
    m_state.MessageRefused();
    m_state.MessageRefused();
    EXPECT_EQ(m_state.RefusedCount(), 2U);
    EXPECT_EQ(m_state.MessageCount(), 0U);
}

TEST_F(State, keeps_5000_statuses_and_goes_on_with_those) {
    for (int i = 0; i < 5003; ++i) {
        Status("key" + std::to_string(i), "1");
    }
    EXPECT_EQ(m_state.Statuses().size(), 5000U);
    EXPECT_EQ(m_state.RefusedCount(), 3U);
    Status("key0", "2");
    EXPECT_EQ(m_state.FindStatus("P", "key0")->message.value, "2");
}

TEST_F(State, keeps_a_mebibyte_of_statuses) {
    const std::string value(65536 - 2, 'x'); // with name and key: 64 KiB
    for (int i = 0; i < 20; ++i) {
        Status(std::string(1, static_cast<char>('a' + i)), value);
    }
    EXPECT_EQ(m_state.Statuses().size(), 16U);
    EXPECT_EQ(m_state.RefusedCount(), 4U);
    Status("a", "short"); // which makes room for another
    Status("z", value.substr(7));
    EXPECT_EQ(m_state.FindStatus("P", "a")->message.value, "short");
    EXPECT_NE(m_state.FindStatus("P", "z"), nullptr);
    Status("a", "longer"); // there was none left for a single byte
    EXPECT_EQ(m_state.FindStatus("P", "a")->message.value, "short");
}

TEST_F(State, has_room_again_for_the_statuses_of_a_process_that_comes_back) {
    const std::string value(65536 - 2, 'x');
    for (Hub::TProcess run = 1; run <= 3; ++run) {
        Register("P", run);
        for (int i = 0; i < 16; ++i) {
            Status(std::string(1, static_cast<char>('a' + i)), value, "P", run);
        }
        EXPECT_EQ(m_state.Statuses().size(), 16U);
        m_state.ProcessGone(run);
    }
    EXPECT_EQ(m_state.RefusedCount(), 0U);
}

TEST_F(State, keeps_a_thousand_diagnostics) {
    for (int i = 0; i < 1002; ++i) {
        Diagnostic(i, true);
    }
    EXPECT_EQ(m_state.Diagnostics().size(), 1000U);
    EXPECT_EQ(m_state.RefusedCount(), 2U);
    Diagnostic(0, false);
    Diagnostic(5000, true);
    EXPECT_TRUE(m_state.Diagnostics().contains({"CPositionManager", 5000, 2}));
}

TEST_F(State, keeps_a_hundred_ports_and_a_hundred_names_of_a_process) {
    for (int i = 0; i < 103; ++i) {
        Activity(1, 1, std::to_string(i));
        Register(std::to_string(i));
    }
    EXPECT_EQ(m_state.Ports().size(), 100U);
    EXPECT_EQ(m_state.RefusedCount(), 3U);
    EXPECT_EQ(m_state.Processes().at(1).names.size(), 100U);
}

TEST_F(State, sees_a_program_however_many_came_and_went_before) {
    for (Hub::TProcess process = 1; process <= 400; ++process) {
        Register("N", process, "visitor" + std::to_string(process));
        m_state.ProcessGone(process);
    }
    Register("P", 401);
    ASSERT_TRUE(m_state.Processes().contains(401));
    EXPECT_TRUE(m_state.Processes().at(401).isConnected);
    EXPECT_EQ(m_state.Processes().size(), CState::kMostProcesses);
    EXPECT_FALSE(m_state.Processes().contains(1)); // the oldest had to go
    EXPECT_EQ(m_state.RefusedCount(), 0U);
}
