#include "LogObserver/NMEALogObserver.h"

#include "LogObserver/ReceiverStatusTesting.h"
#include "Support/TextSentences.h"

namespace {

class NMEALogObserver : public CReceiverStatusTesting {
protected:
    void OfferTime(std::uint32_t milliseconds) {
        Offer(Sentences::Time().milliseconds(milliseconds));
    }
    /// What one sentence makes the NMEA observer publish.
    Lines Forwarded(const Bytes::Sentence& sentence) {
        m_published.Forget();
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        m_nmea.NewRecord(record.get());
        return m_published.All();
    }
    static std::string Message(const std::string& id, const std::string& time,
                               const std::string& sentence) {
        return R"(nmea.sentence "name":"CNMEAHandlerAPI","id":")" + id + R"(","gpsTime":)" + time +
               R"(,"sentence":")" + sentence + "\" ";
    }

    CNMEALogObserver m_nmea{m_observer};
};

} // namespace

TEST_F(NMEALogObserver, forwards_four_kinds_of_sentences_whole_with_their_checksums) {
    OfferTime(345600500);
    for (const std::string id : {"GPGSA", "GPGSV", "GPZDA", "GPGST"}) {
        const Bytes::Sentence sentence = Sentences::Nmea(id + ",1,,02*,3.5");
        EXPECT_EQ(Forwarded(sentence),
                  Lines{Message(id, "345600000", {sentence.begin(), sentence.end()})});
    }
    EXPECT_EQ(Forwarded(Sentences::BytesOf("$GPZDA,204007.00,13,06,2007,00,00*6A")),
              Lines{Message("GPZDA", "345600000", "$GPZDA,204007.00,13,06,2007,00,00*6A")});
}

TEST_F(NMEALogObserver, forwards_no_other_sentences) {
    for (const std::string id :
         {"GPGGA", "GPRMC", "GLGSV", "GNGSA", "GPVTG", "GPGLL", "gpgsv", "PGPGS", "GPGS,"}) {
        EXPECT_EQ(Forwarded(Sentences::Nmea(id + ",GPGSV,1")), Lines{}) << id;
    }
}

TEST_F(NMEALogObserver, looks_at_five_characters_behind_the_first) {
    EXPECT_EQ(Forwarded(Sentences::BytesOf("$GPGSVX")), Lines{Message("GPGSV", "0", "$GPGSVX")});
    EXPECT_EQ(Forwarded(Sentences::BytesOf("$ GPGSV,1")), Lines{});
}

TEST_F(NMEALogObserver, passes_over_sentences_shorter_than_an_identifier) {
    EXPECT_EQ(Forwarded(Sentences::BytesOf("$GPGSV")), Lines{Message("GPGSV", "0", "$GPGSV")});
    for (const std::string_view sentence : {"$GPGS", "$GPG", "$"}) {
        EXPECT_EQ(Forwarded(Sentences::BytesOf(sentence)), Lines{}) << sentence;
    }
}

TEST_F(NMEALogObserver, dates_sentences_with_the_whole_seconds_of_the_last_time_log) {
    const Bytes::Sentence sentence = Sentences::BytesOf("$GPGSV");
    EXPECT_EQ(Forwarded(sentence), Lines{Message("GPGSV", "0", "$GPGSV")});
    const std::pair<std::uint32_t, const char*> kTimes[] = {
        {345600999, "345600000"},
        {345601000, "345601000"},
        {345601001, "345601000"},
        {604799999, "604799000"},
        {999, "0"},
    };
    for (const auto& [milliseconds, time] : kTimes) {
        OfferTime(milliseconds);
        EXPECT_EQ(Forwarded(sentence), Lines{Message("GPGSV", time, "$GPGSV")}) << milliseconds;
    }
}

TEST_F(NMEALogObserver, dates_sentences_with_no_other_log) {
    OfferTime(7000);
    Offer(Sentences::Range().milliseconds(9000));
    EXPECT_EQ(Forwarded(Sentences::BytesOf("$GPGST")), Lines{Message("GPGST", "7000", "$GPGST")});
}

TEST_F(NMEALogObserver, forwards_every_repetition) {
    const Bytes::Sentence sentence = Sentences::BytesOf("$GPGSA");
    EXPECT_EQ(Forwarded(sentence), Forwarded(sentence));
    EXPECT_EQ(m_published.Count("nmea.sentence"), 1);
}

TEST_F(NMEALogObserver, passes_over_receiver_logs_and_null_records) {
    EXPECT_EQ(Forwarded(Sentences::Time()), Lines{});
    EXPECT_EQ(Forwarded(Sentences::BinaryLog(65535).text(0, "$GPGSV,1")), Lines{});
    EXPECT_EQ(Forwarded(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")), Lines{});
    m_nmea.NewRecord(nullptr);
    EXPECT_EQ(m_published.All(), Lines{});
}
