#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDINFOB.h"

#include "Logs/FieldTable.h"

using Novatel::CNovatelLBANDINFO;
using Novatel::CNovatelLBANDINFOB;

namespace {

// clang-format off
const FieldTable<CNovatelLBANDINFO> kFields = {
    {EWireType::u32, 4, 0x81000001, &CNovatelLBANDINFO::GetBaudRate},
    {EWireType::u16, 8, 0x8202, &CNovatelLBANDINFO::GetServiceID},
    {EWireType::u16, 10, 0x8303, &CNovatelLBANDINFO::GetReserved},
    {EWireType::u32, 12, 0x84000004, &CNovatelLBANDINFO::GetSerialNumber},
    {EWireType::u32, 16, 0x85000005, [](const auto& log) { return log.GetVBSSubscription().state; }},
    {EWireType::u32, 20, 0x86000006, [](const auto& log) { return log.GetVBSSubscription().expiryWeek; }},
    {EWireType::u32, 24, 0x87000007, [](const auto& log) { return log.GetVBSSubscription().expirySeconds; }},
    {EWireType::u32, 28, 0x88000008, [](const auto& log) { return log.GetHPSubscription().state; }},
    {EWireType::u32, 32, 0x89000009, [](const auto& log) { return log.GetHPSubscription().expiryWeek; }},
    {EWireType::u32, 36, 0x8A00000A, [](const auto& log) { return log.GetHPSubscription().expirySeconds; }},
    {EWireType::u32, 40, 0x8B00000B, &CNovatelLBANDINFO::GetHPMode},
};
// clang-format on

std::uint64_t FrequencyOf(const Bytes::Sentence& sentence) {
    return CNovatelLBANDINFOB(sentence).GetFrequency();
}

} // namespace

TEST(NovatelLBANDINFOB, decodes_every_field) {
    ExpectFields<CNovatelLBANDINFOB>(kFields, SentenceOf(kFields, 44));
}

TEST(NovatelLBANDINFOB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelLBANDINFOB>(kFields, 44);
}

TEST(NovatelLBANDINFOB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelLBANDINFOB>(kFields, 44);
}

TEST(NovatelLBANDINFOB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelLBANDINFOB>(kFields, 44);
}

TEST(NovatelLBANDINFOB, turns_the_frequency_from_kHz_into_Hz) {
    EXPECT_EQ(FrequencyOf(Sentences::BinaryLog(730).u32(0, 1547547)), 1547547000U);
}

TEST(NovatelLBANDINFOB, holds_the_largest_frequency_that_can_be_sent) {
    EXPECT_EQ(FrequencyOf(Sentences::BinaryLog(730).u32(0, 0xFFFFFFFF)), 4294967295000U);
}

TEST(NovatelLBANDINFOB, has_no_frequency_when_it_is_cut) {
    const Bytes::Sentence whole = Sentences::BinaryLog(730).u32(0, 1547547);
    EXPECT_EQ(FrequencyOf(Bytes::Sentence(whole.data(), whole.data() + 31)), 0U);
}

TEST(NovatelLBANDINFOB, is_an_L_band_log) {
    const CNovatelLBANDINFOB log{Sentences::BinaryLog(730)};
    const CGPSRecord* const record = &log;
    EXPECT_NE(dynamic_cast<const CLBandLog*>(record), nullptr);
}
