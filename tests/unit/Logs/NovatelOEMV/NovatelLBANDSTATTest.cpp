#include "Logs/NovatelOEMV/NovatelLBANDSTAT.h"

#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDSTATB.h"
#include "Support/BinarySentence.h"

#include <gtest/gtest.h>

#include <limits>

using Novatel::CNovatelLBANDSTATB;
using Sentences::BinaryLog;

namespace {

Bytes::Sentence Example() {
    return BinaryLog(731)
        .u32(0, 1547547000)
        .f32(4, 40.5F)
        .f32(8, 731.25F)
        .u16(16, 0x00C2)
        .u16(18, 0x8001)
        .u32(20, 20)
        .u32(24, 4294967295)
        .u32(28, 28)
        .u16(34, 0x0003)
        .u32(36, 36)
        .u32(40, 0x04000000)
        .bodySize(48);
}

} // namespace

TEST(NovatelLBANDSTAT, prints_every_value_with_its_words_as_raw_numbers) {
    EXPECT_EQ(CNovatelLBANDSTATB(Example()).AsText(),
              "[CNovatelLBANDSTAT]:Frequency=1547547000,CNR=40.5,Locktime=731.25,"
              "RawSignalTracking=194,RawVBSStatus=32769,Bytes=20,GoodDGPS=4294967295,BadData=28,"
              "RawHPAdditionalStatus=3,HPBytes=36,RawHPStatus=67108864");
}

TEST(NovatelLBANDSTAT, prints_itself_as_a_line_on_standard_output) {
    testing::internal::CaptureStdout();
    const CNovatelLBANDSTATB log(Example());
    log.Print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), log.AsText() + "\n");
}

TEST(NovatelLBANDSTAT, prints_the_longest_values_whole) {
    const CNovatelLBANDSTATB log(BinaryLog(731)
                                     .u32(0, 4294967295)
                                     .f32(4, -1.17549e-38F)
                                     .f32(8, std::numeric_limits<float>::lowest())
                                     .text(16, std::string(32, '\xFF')));
    EXPECT_EQ(log.AsText(),
              "[CNovatelLBANDSTAT]:Frequency=4294967295,CNR=-1.17549e-38,Locktime=-3.40282e+38,"
              "RawSignalTracking=65535,RawVBSStatus=65535,Bytes=4294967295,GoodDGPS=4294967295,"
              "BadData=4294967295,RawHPAdditionalStatus=65535,HPBytes=4294967295,"
              "RawHPStatus=4294967295");
}

TEST(NovatelLBANDSTAT, decodes_its_status_words) {
    const CNovatelLBANDSTATB log(Example());
    EXPECT_EQ(log.GetSignalTracking().GetTrackingState(), 2U);
    EXPECT_TRUE(log.GetVBSStatus().IsSubscriptionExpired());
    EXPECT_TRUE(log.GetHPAdditionalStatus().IsSatelliteListAvailable());
    EXPECT_TRUE(log.GetHPStatus().IsInStaticInitialisation());
}
