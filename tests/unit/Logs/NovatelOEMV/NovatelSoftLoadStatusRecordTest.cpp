#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include "Support/TextSentences.h"

#include <gtest/gtest.h>

using Novatel::CNovatelSoftLoadStatusRecord;
using Sentences::AsciiLog;
using Sentences::BytesOf;

namespace {

struct SStatus {
    const char* text;
    int value;
};

// clang-format off
const SStatus kStatuses[] = {
    {"NOT_STARTED", 1},
    {"READY_FOR_SETUP", 2},
    {"READY_FOR_DATA", 3},
    {"DATA_VERIFIED", 4},
    {"WRITING_FLASH", 5},
    {"WROTE_FLASH", 6},
    {"VERIFYING_DATA", 8},
    {"WROTE_TRANSACTION_TABLE", 10},
    {"NOT_READY_FOR_SETUP", 11},
    {"COMPLETE", 12},
    {"RESET_ERROR", 13},
    {"BAD_SRECORD", 14},
    {"BAD_PLATFORM", 15},
    {"BAD_MODULE", 16},
    {"NO_MODULE", 18},
    {"MODULE_MISMATCH", 19},
    {"OUT_OF_MEMORY", 20},
    {"DATA_OVERLAP", 21},
    {"BAD_IMAGE_CRC", 22},
    {"IMAGE_OVERSIZE", 23},
    {"BAD_FLASH_ERASE", 25},
    {"NO_PLATFORM", 26},
};
// clang-format on

CNovatelSoftLoadStatusRecord Status(std::string_view text) {
    return CNovatelSoftLoadStatusRecord(AsciiLog("SOFTLOADSTATUSA", text));
}

CNovatelSoftLoadStatusRecord Raw(std::string_view sentence) {
    return CNovatelSoftLoadStatusRecord(BytesOf(sentence));
}

} // namespace

TEST(NovatelSoftLoadStatusRecord, has_the_number_of_each_text) {
    for (const SStatus& status : kStatuses) {
        EXPECT_EQ(Status(status.text).GetStatus(), status.value) << status.text;
        EXPECT_EQ(Status(status.text).GetStatusText(), status.text);
    }
}

TEST(NovatelSoftLoadStatusRecord, has_the_status_minus_1_for_a_text_that_it_does_not_know) {
    for (const char* text : {"WROTE_AUTHCODE", "complete", "COMPLETE ", "COMPLET", ""}) {
        EXPECT_EQ(Status(text).GetStatus(), -1) << text;
        EXPECT_EQ(Status(text).GetStatusText(), text);
    }
}

TEST(NovatelSoftLoadStatusRecord, has_the_identifier_1235) {
    EXPECT_EQ(Status("COMPLETE").GetMessageID(), 1235);
}

TEST(NovatelSoftLoadStatusRecord, takes_the_text_up_to_the_last_asterisk) {
    EXPECT_EQ(Raw("#SOFTLOADSTATUSA,;A*B*00000000").GetStatusText(), "A*B");
}

TEST(NovatelSoftLoadStatusRecord, takes_the_text_from_the_first_semicolon) {
    EXPECT_EQ(Raw("#SOFTLOADSTATUSA,;A;B*00000000").GetStatusText(), "A;B");
}

TEST(NovatelSoftLoadStatusRecord, has_no_text_without_both_marks_in_their_order) {
    for (const char* sentence : {"#SOFTLOADSTATUSA,COMPLETE*00000000", "#SOFTLOADSTATUSA,;COMPLETE",
                                 "#SOFTLOADSTATUSA,*COMPLETE;", "#SOFTLOADSTATUSA,", "#", ""}) {
        EXPECT_EQ(Raw(sentence).GetStatusText(), "") << sentence;
        EXPECT_EQ(Raw(sentence).GetStatus(), -1) << sentence;
    }
}
