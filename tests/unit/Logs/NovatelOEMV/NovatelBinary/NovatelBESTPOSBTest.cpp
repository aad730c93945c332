#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTPOSB.h"

#include "Logs/FieldTable.h"
#include "Logs/GeodeticLog.h"

using Novatel::CNovatelBESTPOS;
using Novatel::CNovatelBESTPOSB;

namespace {

const FieldTable<CNovatelBESTPOS> kFields = {
    {EWireType::f32, 32, -29.5, &CNovatelBESTPOS::GetUndulation},
    {EWireType::u8, 69, 0x86, &CNovatelBESTPOS::GetExtendedSolutionStatus},
    {EWireType::u8, 71, 0x33, &CNovatelBESTPOS::GetGPSGLONASSMask},
};

} // namespace

TEST(NovatelBESTPOSB, decodes_every_field) {
    ExpectFields<CNovatelBESTPOSB>(kFields, SentenceOf(kFields, 72));
}

TEST(NovatelBESTPOSB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelBESTPOSB>(kFields, 72);
}

TEST(NovatelBESTPOSB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelBESTPOSB>(kFields, 72);
}

TEST(NovatelBESTPOSB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelBESTPOSB>(kFields, 72);
}

TEST(NovatelBESTPOSB, keeps_the_undulation_s_nearest_float) {
    const CNovatelBESTPOSB log(Sentences::BinaryLog(42).f32(32, -29.2F));
    EXPECT_EQ(log.GetUndulation(), static_cast<double>(-29.2F));
}

TEST(NovatelBESTPOSB, is_no_geodetic_log) {
    const CNovatelBESTPOSB log{Sentences::BinaryLog(42)};
    const CGPSRecord& record = log;
    EXPECT_EQ(dynamic_cast<const CGeodeticLog*>(&record), nullptr);
}
