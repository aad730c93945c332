#include "HandlerSettings.h"

#include "platform/DebugPrint.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <unistd.h>

namespace {

struct SBreakoutMode {
    const char* name;
    std::int32_t number;
};

constexpr SBreakoutMode kBreakoutModes[] = {
    {"zq2", 1},
    {"none", 0},
    {"break", 2},
    {"softbreak", 3},
};

/// The decimal number at the start of the text, 0 without one; what follows it is ignored.
std::int32_t Decimal(const char* text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long number = std::strtoll(text, nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

} // namespace

HandlerSettings::HandlerSettings(CConfig& config) : m_config(config) {
    static constexpr char kSection[] = "Corvane";
    m_device = config.GetString(kSection, "input_filename", "50");
    m_ioType = config.GetInteger(kSection, "io_type", portMultiplexer);
    m_configurationFile = config.GetString(kSection, "configuration_file", "");
    m_breakoutMode = config.GetInteger(kSection, "breakout_mode", 3);
    m_baudRate = config.GetInteger(kSection, "baud_rate", 460800);
    m_pdpFilterReset = config.GetBoolean(kSection, "pdp_filter_reset", false);
}

bool HandlerSettings::ParseOptions(int argc, char* const argv[]) {
    opterr = 0;
    for (int option = getopt(argc, argv, "dpf:s:r:k:b:c:t:z:u:"); option != -1;
         option = getopt(argc, argv, "dpf:s:r:k:b:c:t:z:u:")) {
        if (!ApplyOption(option, optarg)) {
            return false;
        }
    }
    return true;
}

bool HandlerSettings::ApplyOption(int option, const char* argument) {
    switch (option) {
    case 'f':
        SetSource(argument, rawFile);
        return true;
    case 's':
        SetSource(argument, serialPort);
        return true;
    case 'r':
        SetSource(argument, replay);
        return true;
    case 'k':
        SetSource(argument, portMultiplexer);
        return true;
    case 'b':
        m_baudRate = Decimal(argument);
        return true;
    case 'c':
        m_configurationFile = argument;
        return true;
    case 't':
        m_readTimeout = Decimal(argument);
        return true;
    case 'z':
        m_readSize = Decimal(argument);
        return true;
    case 'u':
        return SetBreakoutMode(argument);
    case 'p':
        m_elevatePriority = false;
        return true;
    case 'd':
        m_displayPackets = true;
        return true;
    default:
        // The option's character code, not the character; kept: scripts rely on it.
        deprintf("Unrecognised argument \"%d\"\n\n", optopt);
        return false;
    }
}

void HandlerSettings::SetSource(const char* device, EIOType ioType) {
    m_device = device;
    m_ioType = ioType;
}

bool HandlerSettings::SetBreakoutMode(const std::string& mode) {
    for (const SBreakoutMode& known : kBreakoutModes) {
        if (mode == known.name) {
            m_breakoutMode = known.number;
            return true;
        }
    }
    deprintf("Unrecognised argument \"%s\" for 'u'\n\n", mode.c_str());
    return false;
}

void PrintUsage(const char* program) {
    std::printf("Usage: \n%s [options]\n", program);
    std::fputs(
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
        "[Note 1] ZQ2 breakout only changes port 2 whilst port 1 remains undisturbed\n",
        stdout);
}
