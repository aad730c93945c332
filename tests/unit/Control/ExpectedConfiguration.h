// The receiver's configuration as the documentation of its settings has it, for the tests of what
// makes it.
#pragma once

#include <map>
#include <string>
#include <vector>

/// What the settings mean together.
struct SConfigurationChoice {
    bool specialLogs = false;
    bool gpsLogging = false;
    bool isPSRDiffSourceAuto = false;
    bool rtkExtraSafe = false;
    int ionosphereMode = 0; ///< 0 to 3
    std::string referenceFormat = "VARN1";
    std::string positionUpdate = "0.05";
    std::string timeUpdate = "0.05";
    std::string dynamicsType = "air";
};

/// The choice of a section "Corvane" with these texts. Knows only the texts of numbers and booleans
/// that the tests use.
SConfigurationChoice ChoiceOf(const std::map<std::string, std::string>& settings);

/// The configuration file of these texts.
std::string ConfigurationFileOf(const std::map<std::string, std::string>& settings);

/// The word behind "interfacemode usb3".
std::string ExpectedCorrectionMode(const std::string& referenceFormat);

/// The whole list, each command with its "\r\n".
std::vector<std::string> ExpectedCommands(const SConfigurationChoice& choice);
