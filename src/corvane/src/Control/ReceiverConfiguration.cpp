#include "Control/ReceiverConfiguration.h"

#include <string_view>

namespace {

using Input = const SConfigurationInput&;
using Condition = bool (*)(Input);
using Argument = std::string (*)(Input);

bool Always(Input) {
    return true;
}
bool ChannelConfigurationIsSelectable(Input input) {
    return input.desiredChannelConfiguration && CanSelectChannelConfiguration();
}
bool SpecialLogsAreOff(Input input) {
    return !input.settings.specialLogs;
}
bool GPSLoggingIsOn(Input input) {
    return input.settings.gpsLoggingEnabled;
}

std::string DesiredChannelConfiguration(Input input) {
    return std::to_string(*input.desiredChannelConfiguration);
}
std::string PSRDifferentialSource(Input input) {
    return input.settings.isPSRDiffSourceAuto || input.settings.specialLogs ? "AUTO \"ANY\""
                                                                            : "none";
}
std::string RTKQualityLevel(Input input) {
    return input.settings.rtkExtraSafe ? "extra_safe" : "normal";
}
std::string IonosphereType(Input input) {
    switch (input.settings.ionosphereMode) {
    case 1:
        return "klobuchar";
    case 2:
        return "grid";
    default:
        return "auto";
    }
}
std::string CorrectionMode(Input input) {
    return CorrectionInterfaceMode(input.settings.referenceFormat);
}
std::string PDPFilterState(Input input) {
    return input.settings.specialLogs ? "disable" : "enable";
}
std::string DynamicsType(Input input) {
    return input.settings.dynamicsType;
}
std::string PositionPeriod(Input input) {
    return input.settings.positionUpdate;
}
std::string TimePeriod(Input input) {
    return input.settings.timeUpdate;
}

/// A command; "%s" in its text stands for the argument.
struct SRow {
    std::string_view text;
    Argument argument = nullptr;
    Condition condition = Always;
};

// clang-format off
constexpr SRow kRows[] = {
    // The port that these commands go to, and the receiver's solutions.
    {"unlogall thisport"},
    {"selectchanconfig %s", DesiredChannelConfiguration, ChannelConfigurationIsSelectable},
    {"sbascontrol disable"},
    {"psrdiffsource %s", PSRDifferentialSource},
    {"rtksource auto"},
    {"rtkdynamics dynamic"},
    {"rtknetwork auto"},
    {"rtkqualitylevel %s", RTKQualityLevel},
    {"rtktimeout 60"},
    {"rtkcommand reset", nullptr, SpecialLogsAreOff},
    {"setionotype %s", IonosphereType},

    // The receiver's other ports: usb1 and com2 carry the controller's own protocol, usb3 takes
    // corrections in.
    {"interfacemode usb1 zq2 zq2"},
    {"interfacemode usb2 novatel novatel"},
    {"interfacemode usb3 %s none", CorrectionMode},
    {"com com2 460800 n 8 1 n off on"},
    {"interfacemode com2 zq2 zq2"},

    // What this port brings.
    {"log versionb once"},
    {"log rxstatusb once"},
    {"log psrdopb ontime 10"},
    {"log rxstatusb onchanged"},
    {"log comconfigb ontime 10"},
    {"pdpfilter %s", PDPFilterState},
    {"pdpmode relative auto"},
    {"dynamics %s", DynamicsType},
    {"log pdpxyzb ontime %s", PositionPeriod},
    {"log pdpstatb ontime %s", PositionPeriod},
    {"log rtkxyzb ontime %s", PositionPeriod},

    // What the diagnostic port brings.
    {"log usb2 bestposb ontime 1"},
    {"log usb2 rangeb ontime 0.5"},
    {"log usb2 trackstatb ontime 1"},
    {"log usb2 cbithinta onchanged"},
    {"log usb2 ionutcb onchanged"},
    {"log usb2 almanacb onchanged"},
    {"log usb2 glorawalmb onchanged"},
    {"log usb2 gloclockb onchanged"},
    {"log usb2 refstationb ontime 10"},
    {"log usb2 refstationinfob onchanged"},
    {"log usb2 rtksatsb ontime 0.5"},
    {"log usb2 pdpsatsb ontime 0.5"},
    {"log usb2 psrsatsb ontime 0.5"},
    {"log usb2 versionb once"},
    {"log usb2 passusb3b onnew"},
    {"log usb2 rawephemb onchanged"},
    {"log usb2 glorawephemb onchanged"},
    {"log usb2 basestationobsb onnew"},
    {"log usb2 psrposb ontime 0.5"},
    {"log usb2 rtkposb ontime 0.5"},
    {"log usb2 matchedposb onnew"},
    {"log usb2 matchedsatsb onnew"},
    {"log usb2 portstatsb ontime 10"},
    {"log usb2 rxstatusb onchanged"},
    {"log usb2 rtkdatab onnew"},
    {"log usb2 versiona once"},
    {"log usb2 rxconfiga once"},
    {"log usb2 timeb ontime %s", TimePeriod},
    {"log usb2 gpgsv ontime 1"},
    {"log usb2 gpgsa ontime 1"},
    {"log usb2 gpzda ontime 1"},
    {"log usb2 gpgst ontime 1"},

    // More for whoever records what the receiver sends, on this port. The trailing blanks and the
    // name without its suffix have always been sent so.
    {"LOG VERSIONB ONCE", nullptr, GPSLoggingIsOn},
    {"LOG VERSIONA ONCE", nullptr, GPSLoggingIsOn},
    {"LOG TRACKSTATB ONTIME 1", nullptr, GPSLoggingIsOn},
    {"LOG PSRXYZB ONTIME 1", nullptr, GPSLoggingIsOn},
    {"LOG RAWEPHEMB ONCHANGED", nullptr, GPSLoggingIsOn},
    {"LOG RAWWAASFRAMEB ONNEW", nullptr, GPSLoggingIsOn},
    {"LOG IONUTCB ONCHANGED ", nullptr, GPSLoggingIsOn},
    {"LOG GLORAWEPHEMB ONCHANGED ", nullptr, GPSLoggingIsOn},
    {"LOG BASESTATIONOBSB ONNEW", nullptr, GPSLoggingIsOn},
    {"LOG PDPPOSB ONTIME 0.5", nullptr, GPSLoggingIsOn},
    {"LOG PSRPOSB ONTIME 0.5", nullptr, GPSLoggingIsOn},
    {"LOG BESTPOSB ONTIME 1", nullptr, GPSLoggingIsOn},
    {"LOG CBITHINTA ONCHANGED", nullptr, GPSLoggingIsOn},
    {"LOG ALMANACB ONCHANGED", nullptr, GPSLoggingIsOn},
    {"LOG GLORAWALMB ONCHANGED", nullptr, GPSLoggingIsOn},
    {"LOG GLOCLOCKB ONCHANGED", nullptr, GPSLoggingIsOn},
    {"LOG PSRSATS ONTIME 0.5", nullptr, GPSLoggingIsOn},
    {"LOG RTKSATSB ONTIME 0.5", nullptr, GPSLoggingIsOn},
    {"LOG RTKDATAB ONNEW", nullptr, GPSLoggingIsOn},
    {"LOG MATCHEDSATSB ONNEW", nullptr, GPSLoggingIsOn},
    {"LOG PORTSTATSB ONTIME 10", nullptr, GPSLoggingIsOn},
    {"LOG RXCONFIGA ONCE", nullptr, GPSLoggingIsOn},
    {"LOG PASSUSB3B ONCHANGED", nullptr, GPSLoggingIsOn},

    // What the receiver says about itself, once.
    {"LOG CHANCONFIGLISTB ONCE"},
    {"LOG LOGLISTB ONCE"},
    {"LOG RXCONFIGB ONCE"},
};
// clang-format on

std::string CommandText(const SRow& row, Input input) {
    constexpr std::string_view kPlace = "%s";
    std::string text(row.text);
    if (row.argument != nullptr) {
        text.replace(text.find(kPlace), kPlace.size(), row.argument(input));
    }
    return text + kCommandEnd;
}

} // namespace

bool CanSelectChannelConfiguration() {
    return false;
}

std::vector<std::string> ReceiverConfiguration(const SConfigurationInput& input) {
    std::vector<std::string> commands;
    for (const SRow& row : kRows) {
        if (row.condition(input)) {
            commands.push_back(CommandText(row, input));
        }
    }
    return commands;
}

std::string CorrectionInterfaceMode(const std::string& referenceFormat) {
    if (referenceFormat == "VARN1") {
        return "CMR";
    }
    if (referenceFormat == "RTCM3" || referenceFormat == "NONE") {
        return "RTCMV3";
    }
    if (referenceFormat == "RTCM2") {
        return "RTCM";
    }
    return referenceFormat;
}
