#include "Control/ExpectedConfiguration.h"

#include <utility>

namespace {

using Commands = std::vector<std::string>;
using Settings = std::map<std::string, std::string>;

void Append(Commands& commands, const Commands& more) {
    commands.insert(commands.end(), more.begin(), more.end());
}

Commands DiagnosticPortLogs(const std::string& timeUpdate) {
    return {
        "log usb2 bestposb ontime 1",      "log usb2 rangeb ontime 0.5",
        "log usb2 trackstatb ontime 1",    "log usb2 cbithinta onchanged",
        "log usb2 ionutcb onchanged",      "log usb2 almanacb onchanged",
        "log usb2 glorawalmb onchanged",   "log usb2 gloclockb onchanged",
        "log usb2 refstationb ontime 10",  "log usb2 refstationinfob onchanged",
        "log usb2 rtksatsb ontime 0.5",    "log usb2 pdpsatsb ontime 0.5",
        "log usb2 psrsatsb ontime 0.5",    "log usb2 versionb once",
        "log usb2 passusb3b onnew",        "log usb2 rawephemb onchanged",
        "log usb2 glorawephemb onchanged", "log usb2 basestationobsb onnew",
        "log usb2 psrposb ontime 0.5",     "log usb2 rtkposb ontime 0.5",
        "log usb2 matchedposb onnew",      "log usb2 matchedsatsb onnew",
        "log usb2 portstatsb ontime 10",   "log usb2 rxstatusb onchanged",
        "log usb2 rtkdatab onnew",         "log usb2 versiona once",
        "log usb2 rxconfiga once",         "log usb2 timeb ontime " + timeUpdate,
        "log usb2 gpgsv ontime 1",         "log usb2 gpgsa ontime 1",
        "log usb2 gpzda ontime 1",         "log usb2 gpgst ontime 1",
    };
}

Commands LogsForRecording() {
    return {
        "LOG VERSIONB ONCE",       "LOG VERSIONA ONCE",           "LOG TRACKSTATB ONTIME 1",
        "LOG PSRXYZB ONTIME 1",    "LOG RAWEPHEMB ONCHANGED",     "LOG RAWWAASFRAMEB ONNEW",
        "LOG IONUTCB ONCHANGED ",  "LOG GLORAWEPHEMB ONCHANGED ", "LOG BASESTATIONOBSB ONNEW",
        "LOG PDPPOSB ONTIME 0.5",  "LOG PSRPOSB ONTIME 0.5",      "LOG BESTPOSB ONTIME 1",
        "LOG CBITHINTA ONCHANGED", "LOG ALMANACB ONCHANGED",      "LOG GLORAWALMB ONCHANGED",
        "LOG GLOCLOCKB ONCHANGED", "LOG PSRSATS ONTIME 0.5",      "LOG RTKSATSB ONTIME 0.5",
        "LOG RTKDATAB ONNEW",      "LOG MATCHEDSATSB ONNEW",      "LOG PORTSTATSB ONTIME 10",
        "LOG RXCONFIGA ONCE",      "LOG PASSUSB3B ONCHANGED",
    };
}

/// The setting's text, or the default of a setting that is absent.
std::string TextOf(const Settings& settings, const std::string& key, const std::string& absent) {
    const auto entry = settings.find(key);
    return entry == settings.end() ? absent : entry->second;
}

int NumberOf(const Settings& settings, const std::string& key) {
    const std::string text = TextOf(settings, key, "0");
    for (int number = -1; number <= 9; ++number) {
        if (text == std::to_string(number)) {
            return number;
        }
    }
    return 0;
}

} // namespace

SConfigurationChoice ChoiceOf(const Settings& settings) {
    SConfigurationChoice choice;
    choice.specialLogs = TextOf(settings, "special_logs", "false") == "true";
    choice.gpsLogging = NumberOf(settings, "gps_logging_enabled") > 0;
    choice.isPSRDiffSourceAuto = TextOf(settings, "psr_diff_source", "none") == "auto";
    choice.rtkExtraSafe = NumberOf(settings, "rtk_extra_safe") != 0;
    const int mode = NumberOf(settings, "ionosphere_mode");
    choice.ionosphereMode = mode < 0 || mode > 3 ? 0 : mode;
    choice.referenceFormat =
        TextOf(settings, "reference_format_real", TextOf(settings, "reference_format", "VARN1"));
    choice.positionUpdate = TextOf(settings, "position_update", "0.05");
    choice.timeUpdate = TextOf(settings, "timeb_update", choice.positionUpdate);
    choice.dynamicsType = TextOf(settings, "dynamics_type", "air");
    return choice;
}

std::string ConfigurationFileOf(const Settings& settings) {
    std::string text = "[Corvane]\n";
    for (const auto& [key, value] : settings) {
        text += key + " = " + value + "\n";
    }
    return text;
}

std::string ExpectedCorrectionMode(const std::string& referenceFormat) {
    const Settings modes = {
        {"VARN1", "CMR"},
        {"RTCM3", "RTCMV3"},
        {"RTCM2", "RTCM"},
        {"NONE", "RTCMV3"},
    };
    return TextOf(modes, referenceFormat, referenceFormat);
}

Commands ExpectedCommands(const SConfigurationChoice& choice) {
    const bool isAnySource = choice.isPSRDiffSourceAuto || choice.specialLogs;
    Commands commands = {
        "unlogall thisport",
        "sbascontrol disable",
        isAnySource ? R"(psrdiffsource AUTO "ANY")" : "psrdiffsource none",
        "rtksource auto",
        "rtkdynamics dynamic",
        "rtknetwork auto",
        choice.rtkExtraSafe ? "rtkqualitylevel extra_safe" : "rtkqualitylevel normal",
        "rtktimeout 60",
    };
    if (!choice.specialLogs) {
        commands.emplace_back("rtkcommand reset");
    }
    const Commands ionosphere = {"auto", "klobuchar", "grid", "auto"};
    Append(commands,
           {
               "setionotype " + ionosphere.at(choice.ionosphereMode),
               "interfacemode usb1 zq2 zq2",
               "interfacemode usb2 novatel novatel",
               "interfacemode usb3 " + ExpectedCorrectionMode(choice.referenceFormat) + " none",
               "com com2 460800 n 8 1 n off on",
               "interfacemode com2 zq2 zq2",
               "log versionb once",
               "log rxstatusb once",
               "log psrdopb ontime 10",
               "log rxstatusb onchanged",
               "log comconfigb ontime 10",
               choice.specialLogs ? "pdpfilter disable" : "pdpfilter enable",
               "pdpmode relative auto",
               "dynamics " + choice.dynamicsType,
               "log pdpxyzb ontime " + choice.positionUpdate,
               "log pdpstatb ontime " + choice.positionUpdate,
               "log rtkxyzb ontime " + choice.positionUpdate,
           });
    Append(commands, DiagnosticPortLogs(choice.timeUpdate));
    if (choice.gpsLogging) {
        Append(commands, LogsForRecording());
    }
    Append(commands, {"LOG CHANCONFIGLISTB ONCE", "LOG LOGLISTB ONCE", "LOG RXCONFIGB ONCE"});
    for (std::string& command : commands) {
        command += "\r\n";
    }
    return commands;
}
