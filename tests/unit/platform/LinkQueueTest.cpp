#include "LinkQueue.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using EPriority = CLinkQueue::EPriority;

SLinkMessage Line(const std::string& text) {
    SLinkMessage message;
    message.method = "line";
    message.members = "\"text\":\"" + text + "\"";
    return message;
}

/// The texts of a queue in the order in which they would be sent.
class LinkQueue : public testing::Test {
protected:
    void PublishState(const std::string& key, const std::string& value) {
        CLinkQueue::SState& state = m_queue.State(key, "state", "\"key\":\"" + key + "\"");
        state.message.textKind = SLinkMessage::EText::value;
        state.message.text = value;
        m_queue.Publish(state);
    }

    /// Sends everything that waits: each message as "<text or key=value> ".
    std::string SendAll() {
        std::string bytes;
        m_queue.Take(bytes, CLinkQueue::kCapacity * 4);
        m_queue.Left(bytes.size());
        return Shorten(bytes);
    }

    static std::string Member(const std::string& line, const std::string& name) {
        const std::string start = "\"" + name + "\":\"";
        const std::size_t begin = line.find(start);
        return begin == std::string::npos
                   ? std::string()
                   : line.substr(begin + start.size(),
                                 line.find('"', begin + start.size()) - begin - start.size());
    }

    static std::string Shorten(const std::string& bytes) {
        std::string result;
        std::size_t start = 0;
        for (std::size_t end = bytes.find('\n'); end != std::string::npos;
             end = bytes.find('\n', start)) {
            const std::string line = bytes.substr(start, end - start);
            const std::string key = Member(line, "key");
            result += key.empty() ? Member(line, "text") : key + "=" + Member(line, "value");
            result += ' ';
            start = end + 1;
        }
        return result;
    }

    /// Lines of 100,000 bytes each.
    void AddBigLines(int count) {
        for (int i = 0; i < count; ++i) {
            m_queue.Add(Line(std::to_string(i) + std::string(100'000, 'x')), EPriority::line);
        }
    }

    CLinkQueue m_queue;
};

} // namespace

TEST_F(LinkQueue, sends_names_then_waiting_lines_then_state_after_a_connect) {
    PublishState("a", "1");
    m_queue.Add(Line("first"), EPriority::line);
    m_queue.AddName("n", Line("name"));
    m_queue.Add(Line("event"), EPriority::event);
    m_queue.Add(Line("second"), EPriority::line);
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "name first event second a=1 ");
}

TEST_F(LinkQueue, remembers_only_the_last_state_while_disconnected) {
    PublishState("a", "1");
    PublishState("b", "2");
    PublishState("a", "3");
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "a=3 b=2 ");
}

TEST_F(LinkQueue, keeps_the_order_of_publication_while_connected) {
    m_queue.Connected();
    PublishState("a", "1");
    m_queue.Add(Line("x"), EPriority::line);
    PublishState("a", "2");
    m_queue.Add(Line("y"), EPriority::event);
    EXPECT_EQ(SendAll(), "a=1 x a=2 y ");
}

TEST_F(LinkQueue, sends_all_state_again_after_every_reconnect_but_lines_once) {
    m_queue.Connected();
    PublishState("a", "1");
    m_queue.Add(Line("x"), EPriority::line);
    SendAll();
    m_queue.Disconnected();
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "a=1 ");
}

TEST_F(LinkQueue, registers_a_name_once_a_connection) {
    m_queue.AddName("n", Line("name"));
    m_queue.AddName("n", Line("again"));
    m_queue.Connected();
    m_queue.AddName("late", Line("late"));
    m_queue.AddName("n", Line("again"));
    EXPECT_EQ(SendAll(), "name late ");
    m_queue.Disconnected();
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "name late ");
}

TEST_F(LinkQueue, sends_a_message_that_was_cut_by_the_loss_again_whole) {
    m_queue.Connected();
    m_queue.Add(Line("whole"), EPriority::line);
    m_queue.Add(Line("cut"), EPriority::line);
    m_queue.Add(Line("event"), EPriority::event);
    m_queue.Add(Line("waiting"), EPriority::line);
    std::string bytes;
    m_queue.Take(bytes, bytes.size() + 250);
    m_queue.Left(bytes.find('\n') + 10);
    m_queue.Disconnected();
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "cut event waiting ");
}

TEST_F(LinkQueue, drops_the_oldest_lines_and_counts_them_when_too_much_waits) {
    AddBigLines(12);
    m_queue.Connected();
    EXPECT_EQ(m_queue.Dropped(), 2U);
    EXPECT_EQ(SendAll().substr(0, 3), "2xx");
}

TEST_F(LinkQueue, drops_events_only_when_no_line_is_left) {
    m_queue.Add(Line("event"), EPriority::event);
    AddBigLines(12);
    m_queue.Connected();
    EXPECT_EQ(SendAll().substr(0, 6), "event ");
}

TEST_F(LinkQueue, drops_the_oldest_events_when_only_events_wait) {
    for (int i = 0; i < 12; ++i) {
        m_queue.Add(Line(std::to_string(i) + std::string(100'000, 'x')), EPriority::event);
    }
    m_queue.Connected();
    EXPECT_EQ(SendAll().substr(0, 3), "2xx");
}

TEST_F(LinkQueue, replaces_a_waiting_state_by_a_newer_one_only_when_full) {
    m_queue.Connected();
    PublishState("a", "1");
    PublishState("a", "2");
    for (int i = 0; i < 10; ++i) {
        PublishState("k" + std::to_string(i), std::string(104'000, 'x'));
    }
    PublishState("k3", std::string(104'000, 'z'));
    const std::string sent = SendAll();
    EXPECT_EQ(sent.substr(0, 8), "a=1 a=2 ");
    EXPECT_EQ(sent.find("k3=x"), std::string::npos);
    EXPECT_NE(sent.find("k3=z"), std::string::npos);
    EXPECT_NE(sent.find("k4=x"), std::string::npos);
}

TEST_F(LinkQueue, keeps_at_most_its_capacity_of_lines) {
    for (int i = 0; i < 30'000; ++i) {
        m_queue.Add(Line("line"), EPriority::line);
    }
    m_queue.Connected();
    std::string bytes;
    m_queue.Take(bytes, 10 * CLinkQueue::kCapacity);
    EXPECT_LE(bytes.size(), CLinkQueue::kCapacity);
    EXPECT_GT(bytes.size(), CLinkQueue::kCapacity / 2);
}

TEST_F(LinkQueue, forgets_transients_with_their_connection) {
    m_queue.Add(Line("before"), EPriority::transient);
    m_queue.Connected();
    m_queue.Add(Line("lost"), EPriority::transient);
    m_queue.Disconnected();
    m_queue.Connected();
    EXPECT_EQ(SendAll(), "");
    m_queue.Add(Line("now"), EPriority::transient);
    EXPECT_EQ(SendAll(), "now ");
}

TEST_F(LinkQueue, frees_the_room_of_what_has_left) {
    m_queue.Connected();
    AddBigLines(10);
    EXPECT_FALSE(m_queue.HasRoomFor(Line(std::string(100'000, 'x'))));
    SendAll();
    EXPECT_TRUE(m_queue.HasRoomFor(Line(std::string(1'000'000, 'x'))));
    EXPECT_TRUE(m_queue.IsEmpty());
}

TEST_F(LinkQueue, frees_the_room_of_state_that_waited_on_a_lost_connection) {
    m_queue.Connected();
    for (int i = 0; i < 9; ++i) {
        PublishState("k" + std::to_string(i), std::string(100'000, 'x'));
    }
    m_queue.Disconnected();
    EXPECT_TRUE(m_queue.HasRoomFor(Line(std::string(1'000'000, 'x'))));
}

TEST_F(LinkQueue, is_not_empty_before_the_last_byte_has_left) {
    m_queue.Connected();
    m_queue.Add(Line("x"), EPriority::line);
    std::string bytes;
    m_queue.Take(bytes, 1);
    m_queue.Left(bytes.size() - 1);
    EXPECT_FALSE(m_queue.IsEmpty());
    m_queue.Left(1);
    EXPECT_TRUE(m_queue.IsEmpty());
}

TEST(LinkMessage, is_a_notification_on_one_line) {
    SLinkMessage message;
    message.method = "logger.data";
    AppendMember(message.members, "name", "a\"b");
    AppendMember(message.members, "count", 5LL);
    message.textKind = SLinkMessage::EText::value;
    message.text = "x\ny";
    message.time = 1.5;
    std::string line;
    message.AppendTo(line);
    EXPECT_EQ(line, R"({"jsonrpc":"2.0","method":"logger.data","params":{"name":"a\"b","count":5,)"
                    R"("value":"x\ny","time":1.5}})"
                    "\n");
}

TEST(LinkMessage, carries_raw_bytes_as_base64) {
    SLinkMessage message;
    message.method = "logger.raw";
    message.members = "\"name\":\"n\"";
    message.textKind = SLinkMessage::EText::base64;
    const auto encoded = [&message](const std::string& bytes) {
        message.text = bytes;
        std::string line;
        message.AppendTo(line);
        const std::size_t start = line.find("\"data\":\"") + 8;
        return line.substr(start, line.find('"', start) - start);
    };
    // RFC 4648, section 10, and bytes above 0x7F.
    EXPECT_EQ(encoded("f"), "Zg==");
    EXPECT_EQ(encoded("fo"), "Zm8=");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(encoded(std::string("\xFF\x00\xFB\xEF", 4)), "/wD77w==");
}

TEST(LinkMessage, estimates_its_length_from_above_within_a_few_bytes) {
    for (const auto kind :
         {SLinkMessage::EText::none, SLinkMessage::EText::value, SLinkMessage::EText::base64}) {
        SLinkMessage message;
        message.method = "logger.data";
        message.members = "\"name\":\"n\"";
        message.textKind = kind;
        message.text = kind == SLinkMessage::EText::none ? "" : "1234567890";
        message.time = 1700000000.123456;
        std::string line;
        message.AppendTo(line);
        EXPECT_GE(message.EstimatedSize(), line.size());
        EXPECT_LE(message.EstimatedSize(), line.size() + 16);
    }
}

TEST(LinkMessage, carries_an_id_when_it_is_a_request) {
    SLinkMessage message;
    message.method = "logger.getCategory";
    message.members = "\"category\":\"c\"";
    message.id = 7;
    std::string line;
    message.AppendTo(line);
    EXPECT_EQ(line.find(R"({"jsonrpc":"2.0","id":7,"method")"), 0U);
}
