#include "Options.h"

#include "Words.h"

#include "platform/Text.h"
#include "platform/Time.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <limits>

namespace Sim {

namespace {

constexpr char kDescription[] =
    "Simulates a GNSS receiver: takes its commands, and says what its logs would say.";

constexpr char kFooter[] =
    R"(Times are seconds of the receiver's clock since the start; AT[,FOR] is a moment, and how
long it lasts (for ever unless given). Rates are probabilities from 0 to 1.

Examples:
  corvane-sim                                 six ports: /tmp/corvane-sim/com1 ... usb3
  corvane -p -s /tmp/corvane-sim/com1 -b 115200 -c /usr/share/doc/corvane/examples/single-port.conf
  socat -,raw,echo=0 /tmp/corvane-sim/usb1    to talk to it by hand
  corvane-sim --silent 60,30 --bit-errors 1e-5
  corvane-sim --seed 7 --write capture.gps --duration 3600

Exit status:
  0  done, or ended by SIGINT, SIGTERM or SIGHUP
  1  the ports cannot be made, or a file cannot be read or written
  2  the command line is wrong)";

/// Of a capture whose start is not given: a Wednesday noon of the year 2025.
constexpr STime kCaptureStart = {2370, 302'400'000};
constexpr std::uint32_t kMostWeeks = 8192; ///< more than the logs' 16 bits never, and 157 years
constexpr double kMostSeconds = 1e8;
constexpr std::uint32_t kCPUOverload = 1U << 7U;

/// What the options say before it is understood.
struct STexts {
    std::string start;
    std::string silent;
    std::string wrongBaud;
    std::string cpuOverload;
    std::string errorBits;
    std::string statusBits;
    std::vector<std::string> ports;
    double duration = -1.0;
};

Milliseconds AsMilliseconds(double seconds) {
    return static_cast<Milliseconds>(std::llround(seconds * 1000.0));
}

double NumberIn(const std::string& option, std::string_view text, double most) {
    double number = 0.0;
    if (!Core::Utilities::ParseDouble(text, number) || number < 0.0 || number > most) {
        throw CLI::ValidationError(option, "\"" + std::string(text) + "\" is not understood");
    }
    return number;
}

SPeriod PeriodIn(const std::string& option, const std::string& text) {
    const auto parts = Core::Utilities::Split(text, ',', 2);
    SPeriod period;
    period.at = AsMilliseconds(NumberIn(option, parts[0], kMostSeconds));
    if (parts.size() > 1) {
        period.duration = AsMilliseconds(NumberIn(option, parts[1], kMostSeconds));
    }
    return period;
}

/// "0x80@30": bits, and from when on.
SStatusFault BitsIn(const std::string& option, const std::string& text, bool isError) {
    const auto parts = Core::Utilities::Split(text, '@', 2);
    const std::string digits(parts[0]);
    std::size_t end = 0;
    unsigned long long bits = std::numeric_limits<unsigned long long>::max();
    try {
        bits = std::stoull(digits, &end, 0);
    } catch (const std::exception&) {
        end = 0;
    }
    if (end == 0 || end != digits.size() || bits > std::numeric_limits<std::uint32_t>::max()) {
        throw CLI::ValidationError(option, "\"" + digits + "\" is no word of 32 bits");
    }
    SStatusFault fault;
    (isError ? fault.errorBits : fault.statusBits) = static_cast<std::uint32_t>(bits);
    if (parts.size() > 1) {
        fault.at = AsMilliseconds(NumberIn(option, parts[1], kMostSeconds));
    }
    return fault;
}

STime Now() {
    std::uint32_t week = 0;
    double seconds = 0.0;
    Core::GPSTime::FromUnixTime(Core::UnixTime::Now()).AsGPSTime(week, seconds);
    return {week, static_cast<std::uint32_t>(seconds * 1000.0)};
}

STime StartIn(const std::string& text) {
    if (text == "now") {
        return Now();
    }
    const auto parts = Core::Utilities::Split(text, ',', 2);
    if (parts.size() != 2) {
        throw CLI::ValidationError("--start", "it is \"week,seconds\" or \"now\"");
    }
    const double week = NumberIn("--start", parts[0], kMostWeeks);
    const double seconds = NumberIn("--start", parts[1], 604'799.999);
    if (week != std::floor(week)) {
        throw CLI::ValidationError("--start", "the week is a whole number");
    }
    return {static_cast<std::uint32_t>(week), static_cast<std::uint32_t>(AsMilliseconds(seconds))};
}

std::vector<EPort> PortsIn(const std::vector<std::string>& names) {
    std::vector<EPort> ports;
    for (const std::string& name : names) {
        const std::optional<EPort> port = PortNamed(name);
        if (!port) {
            throw CLI::ValidationError("--ports", "there is no port \"" + name + "\"");
        }
        if (std::find(ports.begin(), ports.end(), *port) == ports.end()) {
            ports.push_back(*port);
        }
    }
    return ports;
}

std::string WrongSpeed(const std::string& text) {
    const std::optional<std::int64_t> baud = WholeNumber(text);
    return baud && IsLineSpeed(*baud) ? "" : "\"" + text + "\" is no speed of the receiver";
}

void AddReceiverOptions(CLI::App& app, SOptions& options, STexts& texts) {
    app.add_option("--seed", options.receiver.seed,
                   "What chance decides; the same is the same again")
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--start", texts.start,
                   "The receiver's time at the start: GPS week and seconds, or now (the default; "
                   "with --write week 2370, Wednesday noon)")
        ->type_name("WEEK,SECONDS");
    app.add_option("--speed", options.speed, "How fast its clock runs")
        ->type_name("X")
        ->check(CLI::Range(0.01, 1000.0).description(""))
        ->capture_default_str();
    app.add_option("--model", options.receiver.model, "G has GLONASS, R has RTK")
        ->type_name("TEXT")
        ->capture_default_str();
    app.add_option("--firmware", options.receiver.firmware, "The version it tells")
        ->type_name("TEXT")
        ->capture_default_str();
    app.add_option("--commands", options.commandsFile, "Commands for COM1 at the start, one a line")
        ->type_name("FILE");
    app.add_option("--duration", texts.duration, "End after so much of the receiver's time")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, kMostSeconds).description(""));
}

void AddPortOptions(CLI::App& app, SOptions& options, STexts& texts) {
    app.add_option("--dir", options.folder, "The folder of the ports' devices")
        ->type_name("FOLDER")
        ->group("Ports")
        ->capture_default_str();
    app.add_option("--ports", texts.ports,
                   "Those that have a device, as com1,usb2 (all of them unless given)")
        ->type_name("LIST")
        ->delimiter(',')
        ->group("Ports");
    app.add_option("--baud", options.receiver.baud, "The COM ports' speed after each start")
        ->type_name("N")
        ->check(CLI::Validator(WrongSpeed, ""))
        ->group("Ports")
        ->capture_default_str();
    auto* file = app.add_option("--write", options.captureFile,
                                "Write what COM1 says to this file, at once, instead of making "
                                "ports; - is standard output");
    file->type_name("FILE")->group("Capture");
    app.add_option("--capture", options.captureFolder,
                   "Keep what goes out on each port, with its faults, in a file of its name here")
        ->type_name("FOLDER")
        ->excludes(file)
        ->group("Capture");
}

void AddFaultOptions(CLI::App& app, SOptions& options, STexts& texts) {
    const auto add = [&](const std::string& name, auto& target, const std::string& type,
                         const std::string& meaning) {
        return app.add_option(name, target, meaning)->type_name(type)->group("Faults");
    };
    const auto addRate = [&](const std::string& name, double& rate, const std::string& meaning) {
        add(name, rate, "RATE", meaning)->check(CLI::Range(0.0, 1.0).description(""));
    };
    add("--silent", texts.silent, "AT[,FOR]", "It says nothing on any port");
    add("--wrong-baud", texts.wrongBaud, "AT[,FOR]",
        "Its COM ports run at a speed that nobody else has (from the start unless given)")
        ->expected(0, 1)
        ->default_str("0");
    addRate("--noise", options.faults.noise, "Of a burst of noise in front of a log");
    addRate("--bit-errors", options.faults.bitErrors, "Of a flipped bit");
    addRate("--drop", options.faults.drop, "Of a log that does not come");
    addRate("--duplicate", options.faults.duplicate, "Of a log that comes twice");
    addRate("--cut", options.faults.cut, "Of a log whose end is missing");
    add("--cpu-overload", texts.cpuOverload, "AT[,FOR]", "It has no processor time left");
    add("--error-bits", texts.errorBits, "BITS[@AT]", "Set in the error word, as 0x8000@30");
    add("--status-bits", texts.statusBits, "BITS[@AT]", "Set in the status word");
    add("--firmware-error", options.receiver.firmwareError, "STATUS",
        "With which a firmware load ends, as BAD_SRECORD or BAD_IMAGE_CRC")
        ->check(CLI::Validator(
            [](const std::string& status) {
                return CFirmwareLoad::IsError(status) ? "" : "one of " + CFirmwareLoad::Errors();
            },
            ""));
}

void UnderstandFaults(SOptions& options, const STexts& texts, bool hasWrongBaud) {
    if (!texts.silent.empty()) {
        options.faults.silent = PeriodIn("--silent", texts.silent);
    }
    if (hasWrongBaud) {
        const std::string period = texts.wrongBaud.empty() ? "0" : texts.wrongBaud;
        options.faults.wrongBaud = PeriodIn("--wrong-baud", period);
    }
    if (!texts.cpuOverload.empty()) {
        const SPeriod period = PeriodIn("--cpu-overload", texts.cpuOverload);
        options.receiver.faults.push_back(
            {.at = period.at, .duration = period.duration, .statusBits = kCPUOverload});
    }
    if (!texts.errorBits.empty()) {
        options.receiver.faults.push_back(BitsIn("--error-bits", texts.errorBits, true));
    }
    if (!texts.statusBits.empty()) {
        options.receiver.faults.push_back(BitsIn("--status-bits", texts.statusBits, false));
    }
}

void Understand(SOptions& options, const STexts& texts, const CLI::App& app) {
    const bool isCapture = !options.captureFile.empty();
    if (isCapture && texts.duration < 0.0) {
        throw CLI::ValidationError("--write", "needs --duration");
    }
    if (texts.duration >= 0.0) {
        options.duration = AsMilliseconds(texts.duration);
    }
    if (!texts.start.empty()) {
        options.receiver.start = StartIn(texts.start);
    } else {
        options.receiver.start = isCapture ? kCaptureStart : Now();
    }
    if (!texts.ports.empty()) {
        options.ports = PortsIn(texts.ports);
    }
    UnderstandFaults(options, texts, app.count("--wrong-baud") > 0);
}

} // namespace

std::optional<SOptions> ParseOptions(int argc, const char* const argv[], int& status) {
    constexpr int kWrong = 2;
    constexpr std::size_t kFirstColumn = 30;
    SOptions options;
    STexts texts;
    bool isQuiet = false;
    bool isVerbose = false;
    CLI::App app(kDescription, "corvane-sim");
    app.footer(kFooter);
    app.get_formatter()->column_width(kFirstColumn);
    AddReceiverOptions(app, options, texts);
    AddPortOptions(app, options, texts);
    AddFaultOptions(app, options, texts);
    auto* quiet = app.add_flag("-q,--quiet", isQuiet, "Print errors only");
    app.add_flag("-v,--verbose", isVerbose, "Print commands, answers and losses")->excludes(quiet);
    app.set_version_flag("--version", "corvane-sim " CORVANE_VERSION, "Print the version");
    app.set_help_flag("-h,--help", "Print this help");
    try {
        app.parse(argc, argv);
        Understand(options, texts, app);
    } catch (const CLI::ParseError& error) {
        const bool isAsked = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
        app.exit(error);
        status = isAsked ? 0 : kWrong;
        return std::nullopt;
    }
    options.verbosity = isQuiet ? 0 : isVerbose ? 2 : 1;
    return options;
}

} // namespace Sim
