#include "LogObserver/EpochFlusher.h"

#include "Framing/RecordFactory.h"
#include "Port/PortHandlerTesting.h"

#include <memory>

namespace {

class EpochFlusherTest : public PortHandler {
protected:
    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        m_flusher.NewRecord(record.get());
    }
    int Flushes() const { return m_published.Count("logger.raw"); }

    EpochFlusher m_flusher;
};

} // namespace

TEST_F(EpochFlusherTest, flushes_at_the_logs_that_close_an_epoch) {
    m_flusher.SetPortHandler(&m_handler);
    Receive(std::string_view("abc"));
    Offer(Sentences::Cartesian(471));
    EXPECT_EQ(Flushes(), 1);
    Receive(std::string_view("abc"));
    Offer(Sentences::Pdpstat());
    EXPECT_EQ(Flushes(), 2);
}

TEST_F(EpochFlusherTest, does_not_flush_at_other_records) {
    m_flusher.SetPortHandler(&m_handler);
    Receive(std::string_view("abc"));
    for (const std::uint16_t other : {241, 243, 244}) {
        Offer(Sentences::Cartesian(other));
    }
    Offer(Sentences::Bestpos());
    Offer(Sentences::Nmea("GPZDA,1"));
    m_flusher.NewRecord(nullptr);
    EXPECT_EQ(Flushes(), 0);
}

TEST_F(EpochFlusherTest, does_nothing_without_a_port_handler) {
    Receive(std::string_view("abc"));
    Offer(Sentences::Pdpstat());
    EXPECT_EQ(Flushes(), 0);
}

TEST_F(EpochFlusherTest, flushes_what_came_before_the_chunk_that_closes_the_epoch) {
    m_flusher.SetPortHandler(&m_handler);
    m_observers = {&m_flusher};
    Receive(std::string_view("before"));
    Receive(Sentences::Pdpstat().bytes());
    EXPECT_EQ(m_published.Texts("logger.raw"), std::vector<std::string>{"before"});
}
