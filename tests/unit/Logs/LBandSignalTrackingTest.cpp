#include "Logs/LBandSignalTracking.h"

#include <gtest/gtest.h>

namespace {

CLBandSignalTracking WithBit(unsigned bit) {
    return CLBandSignalTracking(static_cast<std::uint16_t>(1U << bit));
}

} // namespace

TEST(LBandSignalTracking, has_its_state_in_the_low_two_bits) {
    EXPECT_EQ(CLBandSignalTracking(0xFFFC).GetTrackingState(), 0U);
    EXPECT_EQ(CLBandSignalTracking(0xFFFD).GetTrackingState(), 1U);
    EXPECT_EQ(CLBandSignalTracking(0xFFFE).GetTrackingState(), 2U);
    EXPECT_EQ(CLBandSignalTracking(0xFFFF).GetTrackingState(), 3U);
}

TEST(LBandSignalTracking, tells_each_flag_from_its_bit_alone) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(WithBit(bit).IsBitTimingLocked(), bit == 6) << bit;
        EXPECT_EQ(WithBit(bit).IsPhaseLocked(), bit == 7) << bit;
        EXPECT_EQ(WithBit(bit).IsDCOffsetUnlocked(), bit == 8) << bit;
        EXPECT_EQ(WithBit(bit).IsAGCUnlocked(), bit == 9) << bit;
    }
}

TEST(LBandSignalTracking, has_its_error_from_bit_15_on) {
    EXPECT_EQ(CLBandSignalTracking(0x8000).GetError(), 1);
    EXPECT_EQ(CLBandSignalTracking(0x7FFF).GetError(), 0);
}

TEST(LBandSignalTracking, prints_every_value_from_its_own_bits) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        const auto flag = [bit](unsigned own) { return bit == own ? "1" : "0"; };
        const std::string state = bit < 2 ? std::to_string(1U << bit) : "0";
        EXPECT_EQ(WithBit(bit).AsText(),
                  "[CLBandSignalTracking]:,TrackingState=" + state + ",BitTimingLock=" + flag(6) +
                      ",PhaseLocked=" + flag(7) + ",DCOffsetUnlocked=" + flag(8) +
                      ",AGCUnlocked=" + flag(9) + ",Error=" + flag(15));
    }
}

TEST(LBandSignalTracking, prints_itself_as_a_line_on_standard_output) {
    testing::internal::CaptureStdout();
    CLBandSignalTracking(0x00C2).Print(); // tracking, timing and phase locked
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[CLBandSignalTracking]:,TrackingState=2,BitTimingLock=1,PhaseLocked=1,"
              "DCOffsetUnlocked=0,AGCUnlocked=0,Error=0\n");
}

TEST(LBandSignalTracking, keeps_the_raw_word) {
    EXPECT_EQ(CLBandSignalTracking(0x89AB).GetWord(), 0x89AB);
}
