// The daemon's methods as they are: what they do, and calling one.

#include "Commands.h"
#include "Methods.h"
#include "Values.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

namespace Ctl {

namespace {

void TellMethods(COutput& output) {
    TJSON document = TJSON::array();
    std::string text;
    for (const SMethod& method : Methods()) {
        const std::string answer = method.answer;
        text += (text.empty() ? "" : "\n") + std::string(method.name) + "(" + method.arguments +
                ")\n    " + method.effect + "\n    answers " +
                (answer.empty() ? "nothing" : answer);
        document.push_back({{"method", method.name},
                            {"arguments", method.arguments},
                            {"answer", method.answer},
                            {"effect", method.effect}});
    }
    output.Tell(text, {{"methods", document}});
}

/// Advice for a method that the daemon may not have.
void AdviseOn(COutput& output, const std::string& method) {
    std::vector<std::string> names;
    for (const SMethod& each : Methods()) {
        names.emplace_back(each.name);
    }
    if (std::find(names.begin(), names.end(), method) != names.end()) {
        return;
    }
    const std::string nearest = Nearest(method, names);
    output.Note("\"corvanectl methods\" lists the methods" +
                (nearest.empty() ? "" : "; is " + nearest + " meant?"));
}

void Call(SContext& context, const std::string& method, const std::vector<std::string>& arguments) {
    BListC values;
    for (const std::string& argument : arguments) {
        values.Add(ParseCallArgument(argument));
    }
    const auto answer = context.daemon.Call(method, values);
    if (answer) {
        const TJSON result = JSONOf(*answer);
        context.output.Tell(result.dump(-1, ' ', false, TJSON::error_handler_t::replace),
                            {{"method", method}, {"result", result}});
    } else if (context.output.Status() == EStatus::refused) {
        AdviseOn(context.output, method);
    }
}

} // namespace

void AddCallCommands(CLI::App& app, SContext& context) {
    OnRun(AddCommand(app,
                     {.name = "methods",
                      .summary = "The daemon's methods: arguments, answers, effects",
                      .details = "Works without a daemon.",
                      .examples = "methods\n--json methods"},
                     kToolGroup),
          context, [&context] { TellMethods(context.output); });

    CLI::App& call =
        AddCommand(app,
                   {.name = "call",
                    .summary = "Calls a method of the daemon and prints its answer as JSON",
                    .details = "An answer of null is one, and often means that the daemon did "
                               "nothing.",
                    .examples = "call novatel_GetSBASPRN\n"
                                "call RequestNMEA GPGGA 200\n"
                                "call novatel_SetReferenceFormat text:CMR\n"
                                "call novatel_StartFirmwareUpgrade -- --odd-name.shex"},
                   kToolGroup);
    const auto method = std::make_shared<std::string>();
    const auto arguments = std::make_shared<std::vector<std::string>>();
    call.add_option("METHOD", *method, "As \"corvanectl methods\" lists them")
        ->type_name("")
        ->required();
    call.add_option("ARGUMENTS", *arguments,
                    "Whole numbers, numbers, anything else a text; text:5 is one as well")
        ->type_name("");
    OnRun(call, context, [&context, method, arguments] { Call(context, *method, *arguments); });
}

} // namespace Ctl
