#include "mux/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

namespace Mux {

namespace {

constexpr char kDescription[] =
    "Owns serial devices and hands each out to any number of programs, as the Unix\n"
    "socket tty_socket_NUMBER of a logical port. Every program gets every byte that the\n"
    "device sends; what programs write goes to the device in order.";

constexpr char kFooter[] =
    R"(A DEVICE is the absolute path of a serial line or pseudo-terminal, which may appear
later and come and go, or tcp:HOST:PORT. BAUD is 460800 unless set.

Examples:
  corvane-mux --port 50=/dev/ttyUSB0@460800 --port 52=/dev/ttyUSB1
      two serial lines of a receiver, for corvane without arguments
  corvane-mux --config /etc/corvane/mux.conf
      the same from a file
  corvane-mux -c examples/simulator.conf --port 50=tcp:192.0.2.7:4001 -v
      the file's ports, but port 50 from a terminal server; every client is told
  nc -U /tmp/tty_socket_50
      what the receiver sends
  echo '{"jsonrpc":"2.0","id":1,"method":"GetPortDump"}' | nc -q1 127.0.0.1 5309
      how the ports stand

Exit status:
  0  ended by SIGTERM, SIGINT or SIGHUP
  1  not one port could be served
  2  the command line or the configuration file is wrong)";

struct SWords {
    std::string file;
    std::vector<std::string> ports;
    bool isVerbose = false;
};

void AddOptions(CLI::App& app, SWords& words, SGivenSettings& given) {
    app.add_option("-c,--config", words.file, "Read the ports and the settings below from a file")
        ->type_name("FILE");
    app.add_option("--port", words.ports,
                   "Serve a device as a logical port; repeatable. What it says of a port wins "
                   "over the file")
        ->type_name("NUMBER=DEVICE[@BAUD]")
        ->allow_extra_args(false);
    app.add_option("--socket-dir", given.socketFolder, "The folder of the sockets (default /tmp)")
        ->type_name("FOLDER");
    app.add_option("--mode", given.mode, "The sockets' mode (default 660)")->type_name("OCTAL");
    app.add_option("--group", given.group, "The sockets' group (default: the process's own)")
        ->type_name("GROUP");
    app.add_option("--rpc-listen", given.rpcListen,
                   "Where remote procedures are served (default 127.0.0.1)")
        ->type_name("ADDRESS");
    app.add_option("--rpc-port", given.rpcPort, "And on which TCP port (default 5309)")
        ->type_name("PORT");
    app.add_flag("-v,--verbose", words.isVerbose, "Tell of every client that comes or goes");
    app.set_version_flag("--version", "corvane-mux " CORVANE_VERSION, "Print the version");
    app.set_help_flag("-h,--help", "Print this help");
    app.get_formatter()->column_width(38);
    app.footer(kFooter);
}

/// Empty when all is well.
std::string Understand(const SWords& words, SGivenSettings& commandLine, SSettings& settings) {
    for (const std::string& port : words.ports) {
        if (std::string why = ReadPortOption(port, commandLine); !why.empty()) {
            return why;
        }
    }
    SGivenSettings file;
    if (!words.file.empty()) {
        if (std::string why = ReadConfigurationFile(words.file, file); !why.empty()) {
            return why;
        }
    }
    settings.isVerbose = words.isVerbose;
    return Combine(file, commandLine, settings);
}

} // namespace

std::optional<EStatus> ReadCommandLine(int argc, const char* const argv[], SSettings& settings) {
    CLI::App app(kDescription, "corvane-mux");
    SWords words;
    SGivenSettings commandLine;
    AddOptions(app, words, commandLine);
    std::string wrong;
    try {
        app.parse(argc, argv);
        wrong = Understand(words, commandLine, settings);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error); // help and version
            return EStatus::ended;
        }
        wrong = error.what();
    }
    if (wrong.empty()) {
        return std::nullopt;
    }
    std::cerr << "corvane-mux: " << wrong << "\nTry: corvane-mux --help\n";
    return EStatus::usage;
}

} // namespace Mux
