#include "hub/CommandLine.h"

#include "platform/Text.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

namespace Hub {

namespace {

constexpr char kDefaultFile[] = "/etc/corvane/hub.conf";

constexpr char kDescription[] =
    "The controller's services on one ordinary Linux machine: takes what corvane\n"
    "publishes and shows it on a web dashboard, to clients of gpsd, to Prometheus\n"
    "and to an MQTT broker; keeps a history, and recordings of the raw data.";

constexpr char kFooter[] =
    R"(Each option is also a key of the settings file: --http-port 80 is "port = 80" in
section [http]. The file is /etc/corvane/hub.conf unless another one is named.

Examples:
  corvane-hub --state-dir ~/corvane
      the dashboard on http://127.0.0.1:8080/, everything kept in that folder
  corvane-hub --config hub.conf --http-listen 0.0.0.0
      also for other machines: http://THIS-MACHINE:8080/?token=SECRET
      ("token = SECRET" in section [http] of hub.conf; all see a command line)
  cgps localhost
      the position in a terminal, with a client of gpsd
  curl http://127.0.0.1:8080/healthz
      whether positions are live

Exit status:
  0  ended by SIGTERM, SIGINT or SIGHUP
  1  a file that the settings name is of no use
  2  the command line or the settings file is wrong)";

/// So wide is the column of the options, and what is left of a terminal's 80 characters.
constexpr std::size_t kOptionsWidth = 36;
constexpr std::size_t kMeaningsWidth = 43;

/// The text in lines that are not longer than the column of the meanings.
std::string Wrapped(const std::string& text) {
    std::string lines;
    std::size_t length = 0;
    for (const std::string_view word : Core::Utilities::Split(text, ' ')) {
        const bool isFirst = lines.empty();
        const bool fits = length + 1 + word.size() <= kMeaningsWidth;
        lines.append(isFirst ? "" : fits ? " " : "\n").append(word);
        length = word.size() + (isFirst || !fits ? 0 : length + 1);
    }
    return lines;
}

/// What was said on the command line, by row of the table.
struct SWords {
    std::string file;
    std::vector<std::string> values = std::vector<std::string>(SettingsTable().size());
    std::vector<CLI::Option*> options;
};

void AddOptions(CLI::App& app, SWords& words) {
    app.add_option("-c,--config", words.file, "Read the settings from this file")
        ->type_name("FILE");
    for (std::size_t i = 0; i < SettingsTable().size(); ++i) {
        const SSetting& row = SettingsTable()[i];
        const std::string standard = DefaultText(row);
        std::string meaning = row.meaning;
        if (!standard.empty()) {
            meaning += " (default " + standard + ")";
        }
        words.options.push_back(app.add_option(row.Option(), words.values[i], Wrapped(meaning))
                                    ->type_name(row.valueName));
    }
    app.set_version_flag("--version", "corvane-hub " CORVANE_VERSION, "Print the version");
    app.set_help_flag("-h,--help", "Print this help");
    app.get_formatter()->column_width(kOptionsWidth);
    app.footer(kFooter);
}

/// Empty when all is well.
std::string Understand(SWords& words, SSettings& settings) {
    if (words.file.empty() && access(kDefaultFile, F_OK) == 0) {
        words.file = kDefaultFile;
    }
    if (!words.file.empty()) {
        if (std::string why = ReadSettingsFile(words.file, settings); !why.empty()) {
            return why;
        }
    }
    for (std::size_t i = 0; i < words.values.size(); ++i) {
        const SSetting& row = SettingsTable()[i];
        if (words.options[i]->count() > 0) {
            const std::string why = SetFromText(row, words.values[i], settings);
            if (!why.empty()) {
                return row.Option() + ": " + why;
            }
        }
    }
    return WhyWrong(settings);
}

} // namespace

std::optional<EStatus> ReadCommandLine(int argc, const char* const argv[], SSettings& settings) {
    CLI::App app(kDescription, "corvane-hub");
    SWords words;
    AddOptions(app, words);
    std::string wrong;
    try {
        app.parse(argc, argv);
        wrong = Understand(words, settings);
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
    std::cerr << "corvane-hub: " << wrong << "\nTry: corvane-hub --help\n";
    return EStatus::usage;
}

} // namespace Hub
