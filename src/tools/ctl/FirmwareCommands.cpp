// New firmware for the receiver: begun, followed to its end, asked about.

#include "Commands.h"
#include "FirmwareFile.h"
#include "Progress.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>
#include <unistd.h>

namespace Ctl {

namespace {

constexpr std::chrono::milliseconds kPeriod{250};
/// Looks without progress until that is told: a minute.
constexpr int kStalledLooks = 240;

struct SUpgrade {
    bool isWell = false;
    bool hasEnded = false;
    std::int32_t percent = 0;

    const char* State() const {
        if (hasEnded) {
            return isWell ? "completed" : "failed";
        }
        return percent > 0 ? "running" : "none";
    }
};

std::optional<SUpgrade> Ask(SContext& context) {
    constexpr char kMethod[] = "novatel_GetFirmwareUpgradeStatus";
    const auto answer = context.daemon.CallForList(kMethod, {}, 3);
    if (!answer) {
        return std::nullopt;
    }
    for (const BAtomC& value : *answer) {
        if (!value.AsInteger()) {
            context.daemon.FailForNonsense(kMethod, "not three whole numbers");
            return std::nullopt;
        }
    }
    return SUpgrade{answer->GetInt(0) != 0, answer->GetInt(1) != 0, answer->GetInt(2)};
}

void ShowStatus(SContext& context) {
    const auto upgrade = Ask(context);
    if (!upgrade) {
        return;
    }
    const std::string percent = std::to_string(upgrade->percent) + " %";
    std::string text = "no upgrade since the daemon was started, or one that has just begun";
    if (upgrade->hasEnded) {
        text = upgrade->isWell ? "the last upgrade was completed"
                               : "the last upgrade failed, with " + percent + " of the file sent";
    } else if (upgrade->percent >= 100) {
        text = "the file is sent; the receiver checks and stores it";
    } else if (upgrade->percent > 0) {
        text = "an upgrade is under way: " + percent + " of the file sent";
    }
    context.output.Tell(text, {{"state", upgrade->State()}, {"percent", upgrade->percent}});
}

/// An interruption ends this program as ever, but the upgrade is the daemon's.
void TellOfInterruption(int signal) {
    constexpr char kText[] =
        "\ncorvanectl: the upgrade goes on in the daemon; do not switch the receiver off.\n"
        "\"corvanectl firmware status\" tells how far it is.\n";
    [[maybe_unused]] const auto written = write(STDERR_FILENO, kText, sizeof kText - 1);
    raise(signal);
}

void WatchForInterruption() {
    struct sigaction action {};
    action.sa_handler = TellOfInterruption;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        // One that is ignored, as under nohup, stays so.
        if (sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

/// Shows how far it is until it has ended; nothing when the daemon has gone.
std::optional<SUpgrade> Follow(SContext& context) {
    CProgress progress(context.output.IsJSON() ? stderr : stdout);
    std::int32_t percent = -1;
    for (int looks = 0;; ++looks) {
        const auto upgrade = Ask(context);
        if (!upgrade || upgrade->hasEnded) {
            return upgrade;
        }
        progress.Show(upgrade->percent);
        if (upgrade->percent != percent) {
            percent = upgrade->percent;
            looks = 0;
        } else if (looks == kStalledLooks) {
            context.output.Note("no progress for a minute; the receiver may take five. "
                                "Interrupting this program does not stop the upgrade.");
        }
        std::this_thread::sleep_for(kPeriod);
    }
}

void TellOutcome(SContext& context, const SUpgrade& upgrade, const std::string& path) {
    if (upgrade.isWell) {
        context.output.Tell("the upgrade is complete; the receiver starts again with " + path,
                            {{"file", path}, {"state", "completed"}});
        return;
    }
    context.output.Fail(EStatus::refused,
                        "the upgrade failed with " + std::to_string(upgrade.percent) +
                            " % of the file sent: the receiver refused it, or the file could not "
                            "be read to its end",
                        "The daemon's last error events of the name NovatelPositionManager tell "
                        "the receiver's status.");
}

struct SUpgradeArguments {
    std::string file;
    bool doesNotWait = false;
    bool restarts = false;
};

/// The path that the daemon is to open; empty, and told, when there is none.
std::string PathForDaemon(SContext& context, const std::string& file) {
    const std::optional<bool> isLocal = context.daemon.IsLocal();
    if (!isLocal) {
        return "";
    }
    const std::filesystem::path given = file;
    std::string why;
    if (!*isLocal) {
        why = given.is_absolute() ? ""
                                  : "the daemon reads the file on its own machine: give its path "
                                    "there, from the root on";
    } else {
        why = WhyNoFirmware(file);
    }
    if (!why.empty()) {
        context.output.Fail(EStatus::usage, why);
        return "";
    }
    return std::filesystem::absolute(given).lexically_normal().string();
}

void Upgrade(SContext& context, const SUpgradeArguments& given) {
    const std::string path = PathForDaemon(context, given.file);
    if (path.empty()) {
        return;
    }
    const auto before = Ask(context);
    if (!before) {
        return;
    }
    if (!given.restarts && !before->hasEnded && before->percent > 0) {
        context.output.Fail(EStatus::refused,
                            "an upgrade is under way: " + std::to_string(before->percent) +
                                " % of its file sent",
                            "\"corvanectl firmware status\" tells how far it is; --restart drops "
                            "it and begins anew.");
        return;
    }
    const auto hasBegun =
        context.daemon.CallForInteger("novatel_StartFirmwareUpgrade", BListC().AddString(path));
    if (!hasBegun) {
        return;
    }
    if (*hasBegun != 1) {
        context.output.Fail(EStatus::refused, "the daemon cannot read " + path,
                            "It must be there for the daemon's user, on the daemon's machine.");
        return;
    }
    if (given.doesNotWait) {
        context.output.Tell("the upgrade has begun; \"corvanectl firmware status\" tells how far "
                            "it is",
                            {{"file", path}, {"state", "running"}});
        return;
    }
    WatchForInterruption();
    if (const auto upgrade = Follow(context)) {
        TellOutcome(context, *upgrade, path);
    } else {
        context.output.Note("how the upgrade ends is not known; do not switch the receiver off "
                            "before \"corvanectl firmware status\" tells");
    }
}

} // namespace

void AddFirmwareCommands(CLI::App& app, SContext& context) {
    CLI::App& command =
        AddCommand(app,
                   {.name = "firmware",
                    .summary = "The receiver's firmware",
                    .examples = "firmware upgrade OEM060400RN0000.shex\nfirmware status"},
                   kActionGroup);
    command.require_subcommand(1);
    OnRun(AddCommand(command, {.name = "status",
                               .summary = "How far an upgrade is, or how the last one ended",
                               .examples = "firmware status\n--json firmware status"}),
          context, [&context] { ShowStatus(context); });

    CLI::App& upgrade = AddCommand(
        command,
        {.name = "upgrade",
         .summary = "Loads new firmware into the receiver",
         .details = "There are no positions meanwhile, and the receiver must not be switched off. "
                    "Interrupting\nthis program does not stop the upgrade, which is the daemon's.",
         .examples = "firmware upgrade OEM060400RN0000.shex\n"
                     "firmware upgrade --no-wait OEM060400RN0000.shex"});
    const auto given = std::make_shared<SUpgradeArguments>();
    upgrade.add_option("FILE", given->file, "A text file of S-records, which the daemon reads")
        ->type_name("")
        ->required();
    upgrade.add_flag("--no-wait", given->doesNotWait, "Begin it, and do not wait for its end");
    upgrade.add_flag("--restart", given->restarts, "Drop one that is under way");
    OnRun(upgrade, context, [&context, given] { Upgrade(context, *given); });
}

} // namespace Ctl
