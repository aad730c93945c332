#include "hub/mqtt/Publisher.h"

#include "../State/StateTesting.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Hub::CMQTTPublisher;
using Hub::COutbox;
using Hub::SPublication;
using nlohmann::json;

/// A publisher beside the state, and what it has published.
class MQTTPublisher : public HubTesting::CStateTesting {
protected:
    void SetUp() override {
        m_publisher.Fill(m_outbox);
        s_wall = &m_wall;
        Core::ClockHooks().unix = [] { return Core::Time::FromSeconds(*s_wall); };
    }

    template <class TMessage>
    void Tell(const TMessage& message) {
        m_state.NewMessage(message);
        m_publisher.NewMessage(message);
    }
    Hub::SStatus MakeStatus(const std::string& key, const std::string& value,
                            const std::string& name = "P") const {
        auto status = Message<Hub::SStatus>(name);
        status.level = Hub::EStatusLevel::essential;
        status.key = key;
        status.value = value;
        return status;
    }
    Hub::SDiagnostic MakeDiagnostic(bool isRaised, double value) const {
        auto diagnostic = Message<Hub::SDiagnostic>("CPositionManager");
        diagnostic.code = 79141;
        diagnostic.sub = 2;
        diagnostic.isRaised = isRaised;
        diagnostic.value = value;
        return diagnostic;
    }
    /// Ends a pass and takes all that it has published on the topics that begin so.
    std::vector<SPublication> Pass(const std::string& topic) {
        m_publisher.EndPass();
        std::vector<SPublication> published;
        while (const auto next = m_outbox->Take()) {
            if (next->topic.starts_with(topic)) {
                published.push_back(*next);
            }
        }
        return published;
    }
    json PayloadOf(const std::string& topic) {
        const auto published = Pass(topic);
        return published.size() == 1 ? json::parse(published[0].payload) : json();
    }

    static inline const double* s_wall = nullptr;
    std::shared_ptr<COutbox> m_outbox = std::make_shared<COutbox>();
    CMQTTPublisher m_publisher{m_state};
};

} // namespace

TEST_F(MQTTPublisher, publishes_the_position_as_the_live_view_has_it) {
    Tell(Fixed());
    const auto published = Pass("position");
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published[0].topic, "position");
    EXPECT_EQ(published[0].qos, 0);
    EXPECT_TRUE(published[0].isRetained);
    const json position = json::parse(published[0].payload);
    EXPECT_EQ(position.at("time"), HubTesting::kMoment);
    EXPECT_EQ(position.at("hasPosition"), true);
    EXPECT_NEAR(position.at("height"), 100.0, 1e-6);
    EXPECT_EQ(position.at("quality"), 3);
    EXPECT_EQ(position.count("age"), 0U);
}

TEST_F(MQTTPublisher, publishes_a_position_a_second_the_newest_one) {
    std::size_t count = 0;
    for (int i = 0; i < 100; ++i) {
        Tell(Fixed());
        const auto published = Pass("position");
        count += published.size();
        if (!published.empty()) {
            EXPECT_EQ(json::parse(published[0].payload).at("time"), m_wall);
        }
        Advance(0.05);
    }
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(Pass("position").size(), 1U);
    Advance(5.0);
    EXPECT_EQ(Pass("position").size(), 0U) << "nothing is told twice";
}

TEST_F(MQTTPublisher, publishes_a_solution_without_a_position_as_such) {
    Tell(NoPosition());
    const json position = PayloadOf("position");
    EXPECT_EQ(position.at("hasPosition"), false);
    EXPECT_EQ(position.at("latitude"), nullptr);
}

TEST_F(MQTTPublisher, publishes_the_satellites_of_the_sky) {
    auto sentence = Message<Hub::SSentence>("CNMEAHandlerAPI");
    sentence.id = "GPGSV";
    sentence.sentence = HubTesting::WithChecksum("GPGSV,1,1,01,07,64,120,47");
    Tell(sentence);
    const json sky = PayloadOf("sky");
    EXPECT_EQ(sky.at("time"), HubTesting::kMoment);
    EXPECT_EQ(sky.at("satellites").at(0).at("prn"), 7);
    EXPECT_EQ(sky.at("satellites").at(0).at("elevation"), 64);
    EXPECT_EQ(sky.at("satellites").at(0).at("cn0"), 47);
}

TEST_F(MQTTPublisher, publishes_the_base_station) {
    auto base = Message<Hub::SBase>("CPositionAPI");
    base.y = 6378137.0 + 20.0; // on the equator at longitude 90, 20 m high
    Tell(base);
    const json published = PayloadOf("base");
    EXPECT_NEAR(published.at("latitude"), 0.0, 1e-9);
    EXPECT_NEAR(published.at("longitude"), 90.0, 1e-9);
    EXPECT_NEAR(published.at("height"), 20.0, 1e-6);
    EXPECT_EQ(published.at("time"), HubTesting::kMoment);
}

TEST_F(MQTTPublisher, publishes_essential_statuses_when_they_change_each_once_in_ten_seconds) {
    Tell(MakeStatus("key", "1"));
    auto published = Pass("status");
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published[0].topic, "status/P/key");
    EXPECT_EQ(published[0].payload, R"({"time":1763834800.0,"value":"1"})");
    EXPECT_TRUE(published[0].isRetained);
    EXPECT_EQ(published[0].qos, 0);

    Advance(5.0);
    Tell(MakeStatus("key", "2"));
    Tell(MakeStatus("other", "1"));
    published = Pass("status");
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published[0].topic, "status/P/other");
    Advance(5.0);
    EXPECT_EQ(PayloadOf("status/P/key").at("value"), "2");

    auto info = MakeStatus("info", "1");
    info.level = Hub::EStatusLevel::info;
    Tell(info);
    Advance(100.0);
    EXPECT_EQ(Pass("status").size(), 0U);
}

TEST_F(MQTTPublisher, writes_what_means_something_in_topics_as_numbers) {
    Tell(MakeStatus("a/b+c#d\n", "1", "\xFF%"));
    const auto published = Pass("status");
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published[0].topic, "status/%FF%25/a%2Fb%2Bc%23d%0A");
    Tell(MakeStatus("\xC3\xA4", "1"));
    EXPECT_EQ(Pass("status").at(0).topic, "status/P/\xC3\xA4");
}

TEST_F(MQTTPublisher, publishes_every_event_once_and_surely) {
    auto event = Message<Hub::SEvent>("P");
    event.level = Hub::EEventLevel::error;
    event.text = "CorvanePortTimeout \"resetting\" receiver";
    Tell(event);
    Tell(event);
    const auto published = Pass("event");
    ASSERT_EQ(published.size(), 2U);
    EXPECT_EQ(published[0].topic, "event");
    EXPECT_EQ(published[0].qos, 1);
    EXPECT_FALSE(published[0].isRetained);
    EXPECT_EQ(json::parse(published[0].payload),
              (json{{"time", HubTesting::kMoment},
                    {"level", "error"},
                    {"name", "P"},
                    {"text", "CorvanePortTimeout \"resetting\" receiver"}}));
}

TEST_F(MQTTPublisher, publishes_diagnostics_that_are_raised_and_cleared) {
    Tell(MakeDiagnostic(true, 7.0));
    auto published = Pass("diagnostic");
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published[0].topic, "diagnostic/79141/2/CPositionManager");
    EXPECT_EQ(published[0].qos, 1);
    EXPECT_TRUE(published[0].isRetained);
    json payload = json::parse(published[0].payload);
    EXPECT_EQ(payload.at("raised"), true);
    EXPECT_EQ(payload.at("value"), 7.0);
    EXPECT_EQ(payload.at("time"), HubTesting::kMoment);
    EXPECT_EQ(payload.at("words"), "The smoothing filter has lost its carrier phases");

    Advance(1.0);
    Tell(MakeDiagnostic(false, 0.0));
    payload = PayloadOf("diagnostic");
    EXPECT_EQ(payload.at("raised"), false);
    EXPECT_EQ(payload.at("value"), nullptr);
    EXPECT_EQ(payload.at("time"), HubTesting::kMoment + 1.0);
}

TEST_F(MQTTPublisher, publishes_a_diagnostic_when_something_about_it_is_new) {
    for (const double value : {1.0, 1.0, 2.0, std::nan(""), std::nan("")}) {
        Tell(MakeDiagnostic(true, value));
    }
    for (int i = 0; i < 3; ++i) {
        Tell(MakeDiagnostic(false, i));
    }
    EXPECT_EQ(Pass("diagnostic").size(), 4U);
}

TEST_F(MQTTPublisher, publishes_the_health_when_it_changes) {
    EXPECT_EQ(PayloadOf("health").at("state"), "gone");
    Register("P");
    Tell(Fixed());
    Advance(1.0);
    EXPECT_EQ(PayloadOf("health").at("state"), "live");
    for (int i = 0; i < 10; ++i) {
        Advance(0.1);
        EXPECT_EQ(Pass("health").size(), 0U);
    }
    Advance(5.0);
    EXPECT_EQ(PayloadOf("health").at("state"), "old");
}

TEST_F(MQTTPublisher, publishes_nothing_without_a_broker) {
    CMQTTPublisher publisher(m_state);
    EXPECT_EQ(publisher.Start(Hub::SSettings()), "");
    publisher.NewMessage(Message<Hub::SEvent>("P"));
    publisher.NewMessage(MakeDiagnostic(true, 1.0));
    publisher.NewMessage(MakeStatus("key", "1"));
    publisher.NewMessage(Fixed());
    publisher.EndPass();
    EXPECT_TRUE(m_outbox->IsEmpty());
}

TEST_F(MQTTPublisher, says_what_is_wrong_with_its_settings) {
    Hub::SSettings settings;
    settings.mqttHost = "localhost";
    settings.mqttDevice = "a/b";
    EXPECT_EQ(CMQTTPublisher(m_state).Start(settings),
              "mqtt: 'a/b' is no device's name: 1 to 100 characters, none of them '+', '#', '/' or "
              "a control character");
}
