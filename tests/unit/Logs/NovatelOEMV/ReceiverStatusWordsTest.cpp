#include "Logs/NovatelOEMV/ReceiverStatusWords.h"

#include <gtest/gtest.h>

#include <map>

using Novatel::ReceiverErrorText;
using Novatel::ReceiverStatusText;

namespace {

// clang-format off
const std::map<unsigned, std::string> kErrorTexts = {
    {0, "DRAM Error,"},
    {1, "Invalid firmware,"},
    {2, "ROM error,"},
    {4, "ESN access error,"},
    {6, "Slow ADC error,"},
    {7, "Supply voltage outside limits,"},
    {8, "Thermometer error,"},
    {9, "Temperature outside limits,"},
    {10, "MINOS5 error,"},
    {11, "L1 PLL hardware error,"},
    {12, "L2 PLL hardware error,"},
    {13, "L1 hardware error,"},
    {14, "L2 hardware error,"},
    {15, "NVM Error,"},
    {16, "Software resource limit,"},
    {20, "Remote loading has begun,"},
    {21, "Export restriction error,"},
    {31, "Component hardware failure,"},
};

const std::map<unsigned, std::string> kStatusTexts = {
    {0, "Error,"},
    {1, "Temperature warning,"},
    {2, "Voltage supply warning,"},
    {3, "Antenna not powered,"},
    {4, "Reserved 1,"},
    {5, "Antenna open,"},
    {6, "Antenna shorted,"},
    {7, "CPU overload,"},
    {8, "COM1 buffer overrun,"},
    {9, "COM2 buffer overrun,"},
    {10, "COM3 buffer overrun,"},
    {11, "USB buffer overrun,"},
    {12, "Reserved 2,"},
    {15, "L1 AGC error,"},
    {16, "Reserved,"},
    {17, "L2 AGC error,"},
    {18, "Almanac invalid,"},
    {19, "Position solution invalid,"},
    {20, "Fixed position set,"},
    {21, "Clock steering disabled,"},
    {22, "Clock model invalid,"},
    {23, "external oscillator,"},
    {24, "Software resource warning,"},
    {25, "Reserved 4,"},
    {29, "Auxiliary 3 status event,"},
    {30, "Auxiliary 2 status event,"},
    {31, "Auxiliary 1 status event,"},
};
// clang-format on

std::string TextOf(const std::map<unsigned, std::string>& texts, unsigned bit) {
    const auto text = texts.find(bit);
    return text == texts.end() ? "" : text->second;
}

std::string AllOf(const std::map<unsigned, std::string>& texts) {
    std::string all;
    for (const auto& [bit, text] : texts) {
        all += text;
    }
    return all;
}

} // namespace

TEST(ReceiverErrorWord, has_the_text_of_each_bit) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(ReceiverErrorText(1U << bit), TextOf(kErrorTexts, bit)) << "bit " << bit;
    }
}

TEST(ReceiverErrorWord, joins_the_texts_of_all_set_bits_in_their_order) {
    EXPECT_EQ(ReceiverErrorText(0x80000005), "DRAM Error,ROM error,Component hardware failure,");
    EXPECT_EQ(ReceiverErrorText(0xFFFFFFFF), AllOf(kErrorTexts));
}

TEST(ReceiverErrorWord, says_so_when_there_are_no_errors) {
    EXPECT_EQ(ReceiverErrorText(0), "No Errors");
}

TEST(ReceiverStatusWord, has_the_text_of_each_bit) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(ReceiverStatusText(1U << bit), TextOf(kStatusTexts, bit)) << "bit " << bit;
    }
}

TEST(ReceiverStatusWord, joins_the_texts_of_all_set_bits_in_their_order) {
    EXPECT_EQ(ReceiverStatusText(0xE0000000),
              "Auxiliary 3 status event,Auxiliary 2 status event,Auxiliary 1 status event,");
    EXPECT_EQ(ReceiverStatusText(0xFFFFFFFF), AllOf(kStatusTexts));
}

TEST(ReceiverStatusWord, has_no_text_when_nothing_is_set) {
    EXPECT_EQ(ReceiverStatusText(0), "");
}

TEST(ReceiverStatusWords, offer_their_bits_as_tables) {
    EXPECT_EQ(Novatel::kReceiverErrorBits.size(), kErrorTexts.size());
    for (const SNamedBit& row : Novatel::kReceiverErrorBits) {
        EXPECT_EQ(row.name, TextOf(kErrorTexts, row.bit));
    }
    EXPECT_EQ(Novatel::kReceiverStatusBits.size(), kStatusTexts.size());
    for (const SNamedBit& row : Novatel::kReceiverStatusBits) {
        EXPECT_EQ(row.name, TextOf(kStatusTexts, row.bit));
    }
}
