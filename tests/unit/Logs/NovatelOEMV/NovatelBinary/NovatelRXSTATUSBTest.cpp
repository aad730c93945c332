#include "Logs/NovatelOEMV/NovatelBinary/NovatelRXSTATUSB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelRXSTATUSB;
using Sentences::Rxstatus;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

Rxstatus Example() {
    return Rxstatus()
        .errorWord(0x80100001)
        .status({0x81000001, 0x82000002, 0x83000003, 0x84000004})
        .status({0x85000005, 0x86000006, 0x87000007, 0x88000008});
}

void ExpectExample(const CNovatelRXSTATUSB& log) {
    EXPECT_EQ(log.GetErrorWord(), 0x80100001U);
    ASSERT_THAT(log.GetStatuses(), SizeIs(2));
    for (std::uint32_t i = 0; i < 2; ++i) {
        const auto& status = log.GetStatuses()[i];
        EXPECT_EQ(status.status, 0x81000001 + i * 0x04000004);
        EXPECT_EQ(status.priorityMask, 0x82000002 + i * 0x04000004);
        EXPECT_EQ(status.eventSetMask, 0x83000003 + i * 0x04000004);
        EXPECT_EQ(status.eventClearMask, 0x84000004 + i * 0x04000004);
    }
}

} // namespace

TEST(NovatelRXSTATUSB, decodes_every_word) {
    ExpectExample(CNovatelRXSTATUSB(Example()));
}

TEST(NovatelRXSTATUSB, decodes_every_word_behind_a_long_header) {
    ExpectExample(CNovatelRXSTATUSB(Example().headerLength(32)));
}

TEST(NovatelRXSTATUSB, accepts_no_status_words) {
    EXPECT_THAT(CNovatelRXSTATUSB(Rxstatus()).GetStatuses(), IsEmpty());
}

TEST(NovatelRXSTATUSBDeathTest, prints_the_sizes_and_exits_with_1_on_another_length) {
    ExpectExitOne(
        Example().bodySize(8 + 2 * 16 + 1),
        "CNovatelRXSTATUSB sentenceData.size() is 73 but expected (28 + 8 + (2 * 16) + 4)\n");
    ExpectExitOne(
        Example().announcing(1).headerLength(32),
        "CNovatelRXSTATUSB sentenceData.size() is 76 but expected (32 + 8 + (1 * 16) + 4)\n");
    ExpectExitOne(
        Rxstatus().bodySize(3),
        "CNovatelRXSTATUSB sentenceData.size() is 35 but expected (28 + 8 + (0 * 16) + 4)\n");
}

TEST(NovatelRXSTATUSBDeathTest, exits_at_once_for_any_number_of_status_words) {
    ExpectExitOne(
        Rxstatus().announcing(4294967295),
        "CNovatelRXSTATUSB sentenceData.size() is 40 but expected (28 + 8 + (-1 * 16) + 4)\n");
    // The size that 32 bits would take for right.
    ExpectExitOne(
        Rxstatus().announcing(0x10000000),
        "CNovatelRXSTATUSB sentenceData.size() is 40 but expected (28 + 8 + (268435456 * 16) + "
        "4)\n");
}
