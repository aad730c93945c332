#include "StateTesting.h"
#include "hub/state/Presentation.h"

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

// Member for member as docs/hub-json.md has it.
class PanelText : public HubTesting::CStateTesting {
protected:
    json Shown() const { return json::parse(Hub::PanelText(m_state, Now(), 812.0)); }
};

} // namespace

TEST_F(PanelText, shows_empty_lists_before_there_is_anything) {
    const json shown = Shown();
    EXPECT_EQ(shown.size(), 13U);
    EXPECT_EQ(shown["now"], HubTesting::kMoment);
    EXPECT_EQ(shown["version"], CORVANE_VERSION);
    EXPECT_EQ(shown["uptime"], 812.0);
    EXPECT_EQ(shown["health"]["state"], "gone");
    EXPECT_EQ(shown["receiver"]["model"], nullptr);
    for (const char* const list :
         {"processes", "diagnostics", "events", "statuses", "logs", "checksums", "activity"}) {
        EXPECT_EQ(shown[list], json::array()) << list;
    }
    EXPECT_EQ(shown["link"], (json{{"dropped", 0}, {"messages", 0}, {"refused", 0}}));
}

TEST_F(PanelText, shows_the_processes) {
    Register("NovatelPortHandler");
    Register("PlatformLink");
    json process = {
        {"process", "corvane"},         {"pid", 411},
        {"version", "0.1.0"},           {"isConnected", true},
        {"since", HubTesting::kMoment}, {"names", {"NovatelPortHandler", "PlatformLink"}}};
    EXPECT_EQ(Shown()["processes"], json::array({process}));
    m_state.ProcessGone(1);
    process["isConnected"] = false;
    EXPECT_EQ(Shown()["processes"], json::array({process}));
}

TEST_F(PanelText, shows_diagnostics_with_their_words) {
    Diagnostic(79141, true, 2.5);
    Diagnostic(1, true);
    const json shown = Shown()["diagnostics"];
    EXPECT_EQ(shown[0]["words"], "");
    EXPECT_EQ(shown[1], (json{{"name", "CPositionManager"},
                              {"code", 79141},
                              {"sub", 2},
                              {"value", 2.5},
                              {"since", HubTesting::kMoment},
                              {"words", "The smoothing filter has lost its carrier phases"}}));
}

TEST_F(PanelText, shows_events_newest_first) {
    Event("first");
    Event("second", Hub::EEventLevel::error);
    EXPECT_EQ(Shown()["events"], (json{{{"number", 2},
                                        {"time", HubTesting::kMoment},
                                        {"level", "error"},
                                        {"name", "P"},
                                        {"text", "second"}},
                                       {{"number", 1},
                                        {"time", HubTesting::kMoment},
                                        {"level", "warning"},
                                        {"name", "P"},
                                        {"text", "first"}}}));
}

TEST_F(PanelText, shows_statuses_with_their_ages) {
    Status("b", "2");
    auto status = Message<Hub::SStatus>("P");
    status.level = Hub::EStatusLevel::essential;
    status.key = "a";
    status.value = "1";
    m_state.NewMessage(status);
    Advance(2.0);
    const json shown = Shown()["statuses"];
    EXPECT_EQ(shown, (json{{{"name", "P"},
                            {"key", "a"},
                            {"level", "essential"},
                            {"value", "1"},
                            {"time", HubTesting::kMoment},
                            {"age", 2.0}},
                           {{"name", "P"},
                            {"key", "b"},
                            {"level", "info"},
                            {"value", "2"},
                            {"time", HubTesting::kMoment},
                            {"age", 2.0}}}));
}

TEST_F(PanelText, shows_logs_with_their_rates) {
    for (int i = 0; i < 200; ++i) {
        Data("QRS_42");
        Advance(0.05);
    }
    Data("QRS_9999");
    json shown = Shown()["logs"];
    EXPECT_NEAR(shown[0]["rate"].get<double>(), 20.0, 0.21);
    EXPECT_NEAR(shown[0]["age"].get<double>(), 0.05, 1e-9);
    shown[0].erase("rate");
    shown[0].erase("age");
    EXPECT_EQ(shown, (json{{{"name", "P"}, {"id", 42}, {"log", "BESTPOS"}, {"count", 200}},
                           {{"name", "P"},
                            {"id", 9999},
                            {"log", ""},
                            {"count", 1},
                            {"rate", 0.0},
                            {"age", 0.0}}}));
}

TEST_F(PanelText, shows_checksums_and_activity_of_each_port) {
    Status("checksum_stats", "1204,3");
    Activity(40, 160);
    Activity(41, 161);
    Advance(0.5);
    EXPECT_EQ(Shown()["checksums"],
              (json::array({{{"name", "P"}, {"good", 1204}, {"rejected", 3}, {"age", 0.5}}})));
    EXPECT_EQ(Shown()["activity"],
              (json::array({{{"name", "P"}, {"received", 41}, {"sentences", 161}, {"age", 0.5}}})));
}

TEST_F(PanelText, shows_what_the_link_has_lost) {
    Status("dropped_messages", "7", "PlatformLink");
    m_state.MessageRefused();
    EXPECT_EQ(Shown()["link"], (json{{"dropped", 7}, {"messages", 1}, {"refused", 1}}));
}

TEST_F(PanelText, shows_any_text_as_it_is) {
    Status("k", "\x01\"\\\n\xC3\xA4");
    EXPECT_EQ(Shown()["statuses"][0]["value"], "\x01\"\\\n\xC3\xA4");
    EXPECT_EQ(Hub::PanelText(m_state, Now(), 0.0).find('\n'), std::string::npos);
}
