#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDSTATB.h"

#include "Logs/FieldTable.h"

using Novatel::CNovatelLBANDSTAT;
using Novatel::CNovatelLBANDSTATB;

namespace {

/// The offsets from the tracking word on, in the order of the fields.
FieldTable<CNovatelLBANDSTAT> Fields(const std::array<std::size_t, 8>& offsets) {
    return {
        {EWireType::u32, 0, 1547547000, &CNovatelLBANDSTAT::GetFrequency},
        {EWireType::f32, 4, 40.5, &CNovatelLBANDSTAT::GetCarrierToNoise},
        {EWireType::f32, 8, 731.25, &CNovatelLBANDSTAT::GetLockTime},
        {EWireType::u16, offsets[0], 0x80C2,
         [](const auto& log) { return log.GetSignalTracking().GetWord(); }},
        {EWireType::u16, offsets[1], 0x8281,
         [](const auto& log) { return log.GetVBSStatus().GetWord(); }},
        {EWireType::u32, offsets[2], 0x81000001, &CNovatelLBANDSTAT::GetVBSBytes},
        {EWireType::u32, offsets[3], 0x82000002, &CNovatelLBANDSTAT::GetGoodDGPSUpdates},
        {EWireType::u32, offsets[4], 0x83000003, &CNovatelLBANDSTAT::GetBadDataUpdates},
        {EWireType::u16, offsets[5], 0x8403,
         [](const auto& log) { return log.GetHPAdditionalStatus().GetWord(); }},
        {EWireType::u32, offsets[6], 0x84000004, &CNovatelLBANDSTAT::GetHPBytes},
        {EWireType::u32, offsets[7], 0x85000005,
         [](const auto& log) { return log.GetHPStatus().GetWord(); }},
    };
}

const FieldTable<CNovatelLBANDSTAT> kPacked = Fields({16, 18, 20, 24, 28, 34, 36, 40});
const FieldTable<CNovatelLBANDSTAT> kSlotted = Fields({16, 20, 24, 28, 32, 40, 44, 48});

} // namespace

TEST(NovatelLBANDSTATB, decodes_the_packed_form_of_48_bytes) {
    ExpectLenientDecoder<CNovatelLBANDSTATB>(kPacked, 48);
}

TEST(NovatelLBANDSTATB, decodes_the_slotted_form_of_56_bytes) {
    ExpectLenientDecoder<CNovatelLBANDSTATB>(kSlotted, 56);
}

TEST(NovatelLBANDSTATB, chooses_the_form_by_the_message_length_not_by_the_sentence_s) {
    ExpectFields<CNovatelLBANDSTATB>(kSlotted, SentenceOf(kSlotted, 60).messageLength(56));
    ExpectFields<CNovatelLBANDSTATB>(kPacked, SentenceOf(kPacked, 56).messageLength(48));
}

TEST(NovatelLBANDSTATB, takes_every_other_length_for_the_packed_form) {
    for (const std::uint16_t length : {0, 47, 49, 55, 57, 112, 65535}) {
        ExpectFields<CNovatelLBANDSTATB>(kPacked, SentenceOf(kPacked, 56).messageLength(length));
    }
}

TEST(NovatelLBANDSTATB, has_zeros_for_what_a_short_packed_form_lacks) {
    const CNovatelLBANDSTATB log(Sentences::BinaryLog(731).u32(0, 5).bodySize(12));
    EXPECT_EQ(log.GetFrequency(), 5U);
    EXPECT_EQ(log.GetGoodDGPSUpdates(), 0U);
    EXPECT_EQ(log.GetHPStatus().GetWord(), 0U);
}

TEST(NovatelLBANDSTATB, is_an_L_band_log) {
    const CNovatelLBANDSTATB log{Sentences::BinaryLog(731)};
    const CGPSRecord* const record = &log;
    EXPECT_NE(dynamic_cast<const CLBandLog*>(record), nullptr);
}
