#include "Logs/NovatelOEMV/NovatelBinary/NovatelREFSTATIONB.h"

#include "Logs/FieldTable.h"
#include "Support/LogSentences.h"

using Novatel::CNovatelREFSTATION;
using Novatel::CNovatelREFSTATIONB;
using Sentences::Refstation;
using namespace std::string_literals;

namespace {

const FieldTable<CNovatelREFSTATION> kFields = {
    {EWireType::f64, 4, -1634531.5683, &CNovatelREFSTATION::GetX},
    {EWireType::f64, 12, -3664618.0326, &CNovatelREFSTATION::GetY},
    {EWireType::f64, 20, 4942496.3270, &CNovatelREFSTATION::GetZ},
    {EWireType::u32, 32, 0x81000003, &CNovatelREFSTATION::GetStationType},
};

std::string StationID(std::string_view bytes) {
    return CNovatelREFSTATIONB(Refstation().stationID(bytes)).GetStationID();
}

} // namespace

TEST(NovatelREFSTATIONB, decodes_every_field) {
    ExpectFields<CNovatelREFSTATIONB>(kFields, SentenceOf(kFields, 44));
}

TEST(NovatelREFSTATIONB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelREFSTATIONB>(kFields, 44);
}

TEST(NovatelREFSTATIONB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelREFSTATIONB>(kFields, 44);
}

TEST(NovatelREFSTATIONB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelREFSTATIONB>(kFields, 44);
}

TEST(NovatelREFSTATIONB, keeps_the_station_identifier_up_to_its_first_zero_byte) {
    EXPECT_EQ(StationID("1234\0"s), "1234");
    EXPECT_EQ(StationID("1\0003\0004"s), "1");
    EXPECT_EQ(StationID("\00012345"s), "");
}

TEST(NovatelREFSTATIONB, keeps_at_most_five_characters_of_the_station_identifier) {
    EXPECT_EQ(StationID("12345678"), "12345");
}

TEST(NovatelREFSTATIONB, keeps_what_a_cut_sentence_has_of_the_station_identifier) {
    const Bytes::Sentence whole = Refstation().stationID("12345");
    for (std::size_t characters = 0; characters <= 5; ++characters) {
        const Bytes::Sentence cut(whole.data(), whole.data() + 28 + 36 + characters);
        EXPECT_EQ(CNovatelREFSTATIONB(cut).GetStationID(),
                  std::string("12345").substr(0, characters));
    }
}
