// The configuration database, read and changed in its file, with the daemon running or not.

#include "Commands.h"
#include "ConfigKeys.h"
#include "ConfigList.h"
#include "Values.h"
#include "platform/Config.h"

#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

constexpr char kDaemonSection[] = "Corvane";
constexpr char kOuterOptions[] =
    "Also with --section NAME and --file PATH (see corvanectl config --help).";

struct SConfigArguments {
    std::string path;
    std::string section;
    std::string key;
    std::string value;
    bool isForced = false;
    bool wantsAll = false;

    std::string Path() const { return path.empty() ? CConfig::SystemPath() : path; }
    std::string Section() const { return section.empty() ? kDaemonSection : section; }
    std::string Name() const { return "[" + Section() + "] " + key; }
    TJSON Document() const { return {{"path", Path()}, {"section", Section()}, {"key", key}}; }
};

/// The keys that may have been meant.
std::string Suggestion(const SConfigArguments& given) {
    for (const SConfigKey& known : ConfigKeys()) {
        if (known.key == given.key) {
            return "; [" + std::string(known.section) + "] has one: --section " + known.section;
        }
    }
    const std::string nearest = Nearest(given.key, ConfigKeyNames(given.Section()));
    return nearest.empty() ? "" : "; is " + nearest + " meant?";
}

void Get(COutput& output, const SConfigArguments& given) {
    CConfig config(given.Path());
    const auto value = ValueIn(config, given.Section(), given.key);
    const SConfigKey* const known = FindConfigKey(given.Section(), given.key);
    if (!value && known == nullptr) {
        output.Fail(EStatus::refused,
                    given.Name() + " is not set, and nothing reads it" + Suggestion(given));
        return;
    }
    if (!value) {
        output.Note(given.Name() + " is not set; this is what it is then");
    }
    const std::string inForce = value ? *value : DefaultOf(config, given.Section(), *known);
    TJSON document = given.Document();
    document["value"] = inForce;
    document["isSet"] = value.has_value();
    output.Tell(inForce, document);
}

/// Why the file was not changed has been told by the database.
void FailToWrite(COutput& output, const SConfigArguments& given) {
    output.Fail(EStatus::refused, given.Path() + " was not changed",
                "The file and its folder must be writable: sudo may be needed.");
}

void Set(COutput& output, const SConfigArguments& given) {
    const SConfigKey* const known = FindConfigKey(given.Section(), given.key);
    if (known == nullptr && !given.isForced) {
        output.Fail(EStatus::usage, "nothing reads " + given.Name() + Suggestion(given),
                    "\"corvanectl config list --all\" shows what there is; --force sets it all "
                    "the same.");
        return;
    }
    const auto checked = known == nullptr ? given.value : StoredValue(*known, given.value);
    if (!checked && !given.isForced) {
        output.Fail(EStatus::usage,
                    "\"" + given.value + "\" is no value of " + given.Name() + ": " +
                        KindText(*known),
                    "--force sets it all the same.");
        return;
    }
    const std::string stored = checked.value_or(given.value);
    if (!CConfig(given.Path()).SetString(given.Section(), given.key, stored)) {
        FailToWrite(output, given);
        return;
    }
    const std::string effect =
        known == nullptr ? "never: nothing reads it" : EffectText(known->effect);
    TJSON document = given.Document();
    document["value"] = stored;
    document["inForce"] = effect;
    output.Tell(given.Name() + " = " + stored + "\nin force: " + effect, document);
}

void Unset(COutput& output, const SConfigArguments& given) {
    CConfig config(given.Path());
    const auto former = ValueIn(config, given.Section(), given.key);
    const SConfigKey* const known = FindConfigKey(given.Section(), given.key);
    TJSON document = given.Document();
    document["wasSet"] = former.has_value();
    if (!former) {
        output.Tell(given.Name() + " was not set" + (known == nullptr ? Suggestion(given) : ""),
                    document);
        return;
    }
    if (!config.Remove(given.Section(), given.key)) {
        FailToWrite(output, given);
        return;
    }
    const std::string effect =
        known == nullptr ? "never: nothing reads it" : EffectText(known->effect);
    document["inForce"] = effect;
    output.Tell(given.Name() + " is no longer set\nin force: " + effect, document);
}

void List(COutput& output, const SConfigArguments& given) {
    CConfig config(given.Path());
    std::string text;
    TJSON settings = TJSON::array();
    for (const SSetting& setting : Settings(config, given.section, given.wantsAll)) {
        const bool isNewSection = settings.empty() || settings.back()["section"] != setting.section;
        if (isNewSection) {
            text += (text.empty() ? "[" : "\n[") + setting.section + "]\n";
        }
        text += Text(setting, given.wantsAll);
        settings.push_back(Document(setting));
    }
    if (text.empty()) {
        text = "nothing is set in " + given.Path() + "; --all shows what can be";
    } else {
        text.pop_back();
    }
    output.Tell(text, {{"path", given.Path()}, {"settings", settings}});
}

using TOperation = void (*)(COutput&, const SConfigArguments&);

/// A file that is there and cannot be read is not one without settings.
void Run(SContext& context, TOperation operation, const SConfigArguments& given) {
    if (const std::string why = WhyNotReadable(given.Path()); !why.empty()) {
        context.output.Fail(EStatus::refused, given.Path() + " cannot be read: " + why,
                            "sudo may be needed; --file names another file.");
        return;
    }
    operation(context.output, given);
}

using TGiven = std::shared_ptr<SConfigArguments>;

void OnRun(CLI::App& command, SContext& context, const TGiven& given, TOperation operation) {
    OnRun(command, context, [&context, given, operation] { Run(context, operation, *given); });
}

void AddKey(CLI::App& command, SConfigArguments& given) {
    command.add_option("KEY", given.key, "As \"corvanectl config list --all\" names it")
        ->type_name("")
        ->required();
}

void AddGetAndUnset(CLI::App& parent, SContext& context, const TGiven& given) {
    CLI::App& get = AddCommand(parent, {.name = "get",
                                        .summary = "Prints a value, or what it is unless set",
                                        .details = kOuterOptions,
                                        .examples = "config get position_update"});
    AddKey(get, *given);
    OnRun(get, context, given, Get);
    CLI::App& unset = AddCommand(parent, {.name = "unset",
                                          .summary = "Removes a value from the file",
                                          .details = kOuterOptions,
                                          .examples = "config unset baud_rate"});
    AddKey(unset, *given);
    OnRun(unset, context, given, Unset);
}

void AddSet(CLI::App& parent, SContext& context, const TGiven& given) {
    CLI::App& command =
        AddCommand(parent, {.name = "set",
                            .summary = "Stores a value and tells when it comes in force",
                            .details = kOuterOptions,
                            .examples = "config set position_update 0.2\n"
                                        "config set --section platform rpc_listen 0.0.0.0"});
    AddKey(command, *given);
    command.add_option("VALUE", given->value, "Checked against what the key may be")
        ->type_name("")
        ->required();
    command.add_flag("--force", given->isForced,
                     "Also a key that nothing reads, and a value that is none for the key");
    OnRun(command, context, given, Set);
}

void AddList(CLI::App& parent, SContext& context, const TGiven& given) {
    CLI::App& command =
        AddCommand(parent, {.name = "list",
                            .summary = "Prints what is set, of every section unless one is given",
                            .details = kOuterOptions,
                            .examples = "config list\nconfig list --all --section Corvane"});
    command.add_flag("--all", given->wantsAll,
                     "Every known key, with its value, what it may be, and what it does");
    OnRun(command, context, given, List);
}

} // namespace

void AddConfigCommands(CLI::App& app, SContext& context) {
    CLI::App& command =
        AddCommand(app,
                   {.name = "config",
                    .summary = "The configuration, in its file; works without a daemon",
                    .examples = "config list --all\nconfig get baud_rate\n"
                                "config set baud_rate 115200\n"
                                "config set --section localisation region europe\n"
                                "config unset baud_rate"},
                   kToolGroup);
    command.require_subcommand(1);
    const auto given = std::make_shared<SConfigArguments>();
    command.add_option("--section", given->section, "The section; Corvane unless given")
        ->type_name("NAME");
    command
        .add_option("--file", given->path,
                    "The file, instead of CORVANE_CONFIG or /etc/corvane/corvane.conf")
        ->type_name("PATH");
    AddGetAndUnset(command, context, given);
    AddSet(command, context, given);
    AddList(command, context, given);
}

} // namespace Ctl
