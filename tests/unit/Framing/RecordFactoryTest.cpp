#include "Framing/RecordFactory.h"

#include "Logs/NMEARecord.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTPOSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryResponse.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDINFOB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelOMNIHPPOSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelREFSTATIONB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRXSTATUSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelTIMEB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB.h"
#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

#include <typeindex>

using namespace Novatel;
using namespace Sentences;

namespace {

template <class TBase>
bool Is(const CGPSRecord& record) {
    return dynamic_cast<const TBase*>(&record) != nullptr;
}

/// The empty class when there is no record.
std::type_index ClassOf(const std::unique_ptr<CGPSRecord>& record) {
    if (record == nullptr) {
        return typeid(void);
    }
    const CGPSRecord& what = *record;
    return typeid(what);
}

struct SRow {
    Bytes::Sentence sentence;
    std::uint16_t messageID;
    std::type_index binaryClass;
    bool (*isOfFirstBase)(const CGPSRecord&);
    bool (*isOfContentClass)(const CGPSRecord&);
};

template <class TBinary, class TFirstBase, class TContent>
SRow Row(std::uint16_t messageID, const Bytes::Sentence& sentence) {
    static_assert(std::is_base_of_v<TFirstBase, TBinary> && std::is_base_of_v<TContent, TBinary>);
    return {sentence, messageID, typeid(TBinary), Is<TFirstBase>, Is<TContent>};
}

// clang-format off
const SRow kRows[] = {
    Row<CNovatelVERSIONB, CNovatelBinaryRecord, CNovatelVERSION>(37, Version()),
    Row<CNovatelBESTPOSB, CNovatelBinaryRecord, CNovatelBESTPOS>(42, Bestpos()),
    Row<CNovatelRANGEB, CNovatelBinaryRecord, CNovatelRANGE>(43, Range()),
    Row<CNovatelTRACKSTATB, CNovatelBinaryRecord, CNovatelTRACKSTAT>(83, Trackstat()),
    Row<CNovatelRXSTATUSB, CNovatelBinaryRecord, CNovatelRXSTATUS>(93, Rxstatus()),
    Row<CNovatelTIMEB, CNovatelBinaryRecord, CNovatelTIME>(101, Time()),
    Row<CNovatelPSRDOPB, CNovatelBinaryRecord, CNovatelPSRDOP>(174, Psrdop()),
    Row<CNovatelREFSTATIONB, CNovatelBinaryRecord, CNovatelREFSTATION>(175, Refstation()),
    Row<CNovatelBESTXYZB, CNovatelBinaryCartesianLog, CNovatelBESTXYZ>(241, Cartesian(241)),
    Row<CNovatelPSRXYZB, CNovatelBinaryCartesianLog, CNovatelPSRXYZ>(243, Cartesian(243)),
    Row<CNovatelRTKXYZB, CNovatelBinaryCartesianLog, CNovatelRTKXYZ>(244, Cartesian(244)),
    Row<CNovatelCOMCONFIGB, CNovatelBinaryRecord, CNovatelCOMCONFIG>(317, Comconfig()),
    Row<CNovatelPDPXYZB, CNovatelBinaryCartesianLog, CNovatelPDPXYZ>(471, Cartesian(471)),
    Row<CNovatelOMNIHPPOSB, CNovatelBinaryGeodeticLog, CNovatelOMNIHPPOS>(495, Omnihppos()),
    Row<CNovatelLBANDINFOB, CNovatelBinaryRecord, CNovatelLBANDINFO>(730, BinaryLog(730)),
    Row<CNovatelLBANDSTATB, CNovatelBinaryRecord, CNovatelLBANDSTAT>(731, BinaryLog(731)),
    Row<CNovatelPDPSTATB, CNovatelBinaryRecord, CNovatelPDPSTAT>(1085, Pdpstat()),
    Row<CNovatelCHANCONFIGLISTB, CNovatelBinaryRecord, CNovatelCHANCONFIGLIST>(1148, Chanconfiglist()),
    Row<CNovatelPSRSATSB, CNovatelBinarySatsLog, CNovatelSatsLog>(1162, Sats(1162)),
    Row<CNovatelRTKSATSB, CNovatelBinarySatsLog, CNovatelSatsLog>(1174, Sats(1174)),
    Row<CNovatelPDPSATSB, CNovatelBinarySatsLog, CNovatelSatsLog>(1234, Sats(1234)),
};
// clang-format on

} // namespace

TEST(RecordFactory, makes_the_class_of_each_known_log) {
    for (const SRow& row : kRows) {
        const auto record = CreateRecord(row.sentence);
        ASSERT_EQ(ClassOf(record), row.binaryClass) << row.messageID;
        EXPECT_EQ(record->GetMessageID(), row.messageID);
        EXPECT_TRUE(row.isOfFirstBase(*record)) << row.messageID;
        EXPECT_TRUE(row.isOfContentClass(*record)) << row.messageID;
        EXPECT_TRUE(Is<CNovatelRecord>(*record)) << row.messageID;
    }
}

TEST(RecordFactory, makes_a_generic_record_of_every_other_log) {
    unsigned generic = 0;
    for (unsigned messageID = 0; messageID <= 65535; ++messageID) {
        const auto known = std::find_if(std::begin(kRows), std::end(kRows), [=](const SRow& row) {
            return row.messageID == messageID;
        });
        if (known == std::end(kRows)) {
            const auto record = CreateRecord(BinaryLog(static_cast<std::uint16_t>(messageID)));
            ASSERT_EQ(ClassOf(record), typeid(CNovatelBinaryRecord)) << messageID;
            ASSERT_EQ(record->GetMessageID(), messageID);
            ++generic;
        }
    }
    EXPECT_EQ(generic, 65536 - std::size(kRows));
}

TEST(RecordFactory, makes_a_response_of_whatever_has_the_response_bit) {
    for (const SRow& row : kRows) {
        const auto record = CreateRecord(Response(row.messageID));
        ASSERT_EQ(ClassOf(record), typeid(CNovatelBinaryResponse)) << row.messageID;
        EXPECT_EQ(record->GetMessageID(), row.messageID);
    }
    EXPECT_EQ(ClassOf(CreateRecord(Response(999))), typeid(CNovatelBinaryResponse));
}

TEST(RecordFactory, tells_a_response_by_bit_7_of_the_message_type_alone) {
    for (unsigned type = 0; type <= 255; ++type) {
        const auto record = CreateRecord(Bestpos().messageType(static_cast<std::uint8_t>(type)));
        EXPECT_EQ(ClassOf(record) == typeid(CNovatelBinaryResponse), type >= 128) << type;
    }
}

TEST(RecordFactory, makes_an_NMEA_record_of_whatever_begins_with_a_dollar_sign) {
    EXPECT_EQ(ClassOf(CreateRecord(Nmea("GPZDA,"))), typeid(CNMEARecord));
    EXPECT_EQ(ClassOf(CreateRecord(BytesOf("$"))), typeid(CNMEARecord));
}

TEST(RecordFactory, makes_a_soft_load_status_of_that_ASCII_log) {
    const auto record = CreateRecord(AsciiLog("SOFTLOADSTATUSA", "COMPLETE"));
    ASSERT_EQ(ClassOf(record), typeid(CNovatelSoftLoadStatusRecord));
    EXPECT_TRUE(Is<CNovatelASCIIRecord>(*record));
    EXPECT_EQ(record->GetMessageID(), 1235);
    EXPECT_EQ(dynamic_cast<CNovatelSoftLoadStatusRecord&>(*record).GetStatus(), 12);
}

TEST(RecordFactory, makes_no_record_of_other_ASCII_logs) {
    EXPECT_EQ(CreateRecord(AsciiLog("BESTPOSA", "SOL_COMPUTED")), nullptr);
    EXPECT_EQ(CreateRecord(AsciiLog("SOFTLOADSTATUSR", "COMPLETE")), nullptr);
}

TEST(RecordFactory, makes_no_record_of_an_ASCII_sentence_without_a_comma) {
    EXPECT_EQ(CreateRecord(BytesOf("#SOFTLOADSTATUSA;COMPLETE*00000000")), nullptr);
    EXPECT_EQ(CreateRecord(BytesOf("#SOFTLOADSTATUSA")), nullptr);
    EXPECT_EQ(CreateRecord(BytesOf("#")), nullptr);
    EXPECT_EQ(CreateRecord(BytesOf({"#\0\0\0*A", 6})), nullptr);
}

TEST(RecordFactory, makes_no_record_of_an_empty_sentence) {
    EXPECT_EQ(CreateRecord({}), nullptr);
    EXPECT_EQ(CreateNovatelRecord({}), nullptr);
    EXPECT_EQ(CreateBinaryRecord({}), nullptr);
    EXPECT_EQ(CreateASCIIRecord({}), nullptr);
}

TEST(RecordFactory, offers_each_step_of_the_choice) {
    EXPECT_EQ(ClassOf(CreateNovatelRecord(Bestpos())), typeid(CNovatelBESTPOSB));
    EXPECT_EQ(ClassOf(CreateNovatelRecord(AsciiLog("SOFTLOADSTATUSA", ""))),
              typeid(CNovatelSoftLoadStatusRecord));
    EXPECT_EQ(ClassOf(CreateBinaryRecord(Bestpos())), typeid(CNovatelBESTPOSB));
    EXPECT_EQ(ClassOf(CreateASCIIRecord(AsciiLog("SOFTLOADSTATUSA", ""))),
              typeid(CNovatelSoftLoadStatusRecord));
}
