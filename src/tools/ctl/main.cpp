// corvanectl: asks about and steers the daemon from a shell, and changes its configuration.

#include "ctl/Commands.h"
#include "ctl/Values.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Ctl;

constexpr char kDescription[] =
    "Asks about and steers corvane, the daemon that owns a GNSS receiver.";

constexpr char kFooter[] =
    R"(Every command has its own help with examples: corvanectl COMMAND --help

Examples:
  corvanectl tracking --watch            what the receiver tracks, as it changes
  corvanectl sbas on                     a setting, which is shown as it is then
  corvanectl nmea GPGGA 5Hz              have the receiver send a sentence
  corvanectl --json receiver             for programs
  corvanectl config set baud_rate 115200

Exit status:
  0  done
  1  the daemon or the receiver refused, or it failed
  2  the command line is wrong
  3  the daemon cannot be reached, or does not answer)";

constexpr double kLongestTimeout = 86'400.0; // seconds
constexpr int kFirstColumn = 26;

std::string WhyNoPort(const std::string& argument) {
    const std::optional<std::int32_t> port = ParseWhole(argument);
    return port && *port >= 1 && *port <= 65535 ? ""
                                                : "\"" + argument + "\" is no port, 1 to 65535";
}

std::string WhyNoTimeout(const std::string& argument) {
    const std::optional<double> seconds = ParseNumber(argument);
    return seconds && *seconds >= 0.001 && *seconds <= kLongestTimeout
               ? ""
               : "\"" + argument + "\" are no seconds, 0.001 to 86400";
}

void AddOptions(CLI::App& app, SDaemonOptions& daemon, bool& isJSON) {
    app.add_option("--host", daemon.host, "The daemon's machine, a name or an IPv4 address")
        ->type_name("HOST")
        ->capture_default_str();
    app.add_option("--port", daemon.port, "The daemon's port")
        ->type_name("PORT")
        ->check(Check(WhyNoPort))
        ->capture_default_str();
    app.add_option("--timeout", daemon.timeout, "How long to wait for each answer")
        ->type_name("SECONDS")
        ->check(Check(WhyNoTimeout))
        ->capture_default_str();
    app.add_flag("--json", isJSON, "One JSON document on standard output, also of an error");
    app.set_version_flag("--version", "corvanectl " CORVANE_VERSION, "Print the version");
    app.set_help_flag("-h,--help", "Print this help");
}

void AddCommands(CLI::App& app, SContext& context) {
    // Options of every command may stand behind its name.
    app.fallthrough();
    app.require_subcommand(1);
    app.get_formatter()->column_width(kFirstColumn);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Positionals", "Arguments");
    app.get_formatter()->label("REQUIRED", "");
    AddLookingCommands(app, context);
    AddTrackingCommand(app, context);
    AddSettingCommands(app, context);
    AddReferencePositionCommand(app, context);
    AddActionCommands(app, context);
    AddFirmwareCommands(app, context);
    AddConfigCommands(app, context);
    AddRecordCommands(app, context);
    AddCallCommands(app, context);
}

/// As it is written.
std::string NameOf(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return (parent == nullptr ? "" : NameOf(*parent) + " ") + command.get_name();
}

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

/// What is wrong where a command is expected; empty when it is something else.
std::string WhyNoCommand(const CLI::App& app, const CLI::App& command,
                         const CLI::ParseError& error) {
    const std::vector<std::string> names = CommandNames(command);
    const std::vector<std::string> rest = app.remaining(true);
    if (names.empty()) {
        return "";
    }
    if (!rest.empty() && !rest.front().starts_with('-')) {
        const std::string nearest = Nearest(rest.front(), names);
        return "there is no command \"" + NameOf(command) + " " + rest.front() + "\"; " +
               (nearest.empty() ? "there are: " + Joined(names) : "is " + nearest + " meant?");
    }
    if (!rest.empty()) {
        return "there is no option " + rest.front();
    }
    const bool isMissing = error.get_name() == "RequiredError";
    return isMissing ? "a command is missing; there are: " + Joined(names) : "";
}

void ExplainUsage(CLI::App& app, const CLI::ParseError& error, COutput& output) {
    const CLI::App& command = Innermost(app);
    const std::string reason = WhyNoCommand(app, command, error);
    output.Fail(EStatus::usage, reason.empty() ? error.what() : reason,
                "Try: " + NameOf(command) + " --help");
}

/// As the parser wants them, the last one first. It would take an argument "[a,b]" of a call apart.
std::vector<std::string> Arguments(int argc, char* const argv[]) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto call = std::find(arguments.begin(), arguments.end(), "call");
    for (auto argument = call; argument != arguments.end(); ++argument) {
        if (argument->starts_with('[') && argument->ends_with(']')) {
            argument->insert(0, kTextMark);
        }
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

/// Known before the command line is understood, since that may fail.
bool IsJSONWanted(int argc, char* const argv[]) {
    return std::any_of(argv, argv + argc,
                       [](const char* argument) { return argument == std::string_view("--json"); });
}

int Run(int argc, char* argv[]) {
    SDaemonOptions options;
    COutput output;
    CDaemon daemon(options, output);
    SContext context{output, daemon, {}};
    output.SetJSON(IsJSONWanted(argc, argv));
    CLI::App app(kDescription, "corvanectl");
    bool isJSON = false;
    AddOptions(app, options, isJSON);
    AddCommands(app, context);
    app.footer(kFooter);
    try {
        app.parse(Arguments(argc, argv));
        output.SetJSON(isJSON);
        context.action();
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error); // help and version
        } else {
            ExplainUsage(app, error, output);
        }
    }
    return output.Finish();
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        COutput().Note(error.what());
        return static_cast<int>(EStatus::refused);
    }
}
