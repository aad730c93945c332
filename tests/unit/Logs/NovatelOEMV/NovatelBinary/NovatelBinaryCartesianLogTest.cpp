// BESTXYZ, PSRXYZ, RTKXYZ and PDPXYZ: one body, four classes.

#include "Logs/FieldTable.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKXYZB.h"
#include "Support/LogSentences.h"

using namespace Novatel;
using namespace std::string_literals;

namespace {

// clang-format off
const FieldTable<CCartesianLog> kFields = {
    {EWireType::u32, 0, 0x81000001, &CCartesianLog::GetPositionStatus},
    {EWireType::u32, 4, 0x82000002, &CCartesianLog::GetPositionType},
    {EWireType::f64, 8, -1634531.5683, &CCartesianLog::GetX},
    {EWireType::f64, 16, -3664618.0326, &CCartesianLog::GetY},
    {EWireType::f64, 24, 4942496.3270, &CCartesianLog::GetZ},
    {EWireType::f32, 32, 0.5, &CCartesianLog::GetXStandardDeviation},
    {EWireType::f32, 36, 1.25, &CCartesianLog::GetYStandardDeviation},
    {EWireType::f32, 40, 2.125, &CCartesianLog::GetZStandardDeviation},
    {EWireType::u32, 44, 0x83000003, &CCartesianLog::GetVelocityStatus},
    {EWireType::u32, 48, 0x84000004, &CCartesianLog::GetVelocityType},
    {EWireType::f64, 52, -0.0017, &CCartesianLog::GetVelocityX},
    {EWireType::f64, 60, -0.0049, &CCartesianLog::GetVelocityY},
    {EWireType::f64, 68, 0.0062, &CCartesianLog::GetVelocityZ},
    {EWireType::f32, 76, 3.5, &CCartesianLog::GetVelocityXStandardDeviation},
    {EWireType::f32, 80, 4.25, &CCartesianLog::GetVelocityYStandardDeviation},
    {EWireType::f32, 84, 5.125, &CCartesianLog::GetVelocityZStandardDeviation},
    {EWireType::f32, 92, 0.25, &CCartesianLog::GetVelocityLatency},
    {EWireType::f32, 96, 6.5, &CCartesianLog::GetDifferentialAge},
    {EWireType::f32, 100, 7.25, &CCartesianLog::GetSolutionAge},
    {EWireType::u8, 104, 201, &CCartesianLog::GetSatellitesTracked},
    {EWireType::u8, 105, 202, &CCartesianLog::GetSatellitesUsed},
    {EWireType::u8, 106, 203, &CCartesianLog::GetSatellitesUsedL1},
    {EWireType::u8, 107, 204, &CCartesianLog::GetSatellitesUsedMultiFrequency},
    {EWireType::u8, 108, 205, &CCartesianLog::GetReserved},
    {EWireType::u8, 109, 206, &CCartesianLog::GetExtendedSolutionStatus},
    {EWireType::u8, 110, 207, &CCartesianLog::GetGalileoBeiDouMask},
    {EWireType::u8, 111, 208, &CCartesianLog::GetGPSGLONASSMask},
};
// clang-format on

template <class TDecoder, class TContent>
struct SPair {
    using Decoder = TDecoder;
    using Content = TContent;
};

} // namespace

template <class TPair>
class NovatelBinaryCartesianLog : public testing::Test {};

using Pairs =
    testing::Types<SPair<CNovatelBESTXYZB, CNovatelBESTXYZ>, SPair<CNovatelPSRXYZB, CNovatelPSRXYZ>,
                   SPair<CNovatelRTKXYZB, CNovatelRTKXYZ>, SPair<CNovatelPDPXYZB, CNovatelPDPXYZ>>;
TYPED_TEST_SUITE(NovatelBinaryCartesianLog, Pairs);

TYPED_TEST(NovatelBinaryCartesianLog, decodes_every_field) {
    ExpectFields<typename TypeParam::Decoder>(kFields, SentenceOf(kFields, 112));
}

TYPED_TEST(NovatelBinaryCartesianLog, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<typename TypeParam::Decoder>(kFields, 112);
}

TYPED_TEST(NovatelBinaryCartesianLog, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<typename TypeParam::Decoder>(kFields, 112);
}

TYPED_TEST(NovatelBinaryCartesianLog, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<typename TypeParam::Decoder>(kFields, 112);
}

TYPED_TEST(NovatelBinaryCartesianLog, keeps_the_station_identifier_as_exactly_four_bytes) {
    const typename TypeParam::Decoder log(Sentences::Cartesian(1).stationID("A\0C\0"s));
    EXPECT_EQ(log.GetBaseStationID(), "A\0C\0"s);
}

TYPED_TEST(NovatelBinaryCartesianLog, has_no_station_identifier_when_it_is_cut) {
    const Bytes::Sentence whole = Sentences::Cartesian(1).stationID("ABCD");
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const typename TypeParam::Decoder log(Bytes::Sentence(whole.data(), whole.data() + size));
        EXPECT_EQ(log.GetBaseStationID(), size >= 28 + 92 ? "ABCD" : "") << size;
    }
}

TYPED_TEST(NovatelBinaryCartesianLog, is_found_by_every_class_that_observers_ask_for) {
    const typename TypeParam::Decoder log{Sentences::Cartesian(1)};
    const CGPSRecord* const record = &log;
    EXPECT_NE(dynamic_cast<const CNovatelRecord*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelBinaryRecord*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelBinaryCartesianLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelCartesianLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CCartesianLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const typename TypeParam::Content*>(record), nullptr);
}

TYPED_TEST(NovatelBinaryCartesianLog, shows_the_same_solution_by_every_path) {
    const typename TypeParam::Decoder log(Sentences::Cartesian(1).position(1, 2, 3));
    const CNovatelBinaryCartesianLog& byEncoding = log;
    const typename TypeParam::Content& byContent = log;
    EXPECT_EQ(&static_cast<const CCartesianLog&>(byEncoding),
              &static_cast<const CCartesianLog&>(byContent));
    EXPECT_EQ(byContent.GetY(), 2);
}
