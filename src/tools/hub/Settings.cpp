#include "hub/Settings.h"

#include "platform/Config.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace Hub {

namespace {

constexpr std::int32_t kMaxPort = 65535;
constexpr std::int32_t kMaxMegabytes = 1'000'000;

// clang-format off
constexpr std::array kTable = {
    SSetting{"hub", "state_dir", &SSettings::stateFolder, 0, 0, "FOLDER",
             "Where the history, the recordings and the logging categories are kept"},

    SSetting{"services", "listen", &SSettings::servicesListen, 0, 0, "ADDRESS",
             "Where programs tell what they publish"},
    SSetting{"services", "port", &SSettings::servicesPort, 0, kMaxPort, "PORT",
             "And on which TCP port; 0 lets the system choose"},

    SSetting{"http", "listen", &SSettings::httpListen, 0, 0, "ADDRESS",
             "Where dashboard, metrics and JSON interface are served"},
    SSetting{"http", "port", &SSettings::httpPort, 0, kMaxPort, "PORT",
             "And on which TCP port; 0 lets the system choose"},
    SSetting{"http", "token", &SSettings::httpToken, 0, 0, "TOKEN",
             "What a browser or program must present to read anything"},
    SSetting{"http", "names", &SSettings::httpNames, 0, 0, "NAMES",
             "Further names by which the page may be asked for, between commas"},

    SSetting{"gpsd", "listen", &SSettings::gpsdListen, 0, 0, "ADDRESS",
             "Where clients of gpsd are served"},
    SSetting{"gpsd", "port", &SSettings::gpsdPort, 0, kMaxPort, "PORT",
             "And on which TCP port; 0 lets the system choose"},

    SSetting{"mqtt", "host", &SSettings::mqttHost, 0, 0, "HOST",
             "The MQTT broker to publish to; none unless set"},
    SSetting{"mqtt", "port", &SSettings::mqttPort, 1, kMaxPort, "PORT",
             "Its TCP port"},
    SSetting{"mqtt", "device", &SSettings::mqttDevice, 0, 0, "NAME",
             "This machine's part of the topics; its host name unless set"},
    SSetting{"mqtt", "user", &SSettings::mqttUser, 0, 0, "USER",
             "The user to the broker"},
    SSetting{"mqtt", "password_file", &SSettings::mqttPasswordFile, 0, 0, "FILE",
             "The file whose first line is the user's password"},
    SSetting{"mqtt", "ca_file", &SSettings::mqttCAFile, 0, 0, "FILE",
             "The certificates that the broker's must come from; turns TLS on"},
    SSetting{"mqtt", "certificate", &SSettings::mqttCertificate, 0, 0, "FILE",
             "The certificate that the broker is shown"},
    SSetting{"mqtt", "key", &SSettings::mqttKey, 0, 0, "FILE",
             "And its private key"},

    SSetting{"history", "days", &SSettings::historyDays, 0, 36500, "DAYS",
             "How long the history reaches back; 0 keeps none"},
    SSetting{"history", "megabytes", &SSettings::historyMegabytes, 1, kMaxMegabytes, "MB",
             "And how large it may become"},

    SSetting{"recording", "file_megabytes", &SSettings::recordingFileMegabytes, 1, kMaxMegabytes, "MB",
             "A recording of raw blocks is ended at this size"},
    SSetting{"recording", "file_minutes", &SSettings::recordingFileMinutes, 1, 525600, "MINUTES",
             "Or when it is this old"},
    SSetting{"recording", "megabytes", &SSettings::recordingMegabytes, 1, kMaxMegabytes, "MB",
             "The oldest recordings go when all of them are larger than this"},
};
// clang-format on

/// A missing file counts as an empty one for the configuration database; not here, where it was
/// named.
std::string WhyUnreadable(const std::string& path) {
    if (access(path.c_str(), R_OK) != 0) {
        return std::strerror(errno);
    }
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored) ? "" : "not a regular file";
}

const SSetting* Find(const std::string& section, const std::string& key) {
    const auto found = std::find_if(kTable.begin(), kTable.end(), [&](const SSetting& row) {
        return row.section == section && row.key == key;
    });
    return found == kTable.end() ? nullptr : &*found;
}

std::string SetNumber(const SSetting& row, const std::string& text, std::int32_t& value) {
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        number < row.lowest || number > row.highest) {
        return "'" + text + "' is no number from " + std::to_string(row.lowest) + " to " +
               std::to_string(row.highest);
    }
    value = number;
    return {};
}

} // namespace

std::string SSetting::Option() const {
    std::string option =
        std::string("--") + (section == std::string("hub") ? "" : section + std::string("-")) + key;
    std::replace(option.begin(), option.end(), '_', '-');
    return option;
}

std::span<const SSetting> SettingsTable() {
    return kTable;
}

std::string DefaultText(const SSetting& row) {
    const SSettings defaults;
    if (const auto* const number = std::get_if<std::int32_t SSettings::*>(&row.member)) {
        return std::to_string(defaults.**number);
    }
    return defaults.*std::get<std::string SSettings::*>(row.member);
}

std::string SetFromText(const SSetting& row, const std::string& text, SSettings& settings) {
    if (const auto* const number = std::get_if<std::int32_t SSettings::*>(&row.member)) {
        return SetNumber(row, text, settings.**number);
    }
    settings.*std::get<std::string SSettings::*>(row.member) = text;
    return {};
}

std::string WhyWrong(const SSettings& settings) {
    for (const SSetting& row : kTable) {
        const auto* const member = std::get_if<std::string SSettings::*>(&row.member);
        // Names are for the web server alone: the other two listen on what is said in numbers.
        const bool isAddress =
            row.key == std::string_view("listen") && row.section != std::string_view("http");
        in_addr ignored{};
        if (member != nullptr && isAddress &&
            ::inet_pton(AF_INET, (settings.**member).c_str(), &ignored) != 1) {
            return row.Option() + ": '" + settings.**member +
                   "' is no IPv4 address in numbers, such as 127.0.0.1";
        }
    }
    return {};
}

std::string ReadSettingsFile(const std::string& path, SSettings& settings) {
    if (std::string why = WhyUnreadable(path); !why.empty()) {
        return path + ": " + why;
    }
    CConfig file(path);
    for (const SSetting& row : kTable) {
        if (!file.GetString("", row.key, "").empty()) {
            return path + ": " + row.key + ": it stands before the first section";
        }
    }
    for (const std::string& section : file.GetSections()) {
        for (const auto& [key, value] :
             file.GetSection(section).value_or(std::map<std::string, std::string>())) {
            const SSetting* const row = Find(section, key);
            std::string why =
                row == nullptr ? "there is no such setting" : SetFromText(*row, value, settings);
            if (!why.empty()) {
                return (path + ": [")
                    .append(section)
                    .append("] ")
                    .append(key)
                    .append(": ")
                    .append(why);
            }
        }
    }
    return {};
}

} // namespace Hub
