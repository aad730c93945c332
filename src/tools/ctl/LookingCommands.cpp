// What the daemon knows of the receiver, and whether it answers at all.

#include "Commands.h"
#include "Values.h"
#include "platform/Time.h"

#include <array>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

void RunPing(SContext& context) {
    const Core::MonotonicTime start = Core::MonotonicTime::Now();
    if (!context.daemon.CallForList("DummyFunction")) {
        return;
    }
    const double seconds = (Core::MonotonicTime::Now() - start).AsSeconds();
    context.output.Tell("the daemon at " + context.daemon.Address() + " answers (" +
                            FixedText(1000.0 * seconds, 1) + " ms)",
                        {{"answers", true}, {"milliseconds", 1000.0 * seconds}});
}

constexpr std::array<const char*, 4> kCardMembers = {"model", "serialNumber", "hardwareVersion",
                                                     "softwareVersion"};
constexpr std::array<const char*, 4> kCardLabels = {"model     ", "serial    ", "hardware  ",
                                                    "software  "};

void RunReceiver(SContext& context) {
    const auto card =
        context.daemon.CallForList("novatel_GetVersionInformation", {}, kCardMembers.size());
    if (!card) {
        return;
    }
    TJSON document;
    std::string text;
    bool isKnown = false;
    for (std::size_t i = 0; i < kCardMembers.size(); ++i) {
        const std::string value = card->GetString(i);
        isKnown = isKnown || !value.empty();
        text += (i == 0 ? "" : "\n") + std::string(kCardLabels[i]) + value;
        document[kCardMembers[i]] = value.empty() ? TJSON() : TJSON(value);
    }
    context.output.Tell(isKnown ? text : "the receiver has not told its version yet",
                        {{"receiver", document}});
}

/// A number, then channels and signal by turns; false when it is something else.
bool Describe(const BAtomC& configuration, std::int32_t current, std::string& text,
              TJSON& document) {
    const BListC* const values = configuration.AsList();
    if (values == nullptr || values->Size() % 2 != 1) {
        return false;
    }
    const std::int32_t number = values->GetInt(0);
    text += std::string("\n") + (number == current ? "* " : "  ") + std::to_string(number) + "  ";
    TJSON signals = TJSON::array();
    for (std::size_t i = 1; i < values->Size(); i += 2) {
        const std::int32_t channels = values->GetInt(i);
        const std::string signal = values->GetString(i + 1);
        text += (i == 1 ? "" : ", ") + std::to_string(channels) + " " + signal;
        signals.push_back({{"channels", channels}, {"signal", signal}});
    }
    document.push_back({{"configuration", number}, {"signals", signals}});
    return true;
}

void RunChannels(SContext& context) {
    constexpr char kAllowable[] = "novatel_GetAllowableChannelConfigurations";
    const auto current = context.daemon.CallForInteger("novatel_GetCurrentChannelConfiguration");
    if (!current) {
        return;
    }
    const auto configurations = context.daemon.CallForList(kAllowable);
    if (!configurations) {
        return;
    }
    std::string text = "channel configuration: " +
                       (*current == 0 ? std::string("not known") : std::to_string(*current));
    TJSON document = TJSON::array();
    for (const BAtomC& configuration : *configurations) {
        if (!Describe(configuration, *current, text, document)) {
            context.daemon.FailForNonsense(kAllowable, "not a list of channels and signals");
            return;
        }
    }
    if (document.empty()) {
        text += "\nthe receiver has not told which ones it allows yet (corvanectl refresh asks it)";
    }
    context.output.Tell(text, {{"current", *current}, {"allowable", document}});
}

} // namespace

void AddLookingCommands(CLI::App& app, SContext& context) {
    OnRun(AddCommand(app,
                     {.name = "ping",
                      .summary = "Whether the daemon answers, and how fast",
                      .examples = "ping\n--host receiver-1 ping"},
                     kLookingGroup),
          context, [&context] { RunPing(context); });
    OnRun(AddCommand(app,
                     {.name = "receiver",
                      .summary = "The receiver's model, serial number and versions",
                      .examples = "receiver\n--json receiver"},
                     kLookingGroup),
          context, [&context] { RunReceiver(context); });
    OnRun(AddCommand(app,
                     {.name = "channels",
                      .summary = "The channel configuration in use, and those it allows",
                      .examples = "channels\n--json channels"},
                     kLookingGroup),
          context, [&context] { RunChannels(context); });
}

} // namespace Ctl
