#include "HubLink.h"

#include "platform/TestHub.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using EPriority = CLinkQueue::EPriority;

constexpr Core::Time kDeadline = Core::Time::FromMilliseconds(20'000);

SLinkMessage Event(const std::string& text) {
    SLinkMessage message;
    message.method = "logger.event";
    AppendMember(message.members, "text", text);
    return message;
}

class HubLink : public testing::Test {
protected:
    /// Runs both ends until the condition holds; false when it never does.
    bool Until(const std::function<bool()>& condition) {
        const Core::MonotonicTime end = Core::MonotonicTime::Now() + kDeadline;
        while (!condition()) {
            if (Core::MonotonicTime::Now() > end) {
                return false;
            }
            m_link.EndPass();
            m_link.Wait(Core::Time::FromMilliseconds(1));
            m_hub.Serve();
        }
        return true;
    }

    bool Connect() {
        return Until([this] { return m_link.IsConnected() && m_hub.HasClient(); });
    }

    void PublishStatus(const std::string& text) {
        m_link.Publish(m_link.State("key", "logger.status", "\"key\":\"key\""), text);
    }

    CTestHub m_hub;
    CHubLink m_link{m_hub.Port()};
};

/// Members that are a number which changes behind the link's back.
class CNumberMember : public ILateMembers {
public:
    void Append(std::string& members) const override { AppendMember(members, "number", number); }

    long long number = 0;
};

} // namespace

TEST_F(HubLink, registers_with_name_process_pid_and_version) {
    m_link.SetProgram("tester");
    m_link.AddName("Name");
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.register") == 1; }));
    const auto params = nlohmann::json::parse(m_hub.Lines()[0])["params"];
    EXPECT_EQ(params["name"], "Name");
    EXPECT_EQ(params["process"], "tester");
    EXPECT_GT(params["pid"], 0);
    EXPECT_EQ(params["version"], CORVANE_VERSION);
    EXPECT_GT(params["time"], 1.6e9);
}

TEST_F(HubLink, sends_what_was_published_before_it_was_connected) {
    PublishStatus("1");
    m_link.Publish(Event("early"), EPriority::event);
    PublishStatus("2");
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.status") == 1; }));
    EXPECT_EQ(m_hub.Texts("logger.event"), std::vector<std::string>{"early"});
    EXPECT_EQ(m_hub.Texts("logger.status"), std::vector<std::string>{"2"});
}

TEST_F(HubLink, sends_remembered_state_with_its_original_time_after_a_reconnect) {
    ASSERT_TRUE(Connect());
    PublishStatus("1");
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.status") == 1; }));
    m_hub.Hangup();
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.status") == 2; }));
    EXPECT_EQ(m_hub.Lines()[0], m_hub.Lines()[1]);
}

TEST_F(HubLink, keeps_events_for_a_hub_that_comes_back) {
    ASSERT_TRUE(Connect());
    m_hub.Hangup();
    ASSERT_TRUE(Until([this] { return !m_link.IsConnected(); }));
    m_link.Publish(Event("meanwhile"), EPriority::event);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 1; }));
}

TEST_F(HubLink, never_waits_for_a_hub_that_does_not_read) {
    ASSERT_TRUE(Connect());
    m_hub.SetReading(false);
    for (int i = 0; i < 200; ++i) {
        m_link.Publish(Event(std::to_string(i) + std::string(50'000, 'x')), EPriority::line);
        m_link.EndPass();
    }
    EXPECT_TRUE(m_link.IsConnected());
    m_hub.SetReading(true);
    // What was dropped is told, and adds up with what arrived.
    ASSERT_TRUE(Until([this] {
        const std::vector<std::string> dropped = m_hub.Texts("logger.status");
        return !dropped.empty() && m_hub.Count("logger.event") + std::stoi(dropped.back()) == 200;
    }));
    const auto isToldByTheLink = [](const std::string& line) {
        return line.find("\"name\":\"PlatformLink\",\"level\":\"info\","
                         "\"key\":\"dropped_messages\"") != std::string::npos;
    };
    EXPECT_TRUE(std::any_of(m_hub.Lines().begin(), m_hub.Lines().end(), isToldByTheLink));
}

TEST_F(HubLink, gives_an_offline_run_all_the_time_its_hub_takes) {
    ASSERT_TRUE(Connect());
    m_link.BeginOfflineRun();
    // The hub reads only while the link waits: a reader of its own.
    const pid_t reader = fork();
    if (reader == 0) {
        m_hub.ServeUntilTheEnd();
        const std::vector<std::string> texts = m_hub.Texts("logger.event");
        if (texts.size() != 100) {
            _exit(3);
        }
        for (int i = 0; i < 100; ++i) {
            if (texts[static_cast<std::size_t>(i)].find(std::to_string(i) + "x") != 0) {
                _exit(1);
            }
        }
        _exit(m_hub.Count("logger.status") == 0 ? 0 : 2);
    }
    for (int i = 0; i < 100; ++i) {
        m_link.Publish(Event(std::to_string(i) + std::string(50'000, 'x')), EPriority::line);
    }
    m_link.Finish();
    int status = -1;
    ASSERT_EQ(waitpid(reader, &status, 0), reader);
    EXPECT_EQ(status, 0);
}

TEST_F(HubLink, makes_an_offline_run_wait_for_the_first_connect) {
    m_link.Publish(Event("x"), EPriority::event);
    m_link.BeginOfflineRun();
    EXPECT_TRUE(m_link.IsConnected());
}

TEST_F(HubLink, does_not_wait_for_a_hub_that_is_not_there) {
    m_hub.StopListening();
    const Core::MonotonicTime start = Core::MonotonicTime::Now();
    m_link.BeginOfflineRun();
    m_link.Finish();
    EXPECT_FALSE(m_link.IsConnected());
    EXPECT_LT((Core::MonotonicTime::Now() - start).AsSeconds(), 0.9);
}

TEST_F(HubLink, finishes_by_sending_what_is_left) {
    ASSERT_TRUE(Connect());
    m_link.Publish(Event("last"), EPriority::event);
    m_link.Finish();
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 1; }));
}

TEST_F(HubLink, reports_activity_only_while_connected) {
    int reports = 0;
    m_link.AddActivity(this, [&reports] { ++reports; });
    m_link.Wait(Core::Time::FromMilliseconds(1));
    EXPECT_EQ(reports, 0);
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Until([&reports] { return reports == 2; }));
    m_link.RemoveActivity(this);
    m_link.Wait(CHubLink::kActivityInterval);
    EXPECT_EQ(reports, 2);
}

TEST_F(HubLink, gets_a_category_and_sets_it_where_it_differs) {
    m_link.WishCategory("port", true);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.getCategory") == 1; }));
    const auto get = nlohmann::json::parse(m_hub.Lines().back());
    EXPECT_EQ(get["params"]["category"], "port");
    m_hub.Send(R"({"jsonrpc":"2.0","id":)" + get["id"].dump() +
               R"(,"result":{"category":"port","enabled":false}})");
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.setCategory") == 1; }));
    const auto set = nlohmann::json::parse(m_hub.Lines().back());
    EXPECT_EQ(set["params"]["enabled"], true);
    m_hub.Send(R"({"jsonrpc":"2.0","id":)" + set["id"].dump() +
               R"(,"result":{"category":"port","enabled":true}})");
    // Done: a new connection asks nothing more.
    m_link.Publish(Event("x"), EPriority::event);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 1; }));
    m_link.Wait(Core::Time::FromMilliseconds(1));
    m_hub.Hangup();
    ASSERT_TRUE(Until([this] { return !m_link.IsConnected(); }));
    m_link.Publish(Event("y"), EPriority::event);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 2; }));
    EXPECT_EQ(m_hub.Count("logger.getCategory"), 1);
}

TEST_F(HubLink, leaves_a_category_that_is_as_wished) {
    m_link.WishCategory("port", false);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.getCategory") == 1; }));
    const auto get = nlohmann::json::parse(m_hub.Lines().back());
    m_hub.Send(R"({"jsonrpc":"2.0","id":)" + get["id"].dump() +
               R"(,"result":{"category":"port","enabled":false}})");
    m_link.Publish(Event("x"), EPriority::event);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 1; }));
    EXPECT_EQ(m_hub.Count("logger.setCategory"), 0);
}

TEST_F(HubLink, asks_for_a_category_again_when_the_hub_went_before_it_answered) {
    m_link.WishCategory("port", true);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.getCategory") == 1; }));
    m_hub.Hangup();
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.getCategory") == 2; }));
}

TEST_F(HubLink, survives_whatever_the_hub_sends) {
    ASSERT_TRUE(Connect());
    m_link.WishCategory("port", true);
    for (const char* line :
         {"", "{", "[]", "null", R"({"id":1})", R"({"id":"1","result":{}})", "\xFF\xFE",
          R"({"id":1,"result":{"enabled":"x"}})", R"({"id":99,"result":{"enabled":true}})"}) {
        m_hub.Send(line);
    }
    m_hub.Send(std::string(2000, '['));
    m_link.Publish(Event("alive"), EPriority::event);
    ASSERT_TRUE(Until([this] { return m_hub.Count("logger.event") == 1; }));
    EXPECT_TRUE(m_link.IsConnected());
}

TEST_F(HubLink, writes_late_members_when_their_message_is_wanted) {
    CLinkQueue::SState& state = m_link.State("number", "test.number", "");
    CNumberMember member;
    state.lateMembers = &member;
    m_link.Publish(state);
    member.number = 5;
    EXPECT_EQ(state.message.members, "");
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Until([this] { return m_hub.Count("test.number") == 1; }));
    EXPECT_NE(m_hub.Lines().back().find(R"({"number":5,"time")"), std::string::npos);
    member.number = 6;
    m_link.Publish(state);
    member.number = 7;
    ASSERT_TRUE(Until([this] { return m_hub.Count("test.number") == 2; }));
    EXPECT_NE(m_hub.Lines().back().find(R"({"number":6,"time")"), std::string::npos);
}
