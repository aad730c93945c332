// What the hub is told to do, and the one table from which its command line, its configuration file
// and its documentation are made.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace Hub {

struct SSettings {
    std::string stateFolder = "/var/lib/corvane-hub";

    std::string servicesListen = "127.0.0.1";
    std::int32_t servicesPort = 10001;

    std::string httpListen = "127.0.0.1";
    std::int32_t httpPort = 8080;
    std::string httpToken;
    std::string httpNames;

    std::string gpsdListen = "127.0.0.1";
    std::int32_t gpsdPort = 2947;

    std::string mqttHost;
    std::int32_t mqttPort = 1883;
    std::string mqttDevice;
    std::string mqttUser;
    std::string mqttPasswordFile;
    std::string mqttCAFile;
    std::string mqttCertificate;
    std::string mqttKey;

    std::int32_t historyDays = 30;
    std::int32_t historyMegabytes = 512;

    std::int32_t recordingFileMegabytes = 64;
    std::int32_t recordingFileMinutes = 60;
    std::int32_t recordingMegabytes = 2048;
};

/// A row of the table. Its option on the command line is "--SECTION-KEY" with dashes, those of
/// section "hub" go without the section.
struct SSetting {
    const char* section;
    const char* key;
    std::variant<std::string SSettings::*, std::int32_t SSettings::*> member;
    std::int32_t lowest;  ///< of numbers
    std::int32_t highest; ///< of numbers
    const char* valueName;
    const char* meaning;

    std::string Option() const;
};

/// All settings, by section.
std::span<const SSetting> SettingsTable();

/// The default of a row as it would be written in a file; empty for one that is not set.
std::string DefaultText(const SSetting& row);

/// Each returns what is wrong, the empty text when nothing is.

/// Sets one row's value from its text.
std::string SetFromText(const SSetting& row, const std::string& text, SSettings& settings);

/// Looks at all of them: addresses that could never be listened on.
std::string WhyWrong(const SSettings& settings);

/// Reads a configuration file; a key or section that is not in the table is an error.
std::string ReadSettingsFile(const std::string& path, SSettings& settings);

} // namespace Hub
