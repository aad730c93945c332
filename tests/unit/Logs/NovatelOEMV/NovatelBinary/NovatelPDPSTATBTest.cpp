#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSTATB.h"

#include "Logs/FieldTable.h"

using Novatel::CNovatelPDPSTAT;
using Novatel::CNovatelPDPSTATB;

namespace {

double Integer(const CNovatelPDPSTAT& log, std::size_t index) {
    return log.GetIntegers()[index];
}

double Real(const CNovatelPDPSTAT& log, std::size_t index) {
    return log.GetReals()[index];
}

const FieldTable<CNovatelPDPSTAT> kFields = {
    {EWireType::u32, 0, 0x81000001, [](const auto& log) { return Integer(log, 0); }},
    {EWireType::u32, 4, 0x82000002, [](const auto& log) { return Integer(log, 1); }},
    {EWireType::u32, 8, 0x83000003, [](const auto& log) { return Integer(log, 2); }},
    {EWireType::u32, 12, 0x84000004, [](const auto& log) { return Integer(log, 3); }},
    {EWireType::u32, 16, 0x85000005, [](const auto& log) { return Integer(log, 4); }},
    {EWireType::f64, 20, -1.1, [](const auto& log) { return Real(log, 0); }},
    {EWireType::f64, 28, 2.2, [](const auto& log) { return Real(log, 1); }},
    {EWireType::f64, 36, -3.3e-9, [](const auto& log) { return Real(log, 2); }},
};

} // namespace

TEST(NovatelPDPSTATB, decodes_every_field) {
    ExpectFields<CNovatelPDPSTATB>(kFields, SentenceOf(kFields, 44));
}

TEST(NovatelPDPSTATB, decodes_every_field_behind_a_long_header) {
    ExpectFieldsBehindLongHeader<CNovatelPDPSTATB>(kFields, 44);
}

TEST(NovatelPDPSTATB, has_zeros_for_what_a_sentence_cut_anywhere_lacks) {
    ExpectZerosPastEveryCut<CNovatelPDPSTATB>(kFields, 44);
}

TEST(NovatelPDPSTATB, reads_nothing_outside_whatever_the_header_length_claims) {
    ExpectFieldsFollowEveryHeaderLength<CNovatelPDPSTATB>(kFields, 44);
}
