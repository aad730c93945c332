// Sentences of any length and any header length: nothing is ever read outside of them. (Run under
// the address sanitizer, this is where it would show.)

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <gtest/gtest.h>

using namespace Sentences;

namespace {

// The logs whose lengths may contradict their contents without ending the process.
const Bytes::Sentence kLenient[] = {
    Bestpos(),
    Time(),
    Refstation().stationID("12345"),
    Cartesian(241).stationID("ABCD"),
    Cartesian(243).stationID("ABCD"),
    Cartesian(244).stationID("ABCD"),
    Cartesian(471).stationID("ABCD"),
    Omnihppos().stationID("ABCD"),
    BinaryLog(730).bodySize(44),
    BinaryLog(731).bodySize(48),
    BinaryLog(731).bodySize(56),
    Pdpstat(),
    Sats(1162).satellite({}).satellite({}),
    Sats(1174).satellite({}).satellite({}),
    Sats(1234).satellite({}).satellite({}),
    Response(42).responseText("OK"),
    BinaryLog(999).bodySize(20),
};

} // namespace

TEST(RecordFactoryDamage, makes_a_record_of_every_beginning_of_a_lenient_log) {
    for (const Bytes::Sentence& whole : kLenient) {
        for (std::size_t size = 1; size <= whole.size(); ++size) {
            const auto record = CreateRecord(Bytes::Sentence(whole.data(), whole.data() + size));
            ASSERT_NE(record, nullptr);
            EXPECT_EQ(record->GetMessageID(), size >= 6 ? Bytes::ReadUInt16(whole, 4) : 0);
        }
    }
}

TEST(RecordFactoryDamage, makes_a_record_of_a_lenient_log_with_any_header_length) {
    for (Bytes::Sentence sentence : kLenient) {
        const std::uint16_t messageID = Bytes::ReadUInt16(sentence, 4);
        for (unsigned length = 0; length <= 255; ++length) {
            sentence[3] = static_cast<std::uint8_t>(length);
            const auto record = CreateRecord(sentence);
            ASSERT_NE(record, nullptr);
            EXPECT_EQ(record->GetMessageID(), messageID);
        }
    }
}

TEST(RecordFactoryDamage, makes_a_record_of_any_message_length_of_a_lenient_log) {
    for (Bytes::Sentence sentence : kLenient) {
        for (const unsigned length : {0U, 1U, 3U, 4U, 5U, 48U, 56U, 255U, 256U, 65535U}) {
            sentence[8] = static_cast<std::uint8_t>(length);
            sentence[9] = static_cast<std::uint8_t>(length >> 8);
            EXPECT_NE(CreateRecord(sentence), nullptr);
        }
    }
}

TEST(RecordFactoryDamage, makes_the_right_thing_of_every_beginning_of_an_ASCII_log) {
    const Bytes::Sentence whole = AsciiLog("SOFTLOADSTATUSA", "COMPLETE");
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto record = CreateRecord(Bytes::Sentence(whole.data(), whole.data() + size));
        const bool hasNameAndComma = size >= std::string_view("#SOFTLOADSTATUSA,").size();
        EXPECT_EQ(record != nullptr, hasNameAndComma) << size;
    }
}
