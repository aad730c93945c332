#include "Framing/NovatelBinarySentenceConstructor.h"

#include "Framing/FramerTesting.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Novatel::CNovatelBinarySentenceConstructor;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Binary(const std::string& stream) {
    return Answers<CNovatelBinarySentenceConstructor>(stream);
}

std::string Hex(std::string_view digits) {
    return Text(SentenceMaker::FromHex(digits));
}

std::string Sentence(std::size_t messageSize, std::uint8_t headerLength = 28) {
    return Text(SentenceMaker::Binary(42, std::vector<std::uint8_t>(messageSize, std::uint8_t{'x'}),
                                      headerLength));
}

std::string Damaged(std::string sentence, std::size_t offset) {
    sentence[offset] = static_cast<char>(sentence[offset] ^ 1);
    return sentence;
}

/// Eleven bytes with a good CRC over the first seven of them, in which the lengths (the message's
/// stands inside the CRC) add up to at most eleven: found by trying.
std::string SentenceThatEndsInItsHeader(std::uint8_t headerLength) {
    for (unsigned filler = 0;; ++filler) {
        const std::vector<std::uint8_t> sentence = SentenceMaker::WithCRC(
            {0xAA, 0x44, 0x12, headerLength, static_cast<std::uint8_t>(filler),
             static_cast<std::uint8_t>(filler >> 8), static_cast<std::uint8_t>(filler >> 16)});
        if (sentence[9] == 0 && sentence[8] + headerLength + 4 < 11) {
            return Text(sentence);
        }
    }
}

const std::string kResponse = Hex("aa44121c 01008020 06000000 ffb49706 1d3dfd18 00000000 ffff0000"
                                  "01000000 4f4b ea247892");

const std::string kBestpos =
    Hex("aa44121c 2a000220 48000000 83b49706 c0970719 00000000 4561510c 00000000 10000000"
        "094154ba344c4040 b3e1fc62ec5255c0 00807a9d49ff6840 9a99e9c1 3d000000 24de913f 0197953f"
        "97911b40 00303030 00000000 00000000 0c0c0000 00060003 fd7bd737");

} // namespace

TEST(NovatelBinarySentenceConstructor, delivers_real_sentences_whole) {
    EXPECT_THAT(Binary(kBestpos + kResponse), ElementsAre(kBestpos, kResponse));
}

TEST(NovatelBinarySentenceConstructor, skips_what_is_not_a_sentence) {
    EXPECT_THAT(Binary("\r\n<OK\r\n[COM1]" + kResponse + "#$*\r\n" + kResponse + "\x44\x12"),
                ElementsAre(kResponse, kResponse));
}

TEST(NovatelBinarySentenceConstructor, delivers_a_sentence_in_single_bytes_with_its_last_one) {
    const auto answers = BytewiseAnswers<CNovatelBinarySentenceConstructor>(kBestpos);
    EXPECT_THAT(answers.before, IsEmpty());
    EXPECT_THAT(answers.atLast, ElementsAre(kBestpos));
}

TEST(NovatelBinarySentenceConstructor, delivers_a_sentence_cut_anywhere) {
    for (std::size_t cut = 0; cut <= kBestpos.size(); ++cut) {
        CNovatelBinarySentenceConstructor framer;
        std::vector<std::string> answers = Feed(framer, kBestpos.substr(0, cut));
        EXPECT_EQ(answers.empty(), cut < kBestpos.size());
        for (std::string& answer : Feed(framer, kBestpos.substr(cut) + kResponse)) {
            answers.push_back(std::move(answer));
        }
        EXPECT_THAT(answers, ElementsAre(kBestpos, kResponse)) << "cut at " << cut;
    }
}

TEST(NovatelBinarySentenceConstructor, examines_again_what_is_not_the_second_sync_byte) {
    EXPECT_THAT(Binary("\xAA" + kResponse), ElementsAre(kResponse));
    EXPECT_THAT(Binary("\xAA\xAA\xAA\xAA" + kResponse), ElementsAre(kResponse));
}

TEST(NovatelBinarySentenceConstructor, examines_it_again_across_chunks) {
    CNovatelBinarySentenceConstructor framer;
    EXPECT_THAT(Feed(framer, "\xAA"), IsEmpty());
    EXPECT_THAT(Feed(framer, kResponse), ElementsAre(kResponse));
}

TEST(NovatelBinarySentenceConstructor, loses_a_sentence_that_begins_where_the_third_sync_byte_was) {
    EXPECT_THAT(Binary("\xAA\x44" + kResponse + kBestpos), ElementsAre(kBestpos));
    EXPECT_THAT(BytewiseAnswers<CNovatelBinarySentenceConstructor>("\xAA\x44" + kResponse).atLast,
                IsEmpty());
}

TEST(NovatelBinarySentenceConstructor, resumes_right_after_a_wrong_third_sync_byte) {
    EXPECT_THAT(Binary("\xAA\x44x" + kResponse), ElementsAre(kResponse));
}

TEST(NovatelBinarySentenceConstructor, delivers_several_sentences_of_one_chunk_one_by_one) {
    CNovatelBinarySentenceConstructor framer;
    framer.AddBytes(SentenceMaker::Bytes(kResponse + kBestpos));
    std::vector<std::uint8_t> out;
    EXPECT_EQ(framer.GetSentence(out), 1);
    EXPECT_EQ(Text(out), kResponse);
    EXPECT_EQ(framer.GetSentence(out), 1);
    EXPECT_EQ(Text(out), kBestpos);
    EXPECT_EQ(framer.GetSentence(out), 0);
}

TEST(NovatelBinarySentenceConstructor, rejects_a_flipped_bit_and_frames_the_next_sentence) {
    for (const std::size_t offset : {4, 20, 40, 103}) {
        EXPECT_THAT(Binary(Damaged(kBestpos, offset) + kResponse),
                    ElementsAre(kRejection, kResponse))
            << "flipped at " << offset;
    }
}

TEST(NovatelBinarySentenceConstructor, does_not_restart_inside_a_sentence) {
    const std::string inner = Text(SentenceMaker::Binary(1, SentenceMaker::Bytes(kResponse)));
    EXPECT_THAT(Binary(inner), ElementsAre(inner));
}

TEST(NovatelBinarySentenceConstructor, takes_any_header_length) {
    for (const int headerLength : {10, 11, 12, 28, 29, 170, 255}) {
        const std::string sentence = Sentence(5, static_cast<std::uint8_t>(headerLength));
        EXPECT_THAT(Binary(sentence + kResponse), ElementsAre(sentence, kResponse))
            << "header of " << headerLength;
    }
}

TEST(NovatelBinarySentenceConstructor, reads_the_message_length_from_both_its_bytes) {
    for (const std::size_t messageSize : {0, 1, 255, 256, 257, 4097, 65534}) {
        const std::string sentence = Sentence(messageSize);
        EXPECT_THAT(Binary(sentence + kResponse), ElementsAre(sentence, kResponse))
            << "message of " << messageSize;
    }
}

TEST(NovatelBinarySentenceConstructor, delivers_the_longest_sentence_that_the_header_can_tell) {
    const std::string longest = Sentence(65535, 255);
    ASSERT_EQ(longest.size(), 65794U);
    EXPECT_THAT(Binary(longest + kResponse), ElementsAre(longest, kResponse));
}

TEST(NovatelBinarySentenceConstructor, ends_a_sentence_in_its_own_header_at_the_eleventh_byte) {
    for (const int headerLength : {0, 3}) {
        const std::string sentence =
            SentenceThatEndsInItsHeader(static_cast<std::uint8_t>(headerLength));
        const auto answers = BytewiseAnswers<CNovatelBinarySentenceConstructor>(sentence);
        EXPECT_THAT(answers.before, IsEmpty());
        EXPECT_THAT(answers.atLast, ElementsAre(sentence));
        EXPECT_THAT(Binary(sentence + kResponse), ElementsAre(sentence, kResponse));
    }
}

TEST(NovatelBinarySentenceConstructor, rejects_one_sentence_for_eleven_bytes_of_lengths_zero) {
    const std::string header = Hex("aa4412 00 00000000 0000 00");
    EXPECT_THAT(Binary(header.substr(0, 10)), IsEmpty());
    EXPECT_THAT(Binary(header + header + kResponse),
                ElementsAre(kRejection, kRejection, kResponse));
}

TEST(NovatelBinarySentenceConstructor, ends_at_the_expected_length_from_eleven_bytes_on) {
    // Lengths of 7 give 11 bytes, of 8 give 12.
    EXPECT_THAT(Binary(Hex("aa4412 07 00000000 0000 00")), ElementsAre(kRejection));
    EXPECT_THAT(Binary(Hex("aa4412 08 00000000 0000 00")), IsEmpty());
    EXPECT_THAT(Binary(Hex("aa4412 08 00000000 0000 0000")), ElementsAre(kRejection));
}

TEST(NovatelBinarySentenceConstructor, swallows_good_sentences_inside_a_damaged_length) {
    std::string damaged = kResponse;
    damaged[9] = 1; // 256 bytes more
    const std::string swallowed = kBestpos + kResponse + kBestpos;
    ASSERT_LT(swallowed.size(), 256U);
    EXPECT_THAT(Binary(damaged + swallowed), IsEmpty());
    EXPECT_THAT(Binary(damaged + swallowed + std::string(256 - swallowed.size(), 'x') + kResponse),
                ElementsAre(kRejection, kResponse));
}
