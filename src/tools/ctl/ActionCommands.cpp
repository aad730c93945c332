// What the receiver is told to do once.

#include "Commands.h"
#include "Period.h"
#include "Values.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

/// NMEA sentences are named by talker and type.
constexpr std::size_t kSentenceNameLength = 5;

void RunRegionRefresh(SContext& context) {
    if (!context.daemon.CallForSuccess("novatel_RefreshRegionSettings")) {
        return;
    }
    if (const auto isOn = context.daemon.CallForInteger("novatel_GetSBASEnabled")) {
        context.output.Tell(
            "the settings are read anew and the receiver is configured anew; SBAS: " +
                SwitchText(*isOn != 0),
            {{"refreshed", true}, {"sbas", *isOn != 0}});
    }
}

void AddRegion(CLI::App& app, SContext& context) {
    CLI::App& command =
        AddCommand(app,
                   {.name = "region",
                    .summary = "The region's presets, and the settings of the configuration",
                    .examples = "config set --section localisation region europe\nregion refresh"},
                   kActionGroup);
    command.require_subcommand(1);
    OnRun(AddCommand(command, {.name = "refresh",
                               .summary = "Reads them anew and configures the receiver anew",
                               .details = "What \"corvanectl config\" has changed comes in force.",
                               .examples = "region refresh"}),
          context, [&context] { RunRegionRefresh(context); });
}

void AddRefresh(CLI::App& app, SContext& context) {
    CLI::App& command =
        AddCommand(app,
                   {.name = "refresh",
                    .summary = "Asks the receiver for its channels, logs and settings",
                    .examples = "refresh"},
                   kActionGroup);
    OnRun(command, context, [&context] {
        if (context.daemon.CallForSuccess("novatel_RefreshReceiverConfiguration")) {
            context.output.Tell("the receiver is asked", {{"asked", true}});
        }
    });
}

void RunReset(SContext& context, const std::string& what, bool isConfirmed) {
    if (what == "factory" && !isConfirmed) {
        context.output.Fail(EStatus::usage,
                            "a factory reset clears the receiver's stored commands, orbits and "
                            "almanacs: it has to find its satellites anew",
                            "If that is wanted: corvanectl reset factory --yes");
        return;
    }
    bool isDone = false;
    if (what == "rtk") {
        isDone = context.daemon.CallForSuccess("novatel_ResetRTKFilter");
    } else if (what == "pdp") {
        isDone = context.daemon.CallForList("novatel_ResetPDPFilter").has_value();
    } else {
        isDone = context.daemon.CallForSuccess("novatel_SendFReset");
    }
    if (isDone) {
        context.output.Tell(what == "factory"
                                ? "the receiver is reset and configured anew"
                                : "the reset of the " + what + " filter waits to be sent",
                            {{"reset", what}});
    }
}

void AddReset(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "reset",
                                    .summary = "Resets a filter, or what the receiver has stored",
                                    .examples = "reset rtk\nreset pdp\nreset factory --yes"},
                                   kActionGroup);
    const auto what = std::make_shared<std::string>();
    const auto isConfirmed = std::make_shared<bool>(false);
    command
        .add_option("WHAT", *what,
                    "A filter, or what the receiver stores: commands, orbits, almanacs")
        ->type_name("rtk|pdp|factory")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"rtk", "pdp", "factory"}).description(""));
    command.add_flag("--yes", *isConfirmed, "Needed for factory");
    OnRun(command, context,
          [&context, what, isConfirmed] { RunReset(context, *what, *isConfirmed); });
}

std::string WhyNoSentence(const std::string& argument) {
    const bool isName = argument.size() == kSentenceNameLength &&
                        std::all_of(argument.begin(), argument.end(), [](unsigned char c) {
                            return c < 0x80 && std::isalnum(c) != 0;
                        });
    return isName ? ""
                  : "\"" + argument +
                        "\" is no sentence: a name has five letters, two of the talker and three "
                        "of the type, as GPGGA";
}

std::string WhyNoPeriod(const std::string& argument) {
    return ParsePeriod(argument) ? ""
                                 : "\"" + argument +
                                       "\" is no period: 5Hz, 0.2s, 200ms (a millisecond to a "
                                       "day), once or off";
}

void RunNMEA(SContext& context, std::string name, const std::string& argument) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    const std::int32_t period = *ParsePeriod(argument);
    const auto isSent =
        context.daemon.CallForInteger("RequestNMEA", BListC().AddString(name).AddInt(period));
    if (!isSent) {
        return;
    }
    if (*isSent != 1) {
        context.output.Fail(EStatus::refused, "the daemon could not send the request",
                            "It has no port of a receiver to send it to.");
        return;
    }
    context.output.Tell("the receiver is asked for " + name + ": " + PeriodText(period),
                        {{"sentence", name}, {"milliseconds", period}});
}

void AddNMEA(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(
        app,
        {.name = "nmea",
         .summary = "Has the receiver send an NMEA sentence",
         .details =
             "The request is kept, and repeated when the receiver is configured again, until "
             "a setting is\nchanged.",
         .examples = "nmea GPGGA 5Hz\nnmea GPGGA 200ms\nnmea GPZDA once\nnmea GPGGA off"},
        kActionGroup);
    const auto name = std::make_shared<std::string>();
    const auto period = std::make_shared<std::string>();
    command.add_option("SENTENCE", *name, "Talker and type, as GPGGA")
        ->type_name("")
        ->required()
        ->check(Check(WhyNoSentence));
    command.add_option("PERIOD", *period, "5Hz, 0.2s, 200ms, once or off; rounded to milliseconds")
        ->type_name("")
        ->required()
        ->check(Check(WhyNoPeriod));
    OnRun(command, context, [&context, name, period] { RunNMEA(context, *name, *period); });
}

} // namespace

void AddActionCommands(CLI::App& app, SContext& context) {
    AddRegion(app, context);
    AddRefresh(app, context);
    AddReset(app, context);
    AddNMEA(app, context);
}

} // namespace Ctl
