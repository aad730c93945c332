// What every command of the tool is made with.
#pragma once

#include "Daemon.h"
#include "Output.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace Ctl {

/// What commands work with; outlives them all.
struct SContext {
    COutput& output;
    CDaemon& daemon;
    /// What the command line asks for, once it has been understood.
    std::function<void()> action;
};

/// The groups of the help, in the order of a first use.
inline constexpr char kLookingGroup[] = "Looking";
inline constexpr char kSettingGroup[] = "Settings (shown without an argument)";
inline constexpr char kActionGroup[] = "Actions";
inline constexpr char kToolGroup[] = "Tools";

struct SCommandHelp {
    std::string name;
    std::string summary;      ///< a short line, also in the list of commands
    std::string details = {}; ///< more, in the command's own help
    std::string examples;     ///< a line each, without the program's name
};

/// Adds a command with its help; those of an empty group have the heading "Commands".
CLI::App& AddCommand(CLI::App& parent, const SCommandHelp& help, const std::string& group = "");

/// What the command does when it is the innermost one of the command line.
void OnRun(CLI::App& command, SContext& context, std::function<void()> action);

/// A check of an argument: `why` is empty for one that is right.
CLI::Validator Check(std::function<std::string(const std::string& argument)> why);

/// The innermost command that was understood.
CLI::App& Innermost(CLI::App& app);

/// The names of the commands that may follow.
std::vector<std::string> CommandNames(const CLI::App& command);

/// Each adds the commands of a topic.
void AddLookingCommands(CLI::App& app, SContext& context);
void AddTrackingCommand(CLI::App& app, SContext& context);
void AddSettingCommands(CLI::App& app, SContext& context);
void AddReferencePositionCommand(CLI::App& app, SContext& context);
void AddActionCommands(CLI::App& app, SContext& context);
void AddFirmwareCommands(CLI::App& app, SContext& context);
void AddConfigCommands(CLI::App& app, SContext& context);
void AddRecordCommands(CLI::App& app, SContext& context);
void AddCallCommands(CLI::App& app, SContext& context);

} // namespace Ctl
