#include "hub/state/ReceiverView.h"

#include "StateTesting.h"

#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

class ReceiverView : public HubTesting::CStateTesting {
protected:
    static constexpr char kReceiver[] = "NovatelReceiverStatus";
    static constexpr char kConstellation[] = "NovatelConstellationManager";

    json Shown() const { return Hub::ReceiverJSON(m_state, Now()); }
    json WordOf(const std::string& value) {
        Status("ReceiverStatus", value, kReceiver);
        json word = Shown()["status"];
        word.erase("age");
        return word;
    }
    json PortOf(const std::string& value) {
        Status("COM1_Config", value, kReceiver);
        return Shown()["ports"][0];
    }
    static json Word(const std::string& word, const std::vector<std::string>& words) {
        json bits = json::array();
        for (const std::string& each : words) {
            bits.push_back({{"words", each}});
        }
        return {{"word", word}, {"bits", bits}};
    }
};

} // namespace

TEST_F(ReceiverView, shows_null_for_all_that_has_not_been_told) {
    EXPECT_EQ(Shown(), (json{{"model", nullptr},
                             {"serial", nullptr},
                             {"hardware", nullptr},
                             {"firmware", nullptr},
                             {"idle", nullptr},
                             {"status", nullptr},
                             {"error", nullptr},
                             {"ports", json::array()},
                             {"channelConfiguration", nullptr}}));
}

TEST_F(ReceiverView, shows_the_card_among_the_components) {
    Status("component_00.componentType", "2", kReceiver);
    Status("component_00.model", "Antenna", kReceiver);
    Status("component_10.componentType", "1", kReceiver);
    Status("component_10.model", "G2S0G0TT0", kReceiver);
    Status("component_10.psn", "BZZ09470013", kReceiver);
    Status("component_10.hardwareVersion", "OEMV2-1.01", kReceiver);
    Status("component_10.softwareVersion", "3.800", kReceiver);
    const json shown = Shown();
    EXPECT_EQ(shown["model"], "G2S0G0TT0");
    EXPECT_EQ(shown["serial"], "BZZ09470013");
    EXPECT_EQ(shown["hardware"], "OEMV2-1.01");
    EXPECT_EQ(shown["firmware"], "3.800");
}

TEST_F(ReceiverView, shows_no_card_where_there_is_none) {
    Status("component_00.componentType", "11", kReceiver);
    Status("component_00.model", "Antenna", kReceiver);
    Status("component_01.model", "Untyped", kReceiver);
    EXPECT_EQ(Shown()["model"], nullptr);
}

TEST_F(ReceiverView, shows_the_bits_of_a_word) {
    EXPECT_EQ(WordOf("0x00000028: Antenna not powered,Antenna open,"),
              Word("0x00000028", {"Antenna not powered", "Antenna open"}));
    EXPECT_EQ(WordOf("0x00000008: Antenna not powered"),
              Word("0x00000008", {"Antenna not powered"}));
}

TEST_F(ReceiverView, shows_no_bits_of_a_word_that_is_zero) {
    EXPECT_EQ(WordOf("0x00000000: "), Word("0x00000000", {}));
    EXPECT_EQ(WordOf("0x00000000: No errors"), Word("0x00000000", {}));
}

TEST_F(ReceiverView, shows_odd_words_as_far_as_they_go) {
    EXPECT_EQ(WordOf(""), Word("", {}));
    EXPECT_EQ(WordOf("0x80000000"), Word("0x80000000", {}));
    EXPECT_EQ(WordOf("0x00000001: a: b, ,, c "), Word("0x00000001", {"a: b", "c"}));
    EXPECT_EQ(WordOf(":::"), Word("", {}));
}

TEST_F(ReceiverView, shows_how_old_a_word_is) {
    Status("ReceiverError", "0x00000000: ", kReceiver);
    Advance(3.0);
    EXPECT_EQ(Shown()["error"]["age"], 3.0);
}

TEST_F(ReceiverView, shows_the_idle_time) {
    Status("ReceiverCPUIdlePercentage", "43.5", kReceiver);
    EXPECT_EQ(Shown()["idle"], 43.5);
    Status("ReceiverCPUIdlePercentage", "much", kReceiver);
    EXPECT_EQ(Shown()["idle"], nullptr);
}

TEST_F(ReceiverView, shows_the_ports_that_were_told_in_their_order) {
    Status("USB2_Config", "9600, NONE, NOVATEL", kReceiver);
    Status("COM1_Config", "460800,NOVATEL,RTCM", kReceiver);
    Status("COM9_Config", "1,2,3", kReceiver);
    EXPECT_EQ(
        Shown()["ports"],
        (json{{{"name", "COM1"}, {"baud", 460800}, {"transmit", "NOVATEL"}, {"receive", "RTCM"}},
              {{"name", "USB2"}, {"baud", 9600}, {"transmit", "NONE"}, {"receive", "NOVATEL"}}}));
}

TEST_F(ReceiverView, shows_odd_ports_as_far_as_they_go) {
    const auto port = [](const json& baud, const char* transmit, const char* receive) {
        return json{{"name", "COM1"}, {"baud", baud}, {"transmit", transmit}, {"receive", receive}};
    };
    EXPECT_EQ(PortOf(""), port(nullptr, "", ""));
    EXPECT_EQ(PortOf("fast,A"), port(nullptr, "A", ""));
    EXPECT_EQ(PortOf("9600,A,B,C"), port(9600, "A", "B,C"));
    EXPECT_EQ(PortOf("99999999999,A,B"), port(nullptr, "A", "B"));
}

TEST_F(ReceiverView, shows_the_channel_configuration) {
    Status("desired_channel_configuration", "2", kConstellation);
    Status("current_channel_configuration", "1", kConstellation);
    Status("number_channel_configs_available", "6", kConstellation);
    Status("channel_config_1", " 8 GPSL1,  6 GLOL1, ", kConstellation);
    Status("channel_config_3", "", kConstellation);
    EXPECT_EQ(
        Shown()["channelConfiguration"],
        (json{{"current", 1},
              {"desired", 2},
              {"available", 6},
              {"groups",
               {{{"number", 1}, {"words", "8 GPSL1, 6 GLOL1"}}, {{"number", 3}, {"words", ""}}}}}));
}

TEST_F(ReceiverView, shows_the_configuration_that_is_wanted_before_there_is_one) {
    Status("desired_channel_configuration", "2", kConstellation);
    EXPECT_EQ(Shown()["channelConfiguration"], (json{{"current", nullptr},
                                                     {"desired", 2},
                                                     {"available", nullptr},
                                                     {"groups", json::array()}}));
}

TEST_F(ReceiverView, is_not_misled_by_the_same_keys_of_others) {
    Status("ReceiverStatus", "0x00000001: x", "Other");
    Status("current_channel_configuration", "1", "Other");
    EXPECT_EQ(Shown()["status"], nullptr);
    EXPECT_EQ(Shown()["channelConfiguration"], nullptr);
}
