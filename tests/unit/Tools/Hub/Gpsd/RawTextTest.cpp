#include "hub/gpsd/RawText.h"

#include <gtest/gtest.h>

using Hub::GPSD::CRawText;
using namespace std::string_literals;

namespace {

constexpr const char* kNMEA = "$GPGGA,,,,,,0,00,,,M,,M,,*66\r\n";
constexpr const char* kASCIILog = "#VERSIONA,COM1;1*0123abcd\r\n";

std::string TextOf(const std::string& block) {
    CRawText raw;
    return raw.Add(block);
}

} // namespace

TEST(RawText, lines_of_text_are_told_as_they_are) {
    EXPECT_EQ(TextOf(kNMEA), kNMEA);
    EXPECT_EQ(TextOf(kASCIILog), kASCIILog);
    EXPECT_EQ(TextOf(std::string(kNMEA) + kASCIILog + kNMEA),
              std::string(kNMEA) + kASCIILog + kNMEA);
}

TEST(RawText, what_is_no_text_is_told_in_hexadecimal) {
    EXPECT_EQ(TextOf("\xAA\x44\x12\x1C\x00\xFF"s), "aa44121c00ff\r\n");
    EXPECT_EQ(TextOf(""), "");
}

TEST(RawText, binary_logs_and_text_are_told_apart) {
    EXPECT_EQ(TextOf("\xAA\x44\x12\x01"s + kNMEA + "\xAA\x44\x12\x02"),
              "aa441201\r\n"s + kNMEA + "aa441202\r\n");
}

TEST(RawText, a_binary_log_begins_a_new_line) {
    EXPECT_EQ(TextOf("\xAA\x44\x12\x01\xAA\x44\x12\x02"s), "aa441201\r\naa441202\r\n");
}

TEST(RawText, long_binary_is_told_in_several_lines) {
    EXPECT_EQ(TextOf(std::string(513, '\x01')), [] {
        std::string wanted;
        for (int i = 0; i < 512; ++i) {
            wanted += "01";
        }
        return wanted + "\r\n01\r\n";
    }());
}

TEST(RawText, a_text_without_a_checksum_is_binary) {
    EXPECT_EQ(TextOf("$a\r\n"), "24610d0a\r\n");
    EXPECT_EQ(TextOf("$*0\r\n"), "242a300d0a\r\n");
    EXPECT_EQ(TextOf("$*0G\r\n"), "242a30470d0a\r\n");
    EXPECT_EQ(TextOf("#A*1234567\r\n"), "23412a313233343536370d0a\r\n");
}

TEST(RawText, a_dollar_sign_in_binary_begins_no_text) {
    EXPECT_EQ(TextOf("\x01$\x02"s + kNMEA), "012402\r\n"s + kNMEA);
    EXPECT_EQ(TextOf("$\x02\x03"), "240203\r\n");
}

TEST(RawText, a_line_that_blocks_cut_anywhere_is_told_once_and_whole) {
    const std::string stream = "\x01"s + kNMEA + kASCIILog;
    const std::string wanted = "01\r\n"s + kNMEA + kASCIILog;
    for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
        CRawText raw;
        std::string told = raw.Add(stream.substr(0, cut));
        told += raw.Add(stream.substr(cut));
        EXPECT_EQ(told, wanted) << cut;
    }
}

TEST(RawText, what_looks_like_text_without_end_is_not_held_back_for_ever) {
    CRawText raw;
    std::string told;
    for (int i = 0; i < 200; ++i) {
        told += raw.Add("$" + std::string(99, 'x'));
    }
    EXPECT_GE(told.size(), 2U * (200 * 100 - CRawText::kLongestLine - 100));
}

TEST(RawText, a_megabyte_of_beginnings_takes_no_time) {
    const std::string block(1'000'000, '$');
    EXPECT_EQ(TextOf(block).substr(0, 6), "242424");
}
