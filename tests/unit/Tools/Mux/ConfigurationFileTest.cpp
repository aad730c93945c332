#include "Support/TemporaryFolder.h"
#include "mux/Settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Mux;
using testing::EndsWith;

namespace {

class MuxConfigurationFile : public testing::Test {
protected:
    std::string Read(const std::string& text) {
        return ReadConfigurationFile(m_folder.Write("mux.conf", text), m_given);
    }

    CTemporaryFolder m_folder;
    SGivenSettings m_given;
};

} // namespace

TEST_F(MuxConfigurationFile, names_ports_with_device_speed_and_name) {
    ASSERT_EQ(Read("# two lines\n[port 50]\ndevice = /dev/a\nbaud = 9600\nname = x\n"
                   "[port 52]\ndevice=/dev/b@7\n"),
              "");
    ASSERT_EQ(m_given.ports.size(), 2U);
    EXPECT_EQ(m_given.ports[50].device, "/dev/a");
    EXPECT_EQ(m_given.ports[50].baud, 9600);
    EXPECT_EQ(m_given.ports[50].name, "x");
    EXPECT_EQ(m_given.ports[52].device, "/dev/b@7");
    EXPECT_FALSE(m_given.ports[52].baud);
    EXPECT_FALSE(m_given.ports[52].name);
}

TEST_F(MuxConfigurationFile, sets_where_and_for_whom_ports_are_served) {
    ASSERT_EQ(Read("[mux]\nsocket_dir=/run\nmode=600\ngroup=users\nrpc_listen=0.0.0.0\n"
                   "rpc_port=7\n"),
              "");
    EXPECT_EQ(m_given.socketFolder, "/run");
    EXPECT_EQ(m_given.mode, "600");
    EXPECT_EQ(m_given.group, "users");
    EXPECT_EQ(m_given.rpcListen, "0.0.0.0");
    EXPECT_EQ(m_given.rpcPort, 7);
    EXPECT_TRUE(m_given.ports.empty());
}

TEST_F(MuxConfigurationFile, that_is_missing_or_none_is_told) {
    EXPECT_THAT(ReadConfigurationFile(m_folder.Path("none"), m_given),
                EndsWith("none: No such file or directory"));
    EXPECT_THAT(ReadConfigurationFile(m_folder.Path(), m_given), EndsWith(": not a file"));
}

TEST_F(MuxConfigurationFile, with_what_is_not_understood_is_told_where) {
    EXPECT_THAT(Read("[ports]\n"), EndsWith("mux.conf: [ports]: there is no such section; there "
                                            "are [mux] and [port NUMBER]"));
    EXPECT_THAT(Read("[port x]\n"), EndsWith("[port x]: 'x' is no number of a port"));
    EXPECT_THAT(Read("[port 50]\nbuad=1\n"),
                EndsWith("[port 50]: there is no key 'buad'; there are device, baud and name"));
    EXPECT_THAT(Read("[port 50]\nbaud=fast\n"), EndsWith("[port 50]: 'fast' is no baud rate"));
    EXPECT_THAT(Read("[mux]\nrpc_port=x\n"), EndsWith("[mux]: 'x' is no TCP port"));
    EXPECT_THAT(Read("[mux]\nsocket=x\n"),
                EndsWith("[mux]: there is no key 'socket'; there are socket_dir, mode, group, "
                         "rpc_listen and rpc_port"));
}
