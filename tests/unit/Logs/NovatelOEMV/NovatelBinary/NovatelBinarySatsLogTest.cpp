// PSRSATS, RTKSATS and PDPSATS: one body, three classes.

#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKSATSB.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Novatel;
using Sentences::Sats;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// Entry i of a test, with values of its own in every field.
CNovatelSatsLog::SSatellite Satellite(unsigned i) {
    return {.system = 0x81000002 + i,
            .id = 0x8201 + i,
            .glonassFrequency = static_cast<std::int32_t>(0x8301 + i),
            .status = 0x84000004 + i,
            .signalMask = 0x85000005 + i};
}

void ExpectEqual(const CNovatelSatsLog::SSatellite& actual,
                 const CNovatelSatsLog::SSatellite& expected) {
    EXPECT_EQ(actual.system, expected.system);
    EXPECT_EQ(actual.id, expected.id);
    EXPECT_EQ(actual.glonassFrequency, expected.glonassFrequency);
    EXPECT_EQ(actual.status, expected.status);
    EXPECT_EQ(actual.signalMask, expected.signalMask);
}

Sats WithSatellites(unsigned count) {
    Sats sats(1);
    for (unsigned i = 0; i < count; ++i) {
        sats.satellite(Satellite(i));
    }
    return sats;
}

std::int32_t FrequencyOf(std::uint32_t system, std::int32_t raw) {
    const CNovatelPSRSATSB log(Sats(1162).satellite({.system = system, .glonassFrequency = raw}));
    return log.GetSatellites().at(0).glonassFrequency;
}

} // namespace

template <class TDecoder>
class NovatelBinarySatsLog : public testing::Test {
protected:
    static std::vector<CNovatelSatsLog::SSatellite> Decode(const Bytes::Sentence& sentence) {
        return TDecoder(sentence).GetSatellites();
    }

    static void ExpectSatellites(const Bytes::Sentence& sentence, unsigned count) {
        const auto satellites = Decode(sentence);
        ASSERT_THAT(satellites, SizeIs(count));
        for (unsigned i = 0; i < count; ++i) {
            ExpectEqual(satellites[i], Satellite(i));
        }
    }
};

using Decoders = testing::Types<CNovatelPSRSATSB, CNovatelRTKSATSB, CNovatelPDPSATSB>;
TYPED_TEST_SUITE(NovatelBinarySatsLog, Decoders);

TYPED_TEST(NovatelBinarySatsLog, decodes_every_field_of_every_entry) {
    this->ExpectSatellites(WithSatellites(5), 5);
}

TYPED_TEST(NovatelBinarySatsLog, decodes_every_field_behind_a_long_header) {
    this->ExpectSatellites(WithSatellites(5).headerLength(32), 5);
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_fewer_entries_follow_than_announced) {
    EXPECT_THAT(this->Decode(WithSatellites(4).announcing(5)), IsEmpty());
}

TYPED_TEST(NovatelBinarySatsLog, ignores_what_follows_the_announced_entries) {
    this->ExpectSatellites(WithSatellites(6).announcing(5), 5);
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_one_byte_is_missing) {
    EXPECT_THAT(this->Decode(WithSatellites(5).bodySize(4 + 5 * 16 - 1)), IsEmpty());
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_it_announces_nothing) {
    EXPECT_THAT(this->Decode(WithSatellites(5).announcing(0)), IsEmpty());
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_it_announces_a_negative_number) {
    EXPECT_THAT(this->Decode(WithSatellites(5).announcing(0xFFFFFFFF)), IsEmpty());
    EXPECT_THAT(this->Decode(WithSatellites(5).announcing(0x80000000)), IsEmpty());
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_it_announces_more_than_could_ever_follow) {
    EXPECT_THAT(this->Decode(WithSatellites(5).announcing(0x7FFFFFFF)), IsEmpty());
    // The size that 32 bits would take for right.
    EXPECT_THAT(this->Decode(WithSatellites(5).announcing(0x10000000)), IsEmpty());
}

TYPED_TEST(NovatelBinarySatsLog, is_empty_when_its_sentence_is_cut_anywhere) {
    const Bytes::Sentence whole = WithSatellites(5);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THAT(this->Decode(Bytes::Sentence(whole.data(), whole.data() + size)), IsEmpty());
    }
}

TYPED_TEST(NovatelBinarySatsLog, is_found_by_every_class_that_observers_ask_for) {
    const TypeParam log{Sats(1)};
    const CGPSRecord* const record = &log;
    EXPECT_NE(dynamic_cast<const CNovatelBinarySatsLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelSatsLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelBinaryRecord*>(record), nullptr);
}

TEST(NovatelSatsLogFrequency, is_signed_for_GLONASS) {
    EXPECT_EQ(FrequencyOf(1, 65529), -7);
    EXPECT_EQ(FrequencyOf(1, 32768), -32768);
    EXPECT_EQ(FrequencyOf(1, 32767), 32767);
    EXPECT_EQ(FrequencyOf(1, 6), 6);
}

TEST(NovatelSatsLogFrequency, is_as_received_for_every_other_system) {
    EXPECT_EQ(FrequencyOf(0, 65529), 65529);
    EXPECT_EQ(FrequencyOf(2, 65529), 65529);
    EXPECT_EQ(FrequencyOf(0x00010001, 65529), 65529);
}
