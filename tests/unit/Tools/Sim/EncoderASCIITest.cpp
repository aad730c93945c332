#include "Tools/Sim/EncoderTesting.h"

#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include <gmock/gmock.h>

using namespace SimTesting;
using testing::ElementsAre;
using testing::SizeIs;
using testing::StartsWith;

namespace {

/// The lines of a log, their checksums tested and cut off.
std::vector<std::string> Lines(std::string_view name, const Sim::SReceiverInfo& info = {},
                               const Sim::SHeaderFields& header = {}) {
    std::vector<std::string> lines;
    const std::string text = Sim::EncodeASCII(name, State(), info, header).value();
    EXPECT_TRUE(text.ends_with("\r\n"));
    for (const auto& line : Framed<Novatel::CNovatelASCIISentenceConstructor>(text)) {
        lines.emplace_back(line.begin(), line.end() - 9);
    }
    return lines;
}

} // namespace

TEST(EncoderASCII, version_tells_the_card_in_quotes) {
    EXPECT_THAT(Lines("VERSION"),
                ElementsAre("#VERSIONA,COM1,0,65.0,FINESTEERING,1828,477312.250,00000000,3681,6259;"
                            "1,GPSCARD,\"L12LGRV\",\"DAB07180034\",\"OEMV3G-2.02-2T\",\"3.907\","
                            "\"3.000\",\"2011/Jan/06\",\"10:22:20\""));
}

// As a receiver has sent it, but for the checksum.
TEST(EncoderASCII, softloadstatus_is_letter_for_letter_that_of_a_receiver) {
    Sim::SState state;
    state.time = {0, 186};
    Sim::SReceiverInfo info;
    info.idleTime = 195;
    info.statusWord = 0x004C0001;
    info.timeStatus = 20;
    info.softwareBuild = 3153;
    EXPECT_THAT(Sim::EncodeASCII("SOFTLOADSTATUS", state, info, {.portName = "USB2"}).value(),
                StartsWith("#SOFTLOADSTATUSA,USB2,0,97.5,UNKNOWN,0,0.186,004c0001,2d64,3153;"
                           "NOT_STARTED*"));
}

// The text of a receiver's BESTPOSA, checksum included.
TEST(EncoderASCII, the_framer_takes_real_checksums) {
    EXPECT_THAT(Framed<Novatel::CNovatelASCIISentenceConstructor>(
                    "#BESTPOSA,COM1,0,65.5,FINESTEERING,1687,419928.000,00000000,6145,3153;SOL_"
                    "COMPUTED,SINGLE,32.59535912622,-85.29567789741,199.9777,-29.2000,WGS84,1.1396,"
                    "1.1687,2.4308,\"\",0.000,0.000,12,12,0,0,0,06,00,03*49329266\r\n"),
                SizeIs(1));
}

TEST(EncoderASCII, the_daemon_reads_every_softload_status) {
    const std::pair<const char*, int> statuses[] = {
        {"NOT_STARTED", 1}, {"READY_FOR_SETUP", 2}, {"VERIFYING_DATA", 8}, {"COMPLETE", 12}};
    for (const auto& [text, number] : statuses) {
        Sim::SReceiverInfo info;
        info.softloadStatus = text;
        const auto lines = Framed<Novatel::CNovatelASCIISentenceConstructor>(
            Sim::EncodeASCII("SOFTLOADSTATUS", State(), info, {}).value());
        ASSERT_THAT(lines, SizeIs(1));
        const auto record = CreateRecord(lines[0]);
        const auto& status = dynamic_cast<const Novatel::CNovatelSoftLoadStatusRecord&>(*record);
        EXPECT_EQ(status.GetStatus(), number);
        EXPECT_EQ(status.GetStatusText(), text);
    }
}

TEST(EncoderASCII, the_port_is_named_by_its_address_where_no_name_is_given) {
    const std::pair<std::uint8_t, const char*> names[] = {
        {0x20, "COM1"}, {0x40, "COM2"}, {0x60, "COM3"}, {0xA0, "USB1"}, {0x3E, "COM1_30"}};
    for (const auto& [address, name] : names) {
        EXPECT_EQ(Fields(Lines("VERSION", {}, {.portAddress = address}).at(0)).at(1), name);
    }
}

TEST(EncoderASCII, milliseconds_have_three_digits) {
    Sim::SState state = State();
    state.time.milliseconds = 1005;
    const auto fields = Fields(Sim::EncodeASCII("VERSION", state, {}, {}).value());
    EXPECT_EQ(fields.at(6), "1.005");
}

TEST(EncoderASCII, rxconfig_has_a_line_for_each_setting_that_counts_down) {
    Sim::SReceiverInfo info;
    info.ports = {{.port = 13, .baud = 9600, .receiveMode = 14, .transmitMode = 0}};
    const std::string header = ",65.0,FINESTEERING,1828,477312.250,00000000,0000,6259;";
    EXPECT_THAT(Lines("RXCONFIG", info, {.portName = "USB2"}),
                ElementsAre("#RXCONFIGA,USB2,1" + header + "COMA,USB2,1" + header +
                                "USB1,9600,N,8,1,N,OFF,ON",
                            "#RXCONFIGA,USB2,0" + header + "INTERFACEMODEA,USB2,0" + header +
                                "USB1,RTCMV3,NONE,ON"));
}
