#include "Commands.h"

#include "platform/Text.h"

#include <utility>

namespace Ctl {

CLI::App& AddCommand(CLI::App& parent, const SCommandHelp& help, const std::string& group) {
    CLI::App& command = *parent.add_subcommand(help.name, help.summary);
    command.group(group.empty() ? "Commands" : group);
    std::string footer = help.details.empty() ? "" : help.details + "\n\n";
    footer += "Examples:";
    for (const std::string_view example : Core::Utilities::Split(help.examples, '\n')) {
        footer += "\n  corvanectl " + std::string(example);
    }
    command.footer(footer + "\n\nOptions of every command (see corvanectl --help): "
                            "--host, --port, --timeout, --json");
    return command;
}

void OnRun(CLI::App& command, SContext& context, std::function<void()> action) {
    command.callback([&command, &context, action = std::move(action)] {
        // The callbacks of the outer commands are called as well.
        if (command.get_subcommands().empty()) {
            context.action = action;
        }
    });
}

CLI::Validator Check(std::function<std::string(const std::string& argument)> why) {
    return CLI::Validator([why = std::move(why)](std::string& argument) { return why(argument); },
                          "");
}

CLI::App& Innermost(CLI::App& app) {
    CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return *command;
}

std::vector<std::string> CommandNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* const each :
         command.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(each->get_name());
    }
    return names;
}

} // namespace Ctl
