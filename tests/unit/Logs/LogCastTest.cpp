#include "Logs/LogCast.h"

#include "Framing/RecordFactory.h"
#include "Logs/NMEARecord.h"
#include "Logs/NovatelOEMV/NovatelBESTPOS.h"
#include "Logs/NovatelOEMV/NovatelBESTXYZ.h"
#include "Logs/NovatelOEMV/NovatelLBANDINFO.h"
#include "Logs/NovatelOEMV/NovatelLBANDSTAT.h"
#include "Logs/NovatelOEMV/NovatelOMNIHPPOS.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelPDPXYZ.h"
#include "Logs/NovatelOEMV/NovatelPSRDOP.h"
#include "Logs/NovatelOEMV/NovatelPSRXYZ.h"
#include "Logs/NovatelOEMV/NovatelREFSTATION.h"
#include "Logs/NovatelOEMV/NovatelRTKXYZ.h"
#include "Logs/NovatelOEMV/NovatelTIME.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

using namespace Novatel;

namespace {

using Found = std::vector<std::uint16_t>;

/// The identifiers of the logs that a record is found to be.
class CFinder {
public:
    explicit CFinder(const CGPSRecord& record) : m_record(record), m_cast(record) {}

    template <class TLog>
    CFinder& Try(std::uint16_t identifier) {
        const TLog* const log = m_cast.As<TLog>(identifier);
        if (log != nullptr) {
            EXPECT_EQ(static_cast<const CGPSRecord*>(log), &m_record);
            m_found.push_back(identifier);
        }
        return *this;
    }
    /// With the identifier that the log's class has.
    template <class TLog>
    CFinder& TryOwn() {
        const TLog* const log = m_cast.As<TLog>();
        if (log != nullptr) {
            m_found.push_back(TLog::kMessageID);
        }
        return *this;
    }
    const Found& Get() const { return m_found; }

private:
    const CGPSRecord& m_record;
    CLogCast m_cast;
    Found m_found;
};

Found FindByNumber(const CGPSRecord& record) {
    return CFinder(record)
        .Try<CNovatelVERSION>(37)
        .Try<CNovatelBESTPOS>(42)
        .Try<CNovatelRANGE>(43)
        .Try<CNovatelTRACKSTAT>(83)
        .Try<CNovatelRXSTATUS>(93)
        .Try<CNovatelTIME>(101)
        .Try<CNovatelPSRDOP>(174)
        .Try<CNovatelREFSTATION>(175)
        .Try<CNovatelBESTXYZ>(241)
        .Try<CNovatelPSRXYZ>(243)
        .Try<CNovatelRTKXYZ>(244)
        .Try<CNovatelCOMCONFIG>(317)
        .Try<CNovatelPDPXYZ>(471)
        .Try<CNovatelOMNIHPPOS>(495)
        .Try<CNovatelLBANDINFO>(730)
        .Try<CNovatelLBANDSTAT>(731)
        .Try<CNovatelPDPSTAT>(1085)
        .Try<CNovatelCHANCONFIGLIST>(1148)
        .Try<CNovatelSatsLog>(1162)
        .Try<CNovatelSatsLog>(1174)
        .Try<CNovatelSatsLog>(1234)
        .Get();
}

/// What the observers ask for without saying a number.
Found FindByClass(const CGPSRecord& record) {
    return CFinder(record)
        .TryOwn<CNovatelVERSION>()
        .TryOwn<CNovatelBESTPOS>()
        .TryOwn<CNovatelRANGE>()
        .TryOwn<CNovatelTRACKSTAT>()
        .TryOwn<CNovatelRXSTATUS>()
        .TryOwn<CNovatelTIME>()
        .TryOwn<CNovatelPSRDOP>()
        .TryOwn<CNovatelREFSTATION>()
        .TryOwn<CNovatelBESTXYZ>()
        .TryOwn<CNovatelPSRXYZ>()
        .TryOwn<CNovatelRTKXYZ>()
        .TryOwn<CNovatelCOMCONFIG>()
        .TryOwn<CNovatelPDPXYZ>()
        .TryOwn<CNovatelOMNIHPPOS>()
        .TryOwn<CNovatelLBANDINFO>()
        .TryOwn<CNovatelLBANDSTAT>()
        .TryOwn<CNovatelPDPSTAT>()
        .TryOwn<CNovatelCHANCONFIGLIST>()
        .TryOwn<CNMEARecord>()
        .Get();
}

/// A sentence of the right size for each log that has a decoder.
const std::map<std::uint16_t, Bytes::Sentence>& KnownLogs() {
    static const std::map<std::uint16_t, Bytes::Sentence> kLogs = {
        {37, Sentences::Version()},
        {42, Sentences::Bestpos()},
        {43, Sentences::Range()},
        {83, Sentences::Trackstat()},
        {93, Sentences::Rxstatus()},
        {101, Sentences::Time()},
        {174, Sentences::Psrdop()},
        {175, Sentences::Refstation()},
        {241, Sentences::Cartesian(241)},
        {243, Sentences::Cartesian(243)},
        {244, Sentences::Cartesian(244)},
        {317, Sentences::Comconfig()},
        {471, Sentences::Cartesian(471)},
        {495, Sentences::Omnihppos()},
        {730, Sentences::BinaryLog(730).bodySize(32)},
        {731, Sentences::BinaryLog(731).bodySize(48)},
        {1085, Sentences::Pdpstat()},
        {1148, Sentences::Chanconfiglist()},
        {1162, Sentences::Sats(1162)},
        {1174, Sentences::Sats(1174)},
        {1234, Sentences::Sats(1234)},
    };
    return kLogs;
}

/// Writes the identifier over that of a sentence: much faster than building one for each.
const Bytes::Sentence& WithIdentifier(Bytes::Sentence& sentence, unsigned identifier) {
    sentence[4] = static_cast<std::uint8_t>(identifier);
    sentence[5] = static_cast<std::uint8_t>(identifier >> 8);
    return sentence;
}

bool IsSatsLog(std::uint16_t identifier) {
    return identifier == 1162 || identifier == 1174 || identifier == 1234;
}

} // namespace

TEST(LogCast, finds_each_known_log_as_itself_alone) {
    for (const auto& [identifier, sentence] : KnownLogs()) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        EXPECT_EQ(FindByNumber(*record), Found{identifier});
        EXPECT_EQ(FindByClass(*record), IsSatsLog(identifier) ? Found{} : Found{identifier});
    }
}

TEST(LogCast, tells_the_satellite_logs_apart_by_their_numbers) {
    const std::unique_ptr<CGPSRecord> record(CreateRecord(Sentences::Sats(1174)));
    const CLogCast cast(*record);
    EXPECT_EQ(cast.As<CNovatelSatsLog>(CNovatelSatsLog::kPSRSATS), nullptr);
    EXPECT_EQ(cast.As<CNovatelSatsLog>(CNovatelSatsLog::kPDPSATS), nullptr);
    EXPECT_NE(cast.As<CNovatelSatsLog>(CNovatelSatsLog::kRTKSATS), nullptr);
}

TEST(LogCast, finds_no_log_in_any_other_identifier) {
    Bytes::Sentence sentence = Sentences::BinaryLog(0).bodySize(4);
    for (unsigned identifier = 0; identifier <= 65535; ++identifier) {
        if (KnownLogs().contains(static_cast<std::uint16_t>(identifier))) {
            continue;
        }
        const std::unique_ptr<CGPSRecord> record(
            CreateRecord(WithIdentifier(sentence, identifier)));
        ASSERT_EQ(record->GetMessageID(), identifier);
        ASSERT_TRUE(FindByNumber(*record).empty()) << identifier;
        ASSERT_TRUE(FindByClass(*record).empty()) << identifier;
    }
}

TEST(LogCast, finds_no_log_in_a_response_to_any_command) {
    Bytes::Sentence sentence = Sentences::Response(0).responseID(1).responseText("OK");
    for (unsigned identifier = 0; identifier <= 65535; ++identifier) {
        const std::unique_ptr<CGPSRecord> record(
            CreateRecord(WithIdentifier(sentence, identifier)));
        ASSERT_EQ(record->GetMessageID(), identifier);
        ASSERT_TRUE(FindByNumber(*record).empty()) << identifier;
        ASSERT_TRUE(FindByClass(*record).empty()) << identifier;
    }
}

TEST(LogCast, finds_nmea_sentences_and_ascii_records_as_no_log) {
    const std::unique_ptr<CGPSRecord> nmea(CreateRecord(Sentences::Nmea("GPGSV,1")));
    EXPECT_EQ(FindByClass(*nmea), Found{CNMEARecord::kMessageID});
    EXPECT_EQ(FindByNumber(*nmea), Found{});
    const std::unique_ptr<CGPSRecord> ascii(
        CreateRecord(Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE")));
    EXPECT_EQ(FindByClass(*ascii), Found{});
    EXPECT_EQ(FindByNumber(*ascii), Found{});
}
