#include "Port/PortHandlerTesting.h"

namespace {

using Sentences::Bestpos;
using Texts = std::vector<std::string>;

/// Remembers what happened in which order.
class CTracingObserver : public CLogObserver {
public:
    CTracingObserver(std::string name, std::string& trace) : m_name(name), m_trace(trace) {}
    void NewRecord(CGPSRecord*) override { m_trace += m_name; }

private:
    std::string m_name;
    std::string& m_trace;
};

/// Appends another observer to the list that it is in, once.
class CAppendingObserver : public CLogObserver {
public:
    CAppendingObserver(Novatel::CPortHandler::ObserverList& list, CLogObserver& other)
        : m_list(list), m_other(other) {}
    void NewRecord(CGPSRecord*) override {
        if (m_list.size() == 1) {
            m_list.push_back(&m_other);
        }
    }

private:
    Novatel::CPortHandler::ObserverList& m_list;
    CLogObserver& m_other;
};

class CFixedCommand : public CReceiverCommand {
public:
    explicit CFixedCommand(std::size_t size, bool encodes = true)
        : m_size(size), m_encodes(encodes) {}
    bool Encode(std::vector<std::uint8_t>& bytes, std::uint8_t portAddress, std::uint16_t sequence,
                std::uint16_t week, std::uint32_t milliseconds) const override {
        bytes.assign(m_size, 'c');
        arguments = {portAddress, sequence, week, milliseconds};
        return m_encodes;
    }

    mutable std::vector<std::uint32_t> arguments;

private:
    std::size_t m_size;
    bool m_encodes;
};

std::string BytesOf(const Bytes::Sentence& sentence) {
    return std::string(sentence.begin(), sentence.end());
}

} // namespace

TEST_F(PortHandler, tells_that_it_has_started_and_that_it_ended) {
    EXPECT_EQ(Status("started"), Texts{"started"});
    { const Novatel::CPortHandler other("Other", m_config); }
    EXPECT_EQ(m_published.Texts("\"name\":\"Other\",\"level\":\"essential\",\"key\":\"started\""),
              (Texts{"started", "exitted"}));
}

TEST_F(PortHandler, registers_its_logger_under_its_own_name) {
    const Novatel::CPortHandler other("NovatelPortHandler2", m_config);
    EXPECT_EQ(m_published.Count("logger.register \"name\":\"NovatelPortHandler2\""), 1);
}

TEST_F(PortHandler, hands_every_sentence_as_a_record_to_the_observers) {
    EXPECT_TRUE(Receive(Bestpos().bytes()));
    Receive(BytesOf(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")) + "\r\n");
    Receive(BytesOf(Sentences::Nmea("GPZDA,1")) + "\r\n");
    EXPECT_EQ(m_observer.messageIDs, (std::vector<int>{42, 1235, 65535}));
}

TEST_F(PortHandler, calls_observers_in_list_order) {
    std::string trace;
    CTracingObserver first("1", trace);
    CTracingObserver second("2", trace);
    m_observers = {&second, &first};
    Receive(Bestpos().bytes());
    Receive(Bestpos().bytes());
    EXPECT_EQ(trace, "2121");
}

TEST_F(PortHandler, sees_observers_that_are_appended_later) {
    CAppendingObserver appending(m_observers, m_observer);
    m_observers = {&appending};
    Receive(Bestpos().bytes());
    EXPECT_EQ(m_observer.messageIDs, std::vector<int>{42});
}

TEST_F(PortHandler, completes_a_sentence_with_the_next_chunk_and_counts_it_once) {
    const std::string bytes = BytesOf(Bestpos().bytes());
    Receive(bytes.substr(0, 50));
    EXPECT_EQ(Status("checksum_stats"), Texts{});
    Receive(bytes.substr(50));
    EXPECT_EQ(Status("checksum_stats"), Texts{"1,0"});
    EXPECT_EQ(m_observer.messageIDs.size(), 1U);
}

TEST_F(PortHandler, publishes_the_checksums_after_every_sentence_good_or_rejected) {
    Receive(BytesOf(Bestpos().bytes()) + BytesOf(Bestpos().wrongCRC().bytes()) +
            BytesOf(Bestpos().bytes()));
    Receive(std::string_view("#BAD,1;2*00000000\r\n$GPZDA*00\r\n"));
    EXPECT_EQ(Status("checksum_stats"), (Texts{"1,0", "1,1", "2,1", "2,2", "2,3"}));
    EXPECT_EQ(m_observer.messageIDs.size(), 2U);
}

TEST_F(PortHandler, counts_sentences_that_become_no_record_as_good) {
    Receive(BytesOf(Sentences::AsciiLog("BESTPOSA", "x")) + "\r\n");
    EXPECT_EQ(Status("checksum_stats"), Texts{"1,0"});
    EXPECT_TRUE(m_observer.messageIDs.empty());
    EXPECT_EQ(m_published.Count("QRS_"), 0);
}

TEST_F(PortHandler, publishes_the_timing_of_every_record) {
    Core::ClockHooks().unix = [] { return Core::Time::FromSeconds(1700000000.25); };
    Receive(Bestpos().week(1800).milliseconds(345600500).bytes());
    EXPECT_EQ(m_published.Texts("logger.data \"name\":\"Port\",\"key\":\"QRS_42\""),
              Texts{"1700000000.250000,1800,345600.500000"});
    for (const SLinkMessage& message : m_published.Messages()) {
        if (message.method == std::string("logger.data")) {
            EXPECT_EQ(message.time, 1700000000.25);
        }
    }
}

TEST_F(PortHandler, fails_only_when_a_readable_port_gives_no_bytes) {
    EXPECT_FALSE(m_handler.HandlePort(true));
    EXPECT_TRUE(m_handler.HandlePort(false));
    EXPECT_TRUE(Receive(std::string_view("x")));
}

TEST_F(PortHandler, does_not_read_a_port_that_is_not_readable) {
    m_source.Bring(Bestpos().bytes());
    m_handler.HandlePort(false);
    EXPECT_EQ(m_source.reads, 0);
}

TEST_F(PortHandler, lets_its_source_go_on_writing_once_a_pass) {
    m_handler.HandlePort(false);
    m_handler.HandlePort(false);
    EXPECT_EQ(m_source.continues, 2);
}

TEST_F(PortHandler, tells_why_its_source_failed_once) {
    m_source.Fail("/dev/ttyS0: gone");
    testing::internal::CaptureStderr();
    m_handler.HandlePort(false);
    m_handler.HandlePort(false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Port: /dev/ttyS0: gone\n");
    EXPECT_EQ(Events("/dev/ttyS0: gone"), 1);
}

TEST_F(PortHandler, has_the_descriptor_of_its_source) {
    m_source.descriptor = 7;
    EXPECT_EQ(m_handler.FileDescriptor(), 7);
    EXPECT_EQ(m_handler.ByteSource(), &m_source);
    const Novatel::CPortHandler without("Other", m_config);
    EXPECT_EQ(without.FileDescriptor(), -1);
}

TEST_F(PortHandler, keeps_the_capture_until_it_grows_past_1023_bytes) {
    Receive(std::string(1000, 'x'));
    Receive(std::string(23, 'y'));
    EXPECT_EQ(m_published.Count("logger.raw"), 0);
    Receive(std::string(1, 'z'));
    EXPECT_EQ(m_published.Texts("logger.raw \"name\":\"Port\""),
              Texts{std::string(1000, 'x') + std::string(23, 'y') + "z"});
}

TEST_F(PortHandler, hands_the_capture_over_when_asked_and_nothing_when_there_is_none) {
    Receive(std::string_view("abc"));
    m_handler.FlushCapture();
    m_handler.FlushCapture();
    EXPECT_EQ(m_published.Texts("logger.raw"), Texts{"abc"});
}

TEST_F(PortHandler, reports_an_encoded_command_as_sent_only_when_the_write_returns_its_size) {
    const CFixedCommand oneByte(1);
    EXPECT_TRUE(m_handler.SendCommand(oneByte, 0xC0, 2, 1800, 4));
    EXPECT_EQ(oneByte.arguments, (std::vector<std::uint32_t>{0xC0, 2, 1800, 4}));
    EXPECT_EQ(m_source.written, "c");
    EXPECT_FALSE(m_handler.SendCommand(CFixedCommand(5), 0, 0, 0, 0));
    EXPECT_EQ(m_source.written, "ccccc");
    m_source.vectorWriteResult = 7;
    EXPECT_TRUE(m_handler.SendCommand(CFixedCommand(7), 0, 0, 0, 0));
}

TEST_F(PortHandler, writes_nothing_of_a_command_that_cannot_be_encoded) {
    EXPECT_FALSE(m_handler.SendCommand(CFixedCommand(1, false), 0, 0, 0, 0));
    EXPECT_EQ(m_source.written, "");
}

TEST_F(PortHandler, keeps_the_last_counts_for_whoever_comes_later) {
    CHubLink::Get().SetTap(nullptr);
    Receive(Sentences::Bestpos().bytes());
    Bytes::Sentence chunk = Sentences::Bestpos();
    const Bytes::Sentence bad = Sentences::Bestpos().wrongCRC();
    chunk.insert(chunk.end(), bad.begin(), bad.end());
    chunk.insert(chunk.end(), chunk.begin(), chunk.end());
    Receive(chunk);
    const std::string members = R"("name":"Port","level":"essential","key":"checksum_stats")";
    EXPECT_EQ(CHubLink::Get().State("status " + members, "", members).message.text, "3,2");
}
