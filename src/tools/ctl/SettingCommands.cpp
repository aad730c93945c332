// The settings that the daemon keeps: each is shown without an argument, and set with one.

#include "Commands.h"
#include "Values.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

struct SSwitch {
    const char* command;
    const char* label;
    const char* setMethod;
    const char* getMethod;
    const char* summary;
    const char* details;
};

constexpr SSwitch kSwitches[] = {
    {"sbas", "SBAS", "novatel_SetSBASEnabled", "novatel_GetSBASEnabled", "Whether SBAS is wanted",
     "Setting it overrides what the region presets, and configures the receiver anew."},
    {"glonass-corrections", "GLONASS corrections", "novatel_SetGlonassCorrectionsEnabled",
     "novatel_GetGlonassCorrectionsEnabled", "Whether reference output has GLONASS",
     "It is stored; the receiver is told nothing."},
    {"gps-logging", "GPS logging", "novatel_SetGPSLoggingEnabled", "novatel_GetGPSLoggingEnabled",
     "Whether the receiver sends more logs, for recording",
     "A change configures the receiver anew and switches the recording of its bytes."},
};

constexpr char kConfiguresAnew[] = "A change configures the receiver anew.";

constexpr std::int32_t kFirstSBASPRN = 120;
constexpr std::int32_t kLastSBASPRN = 158;

constexpr const char* kIonosphereModes[] = {"auto", "klobuchar", "grid", "auto"};

std::string WhyNoSwitch(const std::string& argument) {
    return ParseSwitch(argument) ? "" : "\"" + argument + "\" is neither on nor off";
}

void RunSwitch(SContext& context, const SSwitch& row, const std::string& argument) {
    const std::optional<bool> wanted = ParseSwitch(argument);
    if (wanted && !context.daemon.CallForList(row.setMethod, BListC().AddInt(*wanted ? 1 : 0))) {
        return;
    }
    const auto isOn = context.daemon.CallForInteger(row.getMethod);
    if (!isOn) {
        return;
    }
    if (wanted && *wanted != (*isOn != 0)) {
        context.output.Fail(EStatus::refused,
                            std::string(row.label) + " is still " + SwitchText(*isOn != 0));
        return;
    }
    context.output.Tell(std::string(row.label) + ": " + SwitchText(*isOn != 0),
                        {{row.command, *isOn != 0}});
}

void AddSwitch(CLI::App& app, SContext& context, const SSwitch& row) {
    const std::string name = row.command;
    CLI::App& command = AddCommand(app,
                                   {.name = name,
                                    .summary = row.summary,
                                    .details = row.details,
                                    .examples = name + "\n" + name + " on\n" + name + " off"},
                                   kSettingGroup);
    const auto argument = std::make_shared<std::string>();
    command.add_option("STATE", *argument, "on or off")
        ->type_name("on|off")
        ->check(Check(WhyNoSwitch));
    OnRun(command, context, [&context, &row, argument] { RunSwitch(context, row, *argument); });
}

std::string WhyNoSBASPRN(const std::string& argument) {
    const std::optional<std::int32_t> prn = ParseWhole(argument);
    if (prn && (*prn == 0 || (*prn >= kFirstSBASPRN && *prn <= kLastSBASPRN))) {
        return "";
    }
    return "\"" + argument + "\" is no SBAS satellite: 120 to 158, or 0 for none in particular";
}

void RunSBASPRN(SContext& context, const std::string& argument) {
    const std::optional<std::int32_t> wanted = ParseWhole(argument);
    if (wanted && !context.daemon.CallForList("novatel_SetSBASPRN", BListC().AddInt(*wanted))) {
        return;
    }
    const auto prn = context.daemon.CallForInteger("novatel_GetSBASPRN");
    if (!prn) {
        return;
    }
    if (wanted && *wanted != *prn) {
        context.output.Fail(EStatus::refused, "SBAS PRN is still " + std::to_string(*prn));
        return;
    }
    context.output.Tell("SBAS PRN: " + std::to_string(*prn) +
                            (*prn == 0 ? " (none in particular)" : ""),
                        {{"sbas-prn", *prn}});
}

void AddSBASPRN(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "sbas-prn",
                                    .summary = "The SBAS satellite",
                                    .details = kConfiguresAnew,
                                    .examples = "sbas-prn\nsbas-prn 131\nsbas-prn 0"},
                                   kSettingGroup);
    const auto argument = std::make_shared<std::string>();
    command.add_option("PRN", *argument, "120 to 158, or 0 for none in particular")
        ->type_name("")
        ->check(Check(WhyNoSBASPRN));
    OnRun(command, context, [&context, argument] { RunSBASPRN(context, *argument); });
}

void RunReferenceFormat(SContext& context, const std::string& wanted) {
    if (!wanted.empty() &&
        !context.daemon.CallForList("novatel_SetReferenceFormat", BListC().AddString(wanted))) {
        return;
    }
    const auto format = context.daemon.CallForText("novatel_GetReferenceFormat");
    if (!format) {
        return;
    }
    if (!wanted.empty() && wanted != *format) {
        context.output.Fail(EStatus::refused, "the reference format is still " + *format);
        return;
    }
    context.output.Tell("reference format: " + (format->empty() ? "not known" : *format),
                        {{"reference-format", *format}});
}

void AddReferenceFormat(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "reference-format",
                                    .summary = "The format of the corrections",
                                    .details = kConfiguresAnew,
                                    .examples = "reference-format\nreference-format RTCM3"},
                                   kSettingGroup);
    const auto wanted = std::make_shared<std::string>();
    command.add_option("FORMAT", *wanted, "VARN1, CMR, RTCM3 or RTCM2")
        ->type_name("VARN1|CMR|RTCM3|RTCM2")
        ->transform(CLI::IsMember(std::vector<std::string>{"VARN1", "CMR", "RTCM3", "RTCM2"},
                                  CLI::ignore_case)
                        .description(""));
    OnRun(command, context, [&context, wanted] { RunReferenceFormat(context, *wanted); });
}

/// The number of a mode that is given by its number or its name.
std::optional<std::int32_t> IonosphereMode(const std::string& text) {
    const auto* const named =
        std::find(std::begin(kIonosphereModes), std::end(kIonosphereModes), text);
    if (named != std::end(kIonosphereModes)) {
        return static_cast<std::int32_t>(named - std::begin(kIonosphereModes));
    }
    const std::optional<std::int32_t> mode = ParseWhole(text);
    return mode && *mode >= 0 && *mode < std::ssize(kIonosphereModes) ? mode : std::nullopt;
}

std::string WhyNoIonosphereMode(const std::string& argument) {
    return IonosphereMode(argument)
               ? ""
               : "\"" + argument + "\" is none of auto, klobuchar, grid and 0 to 3";
}

void RunIonosphere(SContext& context, const std::string& argument) {
    const std::optional<std::int32_t> wanted = IonosphereMode(argument);
    if (wanted &&
        !context.daemon.CallForSuccess("novatel_SetIonosphereMode", BListC().AddInt(*wanted))) {
        return;
    }
    const auto mode = context.daemon.CallForInteger("novatel_GetIonosphereMode");
    if (!mode) {
        return;
    }
    const bool isKnown = *mode >= 0 && *mode < std::ssize(kIonosphereModes);
    const std::string name = isKnown ? kIonosphereModes[*mode] : "not known";
    const std::string text = "ionosphere: " + name + " (" + std::to_string(*mode) + ")";
    if (wanted && *wanted != *mode) {
        context.output.Fail(EStatus::refused, "still " + text);
        return;
    }
    context.output.Tell(text, {{"ionosphere", {{"mode", *mode}, {"name", name}}}});
}

void AddIonosphere(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "ionosphere",
                                    .summary = "The model of the ionosphere",
                                    .details = kConfiguresAnew,
                                    .examples = "ionosphere\nionosphere klobuchar\nionosphere 0"},
                                   kSettingGroup);
    const auto argument = std::make_shared<std::string>();
    command
        .add_option("MODEL", *argument,
                    "auto (0), klobuchar (1), grid (2); 3 is auto to the receiver as well")
        ->type_name("auto|klobuchar|grid|0..3")
        ->check(Check(WhyNoIonosphereMode));
    OnRun(command, context, [&context, argument] { RunIonosphere(context, *argument); });
}

std::string WhyNoBandwidth(const std::string& argument) {
    const std::optional<std::int32_t> bandwidth = ParseWhole(argument);
    return bandwidth && *bandwidth >= 0 ? "" : "\"" + argument + "\" is no number of bytes";
}

void AddBandwidth(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "bandwidth",
                                    .summary = "The bandwidth of the reference link: ignored",
                                    .details = "The daemon accepts it, and nothing depends on it.",
                                    .examples = "bandwidth 2400"},
                                   kActionGroup);
    const auto bandwidth = std::make_shared<std::int32_t>();
    command.add_option("NUMBER", *bandwidth, "Bytes per second")
        ->type_name("")
        ->required()
        ->check(Check(WhyNoBandwidth));
    OnRun(command, context, [&context, bandwidth] {
        if (context.daemon.Call("novatel_SetReferenceOutputBandwidth",
                                BListC().AddInt(*bandwidth))) {
            context.output.Tell(
                "accepted and ignored: nothing in the daemon depends on a bandwidth",
                {{"bandwidth", *bandwidth}, {"ignored", true}});
        }
    });
}

} // namespace

void AddSettingCommands(CLI::App& app, SContext& context) {
    for (const SSwitch& row : kSwitches) {
        AddSwitch(app, context, row);
    }
    AddSBASPRN(app, context);
    AddReferenceFormat(app, context);
    AddIonosphere(app, context);
    AddBandwidth(app, context);
}

} // namespace Ctl
