// What the two text framers have in common, each promise shown for both.
#include "Framing/FramerTesting.h"
#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct SASCII {
    using Framer = Novatel::CNovatelASCIISentenceConstructor;
    static constexpr char kStart = '#';
    static constexpr std::size_t kSizeLimit = 4096;
    static constexpr std::size_t kStarAndChecksum = 9;
    static std::string Make(const std::string& text) { return SentenceMaker::ASCII(text); }
};

struct SNMEA {
    using Framer = CNMEASentenceConstructor;
    static constexpr char kStart = '$';
    static constexpr std::size_t kSizeLimit = 1024;
    static constexpr std::size_t kStarAndChecksum = 3;
    static std::string Make(const std::string& text) { return SentenceMaker::NMEA(text); }
};

template <typename Kind>
class TextSentenceConstructor : public testing::Test {
protected:
    static std::vector<std::string> Answer(const std::string& stream) {
        return Answers<typename Kind::Framer>(stream);
    }

    static std::string Start() { return std::string(1, Kind::kStart); }

    /// A good sentence of so many bytes, without its end.
    static std::string GoodOfSize(std::size_t size) {
        return Kind::Make(std::string(size - 1 - Kind::kStarAndChecksum, 'x'));
    }

    const std::string m_good = Kind::Make("GOOD,1,2.5");
    const std::string m_other = Kind::Make("OTHER,,");
};

using Kinds = testing::Types<SASCII, SNMEA>;
TYPED_TEST_SUITE(TextSentenceConstructor, Kinds);

} // namespace

TYPED_TEST(TextSentenceConstructor, ends_a_sentence_at_cr_or_lf_without_it) {
    EXPECT_THAT(this->Answer(this->m_good + "\r"), ElementsAre(this->m_good));
    EXPECT_THAT(this->Answer(this->m_good + "\n"), ElementsAre(this->m_good));
    EXPECT_THAT(this->Answer(this->m_good), IsEmpty());
}

TYPED_TEST(TextSentenceConstructor, ignores_what_follows_the_end) {
    EXPECT_THAT(this->Answer(this->m_good + "\r\n\r\nnoise\n" + this->m_other + "\r\n"),
                ElementsAre(this->m_good, this->m_other));
}

TYPED_TEST(TextSentenceConstructor, ignores_lines_without_a_start) {
    EXPECT_THAT(this->Answer("\r\n\r\nGOOD*12345678\r\n<OK\r\n[COM1]\r\n"), IsEmpty());
}

TYPED_TEST(TextSentenceConstructor, finds_a_start_in_the_middle_of_a_line) {
    EXPECT_THAT(this->Answer("[COM1]" + this->m_good + "\r"), ElementsAre(this->m_good));
}

TYPED_TEST(TextSentenceConstructor, finds_start_and_end_at_any_offset) {
    for (std::size_t offset = 0; offset < 40; ++offset) {
        const std::string good = TypeParam::Make(std::string(offset, 'y') + "xy");
        EXPECT_THAT(this->Answer(std::string(offset, 'x') + good + "\n" + this->m_good + "\r"),
                    ElementsAre(good, this->m_good));
    }
}

TYPED_TEST(TextSentenceConstructor, delivers_a_sentence_in_single_bytes_with_its_end) {
    const auto answers = BytewiseAnswers<typename TypeParam::Framer>("x" + this->m_good + "\r");
    EXPECT_THAT(answers.before, IsEmpty());
    EXPECT_THAT(answers.atLast, ElementsAre(this->m_good));
}

TYPED_TEST(TextSentenceConstructor, delivers_a_sentence_cut_anywhere) {
    const std::string stream = this->m_good + "\r\n" + this->m_other + "\r\n";
    for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
        typename TypeParam::Framer framer;
        std::vector<std::string> answers = Feed(framer, stream.substr(0, cut));
        for (std::string& answer : Feed(framer, stream.substr(cut))) {
            answers.push_back(std::move(answer));
        }
        EXPECT_THAT(answers, ElementsAre(this->m_good, this->m_other)) << "cut at " << cut;
    }
}

TYPED_TEST(TextSentenceConstructor, restarts_silently_at_another_start) {
    EXPECT_THAT(this->Answer(this->Start() + "half a sentence" + this->m_good + "\r"),
                ElementsAre(this->m_good));
    EXPECT_THAT(this->Answer(this->m_good + this->m_other + "\r"), ElementsAre(this->m_other));
}

TYPED_TEST(TextSentenceConstructor, takes_the_last_of_many_starts) {
    for (std::size_t count = 0; count < 40; ++count) {
        std::string starts(count, TypeParam::kStart);
        EXPECT_THAT(this->Answer(starts + this->m_good + "\r"), ElementsAre(this->m_good));
        EXPECT_THAT(this->Answer(starts + "x" + this->m_good + "\r"), ElementsAre(this->m_good));
    }
}

TYPED_TEST(TextSentenceConstructor, restarts_in_a_later_chunk) {
    typename TypeParam::Framer framer;
    EXPECT_THAT(Feed(framer, this->Start() + "half a sen"), IsEmpty());
    EXPECT_THAT(Feed(framer, "tence" + this->m_good.substr(0, 5)), IsEmpty());
    EXPECT_THAT(Feed(framer, this->m_good.substr(5) + "\r"), ElementsAre(this->m_good));
}

TYPED_TEST(TextSentenceConstructor, stops_at_no_byte_but_its_start_and_the_ends) {
    for (int value = 0; value < 256; ++value) {
        const char byte = static_cast<char>(value);
        if (byte != TypeParam::kStart && byte != '\r' && byte != '\n' && byte != '*') {
            const std::string good = TypeParam::Make("text" + std::string(11, byte) + "text");
            EXPECT_THAT(this->Answer(good + "\r"), ElementsAre(good)) << "byte " << value;
        }
    }
}

TYPED_TEST(TextSentenceConstructor, rejects_a_start_without_a_sentence) {
    EXPECT_THAT(this->Answer(this->Start() + "\r" + this->m_good + "\r"),
                ElementsAre(kRejection, this->m_good));
}

TYPED_TEST(TextSentenceConstructor, rejects_a_damaged_sentence_and_frames_the_next) {
    std::string damaged = this->m_good;
    damaged[3] = 'Q';
    EXPECT_THAT(this->Answer(damaged + "\r\n" + this->m_good + "\r\n"),
                ElementsAre(kRejection, this->m_good));
}

TYPED_TEST(TextSentenceConstructor, rejects_a_sentence_without_a_star) {
    EXPECT_THAT(this->Answer(this->Start() + "a sentence without one\r"), ElementsAre(kRejection));
}

TYPED_TEST(TextSentenceConstructor, accepts_one_byte_more_than_its_limit) {
    const std::string longest = this->GoodOfSize(TypeParam::kSizeLimit + 1);
    EXPECT_THAT(this->Answer(longest + "\r"), ElementsAre(longest));
    EXPECT_THAT(BytewiseAnswers<typename TypeParam::Framer>(longest + "\n").atLast,
                ElementsAre(longest));
}

TYPED_TEST(TextSentenceConstructor, rejects_a_longer_sentence_with_the_byte_that_is_too_many) {
    const std::string tooLong = this->GoodOfSize(TypeParam::kSizeLimit + 2);
    EXPECT_THAT(this->Answer(tooLong.substr(0, TypeParam::kSizeLimit + 1)), IsEmpty());
    EXPECT_THAT(this->Answer(tooLong), ElementsAre(kRejection));
    const auto answers = BytewiseAnswers<typename TypeParam::Framer>(tooLong);
    EXPECT_THAT(answers.before, IsEmpty());
    EXPECT_THAT(answers.atLast, ElementsAre(kRejection));
}

TYPED_TEST(TextSentenceConstructor, rejects_a_too_long_sentence_once) {
    const std::string tooLong = this->GoodOfSize(3 * TypeParam::kSizeLimit);
    EXPECT_THAT(this->Answer(tooLong + "\r" + this->m_good + "\r"),
                ElementsAre(kRejection, this->m_good));
}

TYPED_TEST(TextSentenceConstructor, restarts_even_with_the_byte_that_would_be_too_many) {
    const std::string full = this->Start() + std::string(TypeParam::kSizeLimit, 'x');
    EXPECT_THAT(this->Answer(full + this->m_good + "\r"), ElementsAre(this->m_good));
    EXPECT_THAT(this->Answer(full + "x" + this->m_good + "\r"),
                ElementsAre(kRejection, this->m_good));
}

TYPED_TEST(TextSentenceConstructor, counts_a_restarted_sentence_from_its_own_start) {
    const std::string longest = this->GoodOfSize(TypeParam::kSizeLimit + 1);
    for (const std::size_t before : {1, 7, 8, 9, 1000}) {
        const std::string restarted = this->Start() + std::string(before, 'x') + longest;
        EXPECT_THAT(this->Answer(restarted + "\r"), ElementsAre(longest));
        EXPECT_THAT(this->Answer(restarted + "x"), ElementsAre(kRejection));
    }
}
