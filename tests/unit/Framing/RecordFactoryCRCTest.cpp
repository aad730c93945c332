// How the valid flag of every kind of record comes about.

#include "Framing/RecordFactory.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

using namespace Sentences;

namespace {

// One sentence for every class of the factory, with right lengths and a wrong CRC.
const Bytes::Sentence kWrongCRCs[] = {
    Version().wrongCRC(),      Bestpos().wrongCRC(),      Range().wrongCRC(),
    Trackstat().wrongCRC(),    Rxstatus().wrongCRC(),     Time().wrongCRC(),
    Psrdop().wrongCRC(),       Refstation().wrongCRC(),   Cartesian(241).wrongCRC(),
    Cartesian(243).wrongCRC(), Cartesian(244).wrongCRC(), Comconfig().wrongCRC(),
    Cartesian(471).wrongCRC(), Omnihppos().wrongCRC(),    BinaryLog(730).wrongCRC(),
    BinaryLog(731).wrongCRC(), Pdpstat().wrongCRC(),      Chanconfiglist().wrongCRC(),
    Sats(1162).wrongCRC(),     Sats(1174).wrongCRC(),     Sats(1234).wrongCRC(),
    Response(42).wrongCRC(),   BinaryLog(999).wrongCRC(),
};

bool IsValid(const std::unique_ptr<CGPSRecord>& record) {
    return dynamic_cast<const Novatel::CNovatelRecord&>(*record).IsValid();
}

} // namespace

TEST(RecordFactoryCRC, finds_a_wrong_CRC_when_it_is_asked_to_compute_it) {
    for (const Bytes::Sentence& sentence : kWrongCRCs) {
        EXPECT_FALSE(IsValid(CreateRecord(sentence))) << Bytes::ReadUInt16(sentence, 4);
    }
}

TEST(RecordFactoryCRC, finds_a_right_CRC_when_it_is_asked_to_compute_it) {
    for (Bytes::Sentence sentence : kWrongCRCs) {
        sentence[sentence.size() - 4] ^= 1;
        EXPECT_TRUE(IsValid(CreateRecord(sentence))) << Bytes::ReadUInt16(sentence, 4);
    }
}

TEST(RecordFactoryCRC, believes_a_framer_that_has_checked_the_CRC) {
    for (const Bytes::Sentence& sentence : kWrongCRCs) {
        EXPECT_TRUE(IsValid(CreateRecord(sentence, ECRCCheck::alreadyPassed)))
            << Bytes::ReadUInt16(sentence, 4);
    }
}

TEST(RecordFactoryCRC, marks_an_ASCII_record_not_valid_although_its_framer_has_checked_it) {
    const Bytes::Sentence sentence = AsciiLog("SOFTLOADSTATUSA", "COMPLETE");
    EXPECT_FALSE(IsValid(CreateRecord(sentence, ECRCCheck::alreadyPassed)));
}
