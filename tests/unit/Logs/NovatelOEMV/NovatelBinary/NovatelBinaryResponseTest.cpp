#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryResponse.h"

#include "Support/LogSentences.h"

#include <gtest/gtest.h>

using Novatel::CNovatelBinaryResponse;
using Sentences::Response;
using namespace std::string_literals;

TEST(NovatelBinaryResponse, has_the_response_s_identifier_and_text) {
    const CNovatelBinaryResponse response(Response(1).responseID(0x91020304).responseText("OK"));
    EXPECT_EQ(response.GetResponseID(), 0x91020304U);
    EXPECT_EQ(response.GetResponseText(), "OK\0"s);
}

TEST(NovatelBinaryResponse, finds_both_behind_a_long_header) {
    const CNovatelBinaryResponse response(
        Response(1).responseID(5).responseText("Command failed").headerLength(32));
    EXPECT_EQ(response.GetResponseID(), 5U);
    EXPECT_EQ(response.GetResponseText(), "Command failed\0"s);
}

TEST(NovatelBinaryResponse, keeps_zero_bytes_inside_the_text) {
    EXPECT_EQ(CNovatelBinaryResponse(Response(1).responseText("A\0B"s)).GetResponseText(),
              "A\0B\0"s);
}

TEST(NovatelBinaryResponse, has_no_text_when_the_message_holds_the_identifier_alone) {
    EXPECT_EQ(CNovatelBinaryResponse(Response(1).responseID(1)).GetResponseText(), "");
}

TEST(NovatelBinaryResponse, has_no_text_when_the_message_is_shorter_than_an_identifier) {
    for (std::uint16_t length = 0; length < 4; ++length) {
        const CNovatelBinaryResponse response(
            Response(1).responseText("never read").messageLength(length));
        EXPECT_EQ(response.GetResponseText(), "") << length;
    }
}

TEST(NovatelBinaryResponse, has_no_text_when_the_message_claims_more_than_there_is) {
    // The body's 6 bytes and the CRC's 4 would have room for a length of 10.
    EXPECT_EQ(
        CNovatelBinaryResponse(Response(1).responseText("OK").messageLength(11)).GetResponseText(),
        "");
    EXPECT_EQ(CNovatelBinaryResponse(Response(1).responseText("OK").messageLength(65535))
                  .GetResponseText(),
              "");
}

TEST(NovatelBinaryResponse, reads_nothing_outside_a_sentence_cut_anywhere) {
    const Bytes::Sentence whole = Response(1).responseID(0x01020304).responseText("OK");
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const CNovatelBinaryResponse response(Bytes::Sentence(whole.data(), whole.data() + size));
        EXPECT_EQ(response.GetResponseID(), size >= 32 ? 0x01020304U : 0U) << size;
        EXPECT_EQ(response.GetResponseText(), size >= 34 ? "OK\0"s : ""s) << size;
    }
}

TEST(NovatelBinaryResponse, reads_nothing_outside_whatever_the_header_length_claims) {
    Bytes::Sentence sentence = Response(1).responseID(7).responseText("OK");
    for (unsigned length = 0; length <= 255; ++length) {
        sentence[3] = static_cast<std::uint8_t>(length);
        const CNovatelBinaryResponse response(sentence);
        if (length + 4 > sentence.size()) {
            EXPECT_EQ(response.GetResponseID(), 0U) << length;
        }
        EXPECT_EQ(response.GetResponseText().empty(), length + 6 > sentence.size()) << length;
    }
}

TEST(NovatelBinaryResponse, is_valid_as_its_CRC_says) {
    EXPECT_TRUE(CNovatelBinaryResponse(Response(1)).IsValid());
    EXPECT_FALSE(CNovatelBinaryResponse(Response(1).wrongCRC()).IsValid());
    EXPECT_TRUE(CNovatelBinaryResponse(Response(1).wrongCRC(), ECRCCheck::alreadyPassed).IsValid());
}
