#include "mux/DeviceName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Mux;
using testing::HasSubstr;

namespace {

std::string HostAndPort(const std::string& device) {
    const auto address = ReadTCPAddress(device);
    return address ? address->host + " " + address->port : "none";
}

} // namespace

TEST(DeviceName, of_a_tcp_peer_has_a_host_and_a_port) {
    EXPECT_EQ(HostAndPort("tcp:127.0.0.1:4001"), "127.0.0.1 4001");
    EXPECT_EQ(HostAndPort("tcp:server.example:1"), "server.example 1");
    EXPECT_EQ(HostAndPort("tcp:[2001:db8::7]:65535"), "2001:db8::7 65535");
}

TEST(DeviceName, of_a_tcp_peer_that_is_incomplete_is_none) {
    for (const char* device :
         {"tcp:", "tcp:host", "tcp:host:", "tcp::4001", "tcp:host:0", "tcp:host:65536",
          "tcp:host:40x", "tcp:host:-1", "tcp:2001:db8::7:4001", "tcp:[]:4001", "tcp:a b:4001"}) {
        EXPECT_EQ(HostAndPort(device), "none") << device;
        EXPECT_THAT(WhyNoDevice(device), HasSubstr("tcp:HOST:PORT")) << device;
    }
}

TEST(DeviceName, of_a_serial_line_is_an_absolute_path) {
    EXPECT_EQ(HostAndPort("/dev/ttyUSB0"), "none");
    EXPECT_EQ(WhyNoDevice("/dev/serial/by-path/pci-0000:00:14.0-usb-0:1:1.0-port0"), "");
    EXPECT_EQ(WhyNoDevice("ttyUSB0"), "'ttyUSB0' is neither an absolute path nor tcp:HOST:PORT");
    EXPECT_EQ(WhyNoDevice(""), "no device is named");
    EXPECT_EQ(WhyNoDevice("/dev/tty\n"), "the device has an unprintable character");
    EXPECT_EQ(WhyNoDevice("/" + std::string(5000, 'x')), "the device's path is too long");
}
