#include "Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB.h"

#include "Logs/OrderedEnds.h"
#include "Support/LogSentences.h"

#include <gmock/gmock.h>

using Novatel::CNovatelVERSION;
using Novatel::CNovatelVERSIONB;
using Sentences::Version;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::string_literals;

namespace {

const std::string kAssertion =
    "src/corvane/src/Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB:41: void "
    "Novatel::CNovatelVERSIONB::ParseSentenceData(const std::vector<unsigned char, "
    "std::allocator<unsigned char> >&): Assertion `0' failed.";

const CNovatelVERSION::SComponent kCard{.type = 1,
                                        .model = "L12LGRV",
                                        .serialNumber = "DAB00000001",
                                        .hardwareVersion = "OEMV3G-3.01-2T2x", // full width
                                        .softwareVersion = "3.701",
                                        .bootVersion = "3.000",
                                        .compileDate = "2010/Apr/29x", // full width
                                        .compileTime = "16:11:14"};
const CNovatelVERSION::SComponent kHeightModel{.type = 981073920,
                                               .model = "Height",
                                               .serialNumber = "",
                                               .hardwareVersion = "",
                                               .softwareVersion = "EGM96",
                                               .bootVersion = "",
                                               .compileDate = "",
                                               .compileTime = ""};

/// As it is kept: padded with zero bytes to its width on the wire, and closed by one more.
std::string Padded(std::string text, std::size_t width) {
    text.resize(width + 1);
    return text;
}

void ExpectComponent(const CNovatelVERSION::SComponent& actual,
                     const CNovatelVERSION::SComponent& expected) {
    EXPECT_EQ(actual.type, expected.type);
    EXPECT_EQ(actual.model, Padded(expected.model, 16));
    EXPECT_EQ(actual.serialNumber, Padded(expected.serialNumber, 16));
    EXPECT_EQ(actual.hardwareVersion, Padded(expected.hardwareVersion, 16));
    EXPECT_EQ(actual.softwareVersion, Padded(expected.softwareVersion, 16));
    EXPECT_EQ(actual.bootVersion, Padded(expected.bootVersion, 16));
    EXPECT_EQ(actual.compileDate, Padded(expected.compileDate, 12));
    EXPECT_EQ(actual.compileTime, Padded(expected.compileTime, 12));
}

void ExpectBoth(const CNovatelVERSIONB& log) {
    EXPECT_EQ(log.GetNumberOfComponents(), 2U);
    ASSERT_THAT(log.GetComponents(), SizeIs(2));
    ExpectComponent(log.GetComponents()[0], kCard);
    ExpectComponent(log.GetComponents()[1], kHeightModel);
}

Version Both() {
    return Version().component(kCard).component(kHeightModel);
}

/// What stands on standard error before the assertion's line.
std::string Diagnostic(const std::string& got, const std::string& expected,
                       const std::string& components, const std::string& dump) {
    return "NovatelVERSIONB: Unexpected length. Got " + got + ", expected " + expected + " from " +
           components + " components\nSentence Data is as follows:" + dump;
}

/// A sentence of `size` bytes that all are `byte`, decoded as a VERSION.
void ExpectDump(std::size_t size, const std::string& dump) {
    ::unsetenv("CORVANE_TRACE");
    const Bytes::Sentence sentence(size, 0x11);
    EXPECT_EXIT(CNovatelVERSIONB{sentence}, testing::KilledBySignal(SIGABRT),
                testing::HasSubstr("Sentence Data is as follows:" + dump +
                                   program_invocation_short_name + ": " + kAssertion + "\n"));
}

std::string Times(unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += "0x11 ";
    }
    return text;
}

} // namespace

TEST(NovatelVERSIONB, decodes_every_field_of_every_component) {
    ExpectBoth(CNovatelVERSIONB(Both()));
}

TEST(NovatelVERSIONB, decodes_every_field_behind_a_long_header) {
    ExpectBoth(CNovatelVERSIONB(Both().headerLength(32)));
}

TEST(NovatelVERSIONB, accepts_no_components) {
    EXPECT_THAT(CNovatelVERSIONB(Version()).GetComponents(), IsEmpty());
}

TEST(NovatelVERSIONBDeathTest, dumps_the_sentence_and_fails_an_assertion_on_another_length) {
    const Bytes::Sentence sentence =
        Version().announcing(0x12).week(0x0708).milliseconds(0).receiverStatus(0).softwareVersion(
            0xFEDC);
    ASSERT_EQ(sentence.size(), 36U);
    char crc[sizeof "0x00 0x00 0x00 0x00 "];
    std::snprintf(crc, sizeof crc, "0x%02X 0x%02X 0x%02X 0x%02X ", sentence[32], sentence[33],
                  sentence[34], sentence[35]);
    ExpectFailedAssertion(
        sentence, kAssertion,
        Diagnostic("36", "1980", "18",
                   "\n0xAA 0x44 0x12 0x1C 0x25 0x00 0x00 0x20 0x04 0x00 0x00 0x00 0x85 0xB4 0x08 "
                   "0x07 \n0x00 0x00 0x00 0x00 0x00 0x00 0x00 0x00 0x00 0x00 0xDC 0xFE 0x12 0x00 "
                   "0x00 0x00 \n"s +
                       crc + "\n"));
}

TEST(NovatelVERSIONBDeathTest, expects_the_length_of_three_components_when_three_are_announced) {
    EXPECT_EXIT(Decode(Both().announcing(3)), testing::KilledBySignal(SIGABRT),
                testing::StartsWith(Diagnostic("252", "360", "3", "\n0xAA 0x44 ")));
    EXPECT_EXIT(Decode(Both().announcing(3).headerLength(32)), testing::KilledBySignal(SIGABRT),
                testing::StartsWith(Diagnostic("256", "364", "3", "\n0xAA 0x44 ")));
}

TEST(NovatelVERSIONBDeathTest, begins_a_line_for_every_16_bytes_but_not_for_a_last_one_alone) {
    ExpectDump(0, "\n");
    ExpectDump(1, Times(1) + "\n");
    ExpectDump(2, "\n" + Times(2) + "\n");
    ExpectDump(16, "\n" + Times(16) + "\n");
    ExpectDump(17, "\n" + Times(17) + "\n");
    ExpectDump(18, "\n" + Times(16) + "\n" + Times(2) + "\n");
    ExpectDump(33, "\n" + Times(16) + "\n" + Times(17) + "\n");
    ExpectDump(48, "\n" + Times(16) + "\n" + Times(16) + "\n" + Times(16) + "\n");
}

TEST(NovatelVERSIONBDeathTest, fails_the_assertion_at_once_for_any_number_of_components) {
    EXPECT_EXIT(Decode(Version().announcing(4294967295)), testing::KilledBySignal(SIGABRT),
                testing::StartsWith(Diagnostic("36", "-72", "-1", "\n0xAA 0x44 ")));
    // The size that 32 bits would take for right.
    EXPECT_EXIT(Decode(Version().announcing(0x40000000)), testing::KilledBySignal(SIGABRT),
                testing::StartsWith(Diagnostic("36", "36", "1073741824", "\n0xAA 0x44 ")));
}
