#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"

#include "Logs/NovatelOEMV/NovatelBinary/NovatelRXSTATUSB.h"
#include "Support/LogSentences.h"

#include <gtest/gtest.h>

using Novatel::CNovatelRXSTATUSB;
using Sentences::Rxstatus;

TEST(NovatelRXSTATUS, gives_the_text_of_its_error_word) {
    EXPECT_EQ(CNovatelRXSTATUSB(Rxstatus().errorWord(0x80000005)).GetErrorText(),
              "DRAM Error,ROM error,Component hardware failure,");
    EXPECT_EQ(CNovatelRXSTATUSB(Rxstatus()).GetErrorText(), "No Errors");
}

TEST(NovatelRXSTATUS, gives_the_text_of_the_first_status_word_the_receiver_s_own) {
    const CNovatelRXSTATUSB log(Rxstatus().status({.status = 0x20}).status({.status = 0x40}));
    EXPECT_EQ(log.GetStatusText(), "Antenna open,");
}

TEST(NovatelRXSTATUS, gives_no_status_text_without_a_status_word) {
    EXPECT_EQ(CNovatelRXSTATUSB(Rxstatus()).GetStatusText(), "");
}
