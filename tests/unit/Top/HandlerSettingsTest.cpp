#include "HandlerSettings.h"

#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

class Settings : public testing::Test {
protected:
    void WithDatabase(const std::string& text) {
        m_config = std::make_unique<CConfig>(m_folder.Write("corvane.conf", text));
    }

    /// Reads the database and then the command line.
    HandlerSettings& With(std::initializer_list<std::string> arguments) {
        m_settings = std::make_unique<HandlerSettings>(*m_config);
        std::vector<std::string> texts{"corvane"};
        texts.insert(texts.end(), arguments);
        std::vector<char*> argv;
        for (std::string& text : texts) {
            argv.push_back(text.data());
        }
        argv.push_back(nullptr);
        // 0 makes the C library forget an earlier scan.
        optind = 0;
        testing::internal::CaptureStderr();
        m_isParsed = m_settings->ParseOptions(static_cast<int>(texts.size()), argv.data());
        m_errors = testing::internal::GetCapturedStderr();
        return *m_settings;
    }

    CTemporaryFolder m_folder;
    std::unique_ptr<CConfig> m_config =
        std::make_unique<CConfig>(m_folder.Path("no-such-file.conf"));
    std::unique_ptr<HandlerSettings> m_settings;
    bool m_isParsed = false;
    std::string m_errors;
};

} // namespace

TEST_F(Settings, without_arguments_and_database_are_port_50_of_the_multiplexer) {
    const HandlerSettings& settings = With({});
    EXPECT_TRUE(m_isParsed);
    EXPECT_EQ(settings.IOType(), 3);
    EXPECT_TRUE(settings.IsPortMultiplexer());
    EXPECT_EQ(settings.Device(), "50");
    EXPECT_EQ(settings.BaudRate(), 460800);
    EXPECT_EQ(settings.BreakoutMode(), 3);
    EXPECT_EQ(settings.ConfigurationFile(), "");
    EXPECT_FALSE(settings.PDPFilterReset());
    EXPECT_EQ(settings.ReadTimeout(), 100);
    EXPECT_EQ(settings.ReadSize(), 1024);
    EXPECT_TRUE(settings.ElevatePriority());
    EXPECT_FALSE(settings.DisplayPackets());
    EXPECT_EQ(&settings.Config(), m_config.get());
}

TEST_F(Settings, come_from_the_database) {
    WithDatabase("[Corvane]\ninput_filename = /dev/ttyS7\nio_type = 1\nconfiguration_file = /c\n"
                 "breakout_mode = 2\nbaud_rate = 9600\npdp_filter_reset = yes\n");
    const HandlerSettings& settings = With({});
    EXPECT_EQ(settings.Device(), "/dev/ttyS7");
    EXPECT_TRUE(settings.IsSerial());
    EXPECT_EQ(settings.ConfigurationFile(), "/c");
    EXPECT_EQ(settings.BreakoutMode(), 2);
    EXPECT_EQ(settings.BaudRate(), 9600);
    EXPECT_TRUE(settings.PDPFilterReset());
}

TEST_F(Settings, of_the_command_line_override_the_database) {
    WithDatabase("[Corvane]\ninput_filename = 50\nbaud_rate = 9600\nbreakout_mode = 2\n");
    const HandlerSettings& settings = With({"-s", "/dev/ttyUSB1", "-b", "57600"});
    EXPECT_TRUE(settings.IsSerial());
    EXPECT_EQ(settings.Device(), "/dev/ttyUSB1");
    EXPECT_EQ(settings.BaudRate(), 57600);
    EXPECT_EQ(settings.BreakoutMode(), 2);
}

TEST_F(Settings, name_each_kind_of_source_by_an_option) {
    EXPECT_TRUE(With({"-f", "a"}).IsRawFile());
    EXPECT_TRUE(With({"-s", "a"}).IsSerial());
    EXPECT_TRUE(With({"-r", "a"}).IsReplay());
    EXPECT_TRUE(With({"-k", "7 apples"}).IsPortMultiplexer());
    EXPECT_EQ(m_settings->Device(), "7 apples");
}

TEST_F(Settings, take_the_last_of_several_sources) {
    EXPECT_TRUE(With({"-s", "a", "-k", "9", "-f", "last"}).IsRawFile());
    EXPECT_EQ(m_settings->Device(), "last");
}

TEST_F(Settings, take_the_other_options) {
    const HandlerSettings& settings =
        With({"-p", "-d", "-c", "file", "-t", "250", "-z", "4096", "-u", "zq2"});
    EXPECT_FALSE(settings.ElevatePriority());
    EXPECT_TRUE(settings.DisplayPackets());
    EXPECT_EQ(settings.ConfigurationFile(), "file");
    EXPECT_EQ(settings.ReadTimeout(), 250);
    EXPECT_EQ(settings.ReadSize(), 4096);
    EXPECT_EQ(settings.BreakoutMode(), 1);
}

TEST_F(Settings, know_four_breakout_modes) {
    EXPECT_EQ(With({"-u", "none"}).BreakoutMode(), 0);
    EXPECT_EQ(With({"-u", "zq2"}).BreakoutMode(), 1);
    EXPECT_EQ(With({"-u", "break"}).BreakoutMode(), 2);
    EXPECT_EQ(With({"-u", "softbreak"}).BreakoutMode(), 3);
}

TEST_F(Settings, refuse_another_breakout_mode_and_leave_the_mode_as_it_was) {
    for (const std::string mode : {"Break", "", "soft"}) {
        EXPECT_EQ(With({"-u", mode}).BreakoutMode(), 3);
        EXPECT_FALSE(m_isParsed);
        EXPECT_EQ(m_errors, "Unrecognised argument \"" + mode + "\" for 'u'\n\n");
    }
}

TEST_F(Settings, refuse_an_unknown_option_by_its_character_code) {
    With({"-x"});
    EXPECT_FALSE(m_isParsed);
    EXPECT_EQ(m_errors, "Unrecognised argument \"120\"\n\n");
    With({"-d", "-h"});
    EXPECT_FALSE(m_isParsed);
    EXPECT_EQ(m_errors, "Unrecognised argument \"104\"\n\n");
    With({"--version"});
    EXPECT_FALSE(m_isParsed);
    EXPECT_EQ(m_errors, "Unrecognised argument \"45\"\n\n");
}

TEST_F(Settings, refuse_an_option_without_its_argument) {
    With({"-f"});
    EXPECT_FALSE(m_isParsed);
    EXPECT_EQ(m_errors, "Unrecognised argument \"102\"\n\n");
}

TEST_F(Settings, read_numbers_as_far_as_they_go) {
    EXPECT_EQ(With({"-b", "9600baud"}).BaudRate(), 9600);
    EXPECT_EQ(With({"-b", "fast"}).BaudRate(), 0);
    EXPECT_EQ(With({"-z", "-5"}).ReadSize(), -5);
    EXPECT_EQ(With({"-z", "0x10"}).ReadSize(), 0);
    EXPECT_EQ(With({"-z", "99999999999"}).ReadSize(), 2147483647);
}

TEST(Usage, is_printed_as_it_always_was) {
    testing::internal::CaptureStdout();
    PrintUsage("bin/corvane");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Usage: \n"
              "bin/corvane [options]\n"
              "\n"
              "Command Line Options:\n"
              "\n"
              "I/O Options\n"
              "-f <NormalFile>     Raw file mode (raw file I/O)\n"
              "-s <serialPort>     Serial port (allows serial port configuration)\n"
              "-r <ReplayFile>     Replay mode (varn binary logs)\n"
              "-k <quentaNumber>   Quenta (with quenta number)\n"
              "\n"
              "Configuration options\n"
              "-b <baudrate>       Serial Baud Rate\n"
              "-c <config file>    Novatel Configuration file\n"
              "-t <timeout>        Serial read timeout, in ms\n"
              "-z <size>           Serial/File read size\n"
              "-u <mode>           Breakout mode, parameter = {none|break|zq2|softbreak} [Note 1]\n"
              "-p                  Do not elevate priority (e.g. no root access)\n"
              "-h                  Displays this help menu\n"
              "-d                  Display basic information on packets received to screen\n"
              "\n"
              "If no parameters are given, the program will extract arguments from the config "
              "database\n"
              "\n"
              "[Note 1] ZQ2 breakout only changes port 2 whilst port 1 remains undisturbed\n");
}
