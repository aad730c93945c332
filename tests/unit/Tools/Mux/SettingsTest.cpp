#include "mux/Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Mux;
using testing::HasSubstr;

namespace {

/// What holds for the ports, "number name device baud" a line; or what is wrong.
std::string Ports(const SGivenSettings& file, const SGivenSettings& commandLine) {
    SSettings settings;
    if (const std::string why = Combine(file, commandLine, settings); !why.empty()) {
        return why;
    }
    std::string lines;
    for (const SPort& port : settings.ports) {
        lines += std::to_string(port.number) + " " + port.name + " " + port.device + " " +
                 std::to_string(port.baud) + "\n";
    }
    return lines;
}

std::string PortsOf(const std::vector<std::string>& options) {
    SGivenSettings given;
    for (const std::string& option : options) {
        if (const std::string why = ReadPortOption(option, given); !why.empty()) {
            return why;
        }
    }
    return Ports({}, given);
}

SGivenSettings OnePort() {
    SGivenSettings given;
    given.ports[50].device = "/dev/a";
    return given;
}

/// What is wrong with settings that are well but for what `change` does to them.
std::string WhyWrong(void (*change)(SGivenSettings&)) {
    SGivenSettings given = OnePort();
    change(given);
    SSettings settings;
    return Combine({}, given, settings);
}

} // namespace

TEST(MuxSettings, of_a_port_are_its_device_and_speed) {
    EXPECT_EQ(PortsOf({"50=/dev/ttyUSB0@115200"}), "50 gps_main_boot /dev/ttyUSB0 115200\n");
    EXPECT_EQ(PortsOf({"60=tcp:host:1@9600"}), "60 unknown tcp:host:1 9600\n");
}

TEST(MuxSettings, have_the_daemons_speed_unless_one_is_given) {
    EXPECT_EQ(PortsOf({"52=/dev/ttyUSB1"}), "52 gps_main_diagnostic /dev/ttyUSB1 460800\n");
}

TEST(MuxSettings, list_the_ports_by_their_numbers) {
    EXPECT_EQ(PortsOf({"52=/dev/b@1", "7=/dev/a@2"}),
              "7 ext1 /dev/a 2\n52 gps_main_diagnostic /dev/b 1\n");
}

TEST(MuxSettings, of_a_port_that_are_malformed_are_refused) {
    for (const char* option : {"", "50", "=/dev/a", "x=/dev/a", "0=/dev/a", "-1=/dev/a",
                               "50 =/dev/a", "2147483648=/d"}) {
        EXPECT_THAT(PortsOf({option}), HasSubstr("must be NUMBER=DEVICE")) << option;
    }
    EXPECT_EQ(PortsOf({"50=/dev/a@fast"}), "--port 50=/dev/a@fast: 'fast' is no baud rate");
    EXPECT_EQ(PortsOf({"50=/dev/a@0"}), "--port 50=/dev/a@0: '0' is no baud rate");
    EXPECT_EQ(PortsOf({"50="}), "port 50: no device is named");
    EXPECT_EQ(PortsOf({"50=/dev/a", "50=/dev/b"}), "--port 50=/dev/b: port 50 is given twice");
    EXPECT_EQ(PortsOf({"50=/dev/a", "52=/dev/a"}),
              "port 52: /dev/a is the device of port 50 already");
    EXPECT_THAT(PortsOf({}), HasSubstr("no port is named"));
}

TEST(MuxSettings, of_the_command_line_win_over_those_of_the_file) {
    SGivenSettings file;
    file.ports[50] = {"/dev/file", 9600, "mine"};
    file.ports[52] = {"/dev/other", 19200, {}};
    SGivenSettings commandLine;
    commandLine.ports[50] = {"/dev/line", {}, {}};
    EXPECT_EQ(Ports(file, commandLine),
              "50 mine /dev/line 9600\n52 gps_main_diagnostic /dev/other 19200\n");
    commandLine.ports[50].baud = 115200;
    EXPECT_THAT(Ports(file, commandLine), HasSubstr("50 mine /dev/line 115200\n"));
}

TEST(MuxSettings, have_defaults) {
    SSettings settings;
    ASSERT_EQ(Combine({}, OnePort(), settings), "");
    EXPECT_EQ(settings.socketFolder, "/tmp");
    EXPECT_EQ(settings.mode, 0660U);
    EXPECT_FALSE(settings.group);
    EXPECT_EQ(settings.rpcListen, "127.0.0.1");
    EXPECT_EQ(settings.rpcPort, 5309);
}

TEST(MuxSettings, of_sockets_and_procedures_are_taken_from_either) {
    SGivenSettings file = OnePort();
    file.socketFolder = "/run/a";
    file.mode = "600";
    file.rpcPort = 1;
    SGivenSettings commandLine;
    commandLine.socketFolder = "/run/b";
    commandLine.rpcListen = "0.0.0.0";
    commandLine.group = "0";
    SSettings settings;
    ASSERT_EQ(Combine(file, commandLine, settings), "there is no group '0'");
    commandLine.group = "4711";
    settings = SSettings();
    ASSERT_EQ(Combine(file, commandLine, settings), "");
    EXPECT_EQ(settings.socketFolder, "/run/b");
    EXPECT_EQ(settings.mode, 0600U);
    EXPECT_EQ(settings.group, 4711U);
    EXPECT_EQ(settings.rpcListen, "0.0.0.0");
    EXPECT_EQ(settings.rpcPort, 1);
}

TEST(MuxSettings, that_cannot_be_are_refused) {
    EXPECT_THAT(WhyWrong([](auto& given) { given.mode = "999"; }), HasSubstr("is no mode"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.mode = "1777"; }), HasSubstr("is no mode"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.mode = ""; }), HasSubstr("is no mode"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.group = "no such group"; }),
                HasSubstr("there is no group"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.rpcListen = "localhost"; }),
                HasSubstr("is no IPv4 address"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.rpcPort = 65536; }), HasSubstr("is no TCP port"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.rpcPort = 0; }), HasSubstr("is no TCP port"));
    EXPECT_THAT(WhyWrong([](auto& given) { given.socketFolder = std::string(100, 'x'); }),
                HasSubstr("too long"));
}
