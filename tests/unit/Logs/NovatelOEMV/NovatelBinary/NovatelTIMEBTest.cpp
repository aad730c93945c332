#include "Logs/NovatelOEMV/NovatelBinary/NovatelTIMEB.h"

#include "Logs/FieldTable.h"

using Novatel::CNovatelTIME;
using Novatel::CNovatelTIMEB;

namespace {

const FieldTable<CNovatelTIME> kFields = {
    {EWireType::u32, 0, 0x81000001, &CNovatelTIME::GetClockStatus},
    {EWireType::f64, 4, -2.5e-9, &CNovatelTIME::GetClockOffset},
    {EWireType::f64, 12, 3.75e-9, &CNovatelTIME::GetClockOffsetDeviation},
    {EWireType::f64, 20, -15.00000001, &CNovatelTIME::GetUTCOffset},
    {EWireType::u32, 28, 0x820007DA, &CNovatelTIME::GetUTCYear},
    {EWireType::u8, 32, 201, &CNovatelTIME::GetUTCMonth},
    {EWireType::u8, 33, 202, &CNovatelTIME::GetUTCDay},
    {EWireType::u8, 34, 203, &CNovatelTIME::GetUTCHour},
    {EWireType::u8, 35, 204, &CNovatelTIME::GetUTCMinute},
    {EWireType::u32, 36, 0x8300EA5F, &CNovatelTIME::GetUTCMilliseconds},
    {EWireType::u32, 40, 0x84000004, &CNovatelTIME::GetUTCStatus},
};

} // namespace

TEST(NovatelTIMEB, decodes_every_field) {
    ExpectFields<CNovatelTIMEB>(kFields, SentenceOf(kFields, 44));
}

TEST(NovatelTIMEB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelTIMEB>(kFields, 44);
}

TEST(NovatelTIMEB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelTIMEB>(kFields, 44);
}

TEST(NovatelTIMEB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelTIMEB>(kFields, 44);
}
