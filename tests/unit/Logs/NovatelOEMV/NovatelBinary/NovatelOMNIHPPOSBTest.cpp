#include "Logs/NovatelOEMV/NovatelBinary/NovatelOMNIHPPOSB.h"

#include "Logs/FieldTable.h"
#include "Support/LogSentences.h"

using namespace Novatel;
using namespace std::string_literals;

namespace {

// clang-format off
const FieldTable<CGeodeticLog> kFields = {
    {EWireType::u32, 0, 0x81000001, &CGeodeticLog::GetSolutionStatus},
    {EWireType::u32, 4, 0x82000002, &CGeodeticLog::GetPositionType},
    {EWireType::f64, 8, 51.11635910984, &CGeodeticLog::GetLatitude},
    {EWireType::f64, 16, -114.03833105168, &CGeodeticLog::GetLongitude},
    {EWireType::f64, 24, 1063.8416, &CGeodeticLog::GetHeight},
    {EWireType::f32, 32, -16.25, &CGeodeticLog::GetUndulation},
    {EWireType::u32, 36, 0x83000003, &CGeodeticLog::GetDatumID},
    {EWireType::f32, 40, 0.5, &CGeodeticLog::GetLatitudeStandardDeviation},
    {EWireType::f32, 44, 1.25, &CGeodeticLog::GetLongitudeStandardDeviation},
    {EWireType::f32, 48, 2.125, &CGeodeticLog::GetHeightStandardDeviation},
    {EWireType::f32, 56, 3.5, &CGeodeticLog::GetDifferentialAge},
    {EWireType::f32, 60, 4.25, &CGeodeticLog::GetSolutionAge},
    {EWireType::u8, 64, 201, &CGeodeticLog::GetSatellitesTracked},
    {EWireType::u8, 65, 202, &CGeodeticLog::GetSatellitesUsed},
    {EWireType::u8, 66, 203, &CGeodeticLog::GetSatellitesUsedL1},
    {EWireType::u8, 67, 204, &CGeodeticLog::GetSatellitesUsedMultiFrequency},
    {EWireType::u8, 68, 205, &CGeodeticLog::GetReserved},
    {EWireType::u8, 69, 206, &CGeodeticLog::GetExtendedSolutionStatus},
    {EWireType::u8, 70, 207, &CGeodeticLog::GetGalileoBeiDouMask},
    {EWireType::u8, 71, 208, &CGeodeticLog::GetGPSGLONASSMask},
};
// clang-format on

} // namespace

TEST(NovatelOMNIHPPOSB, decodes_every_field) {
    ExpectFields<CNovatelOMNIHPPOSB>(kFields, SentenceOf(kFields, 72));
}

TEST(NovatelOMNIHPPOSB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelOMNIHPPOSB>(kFields, 72);
}

TEST(NovatelOMNIHPPOSB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelOMNIHPPOSB>(kFields, 72);
}

TEST(NovatelOMNIHPPOSB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelOMNIHPPOSB>(kFields, 72);
}

TEST(NovatelOMNIHPPOSB, keeps_the_station_identifier_as_exactly_four_bytes) {
    const CNovatelOMNIHPPOSB log(Sentences::Omnihppos().stationID("A\0C\0"s));
    EXPECT_EQ(log.GetBaseStationID(), "A\0C\0"s);
}

TEST(NovatelOMNIHPPOSB, has_no_station_identifier_when_it_is_cut) {
    const Bytes::Sentence whole = Sentences::Omnihppos().stationID("ABCD");
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const CNovatelOMNIHPPOSB log(Bytes::Sentence(whole.data(), whole.data() + size));
        EXPECT_EQ(log.GetBaseStationID(), size >= 28 + 56 ? "ABCD" : "") << size;
    }
}

TEST(NovatelOMNIHPPOSB, is_found_by_every_class_that_observers_ask_for) {
    const CNovatelOMNIHPPOSB log{Sentences::Omnihppos()};
    const CGPSRecord* const record = &log;
    EXPECT_NE(dynamic_cast<const CNovatelBinaryGeodeticLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelGeodeticLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CGeodeticLog*>(record), nullptr);
    EXPECT_NE(dynamic_cast<const CNovatelOMNIHPPOS*>(record), nullptr);
}
