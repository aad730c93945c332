// What the receiver tracks, once or at each change.

#include "Commands.h"
#include "platform/Time.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

constexpr char kMethod[] = "novatel_GetReceiverTrackingStatus";
constexpr char kCallback[] = "cb_trackingStatus";
/// After so long without a change the daemon is asked whether it is still there.
constexpr Core::Time kQuiet = Core::Time::FromMilliseconds(5000);

struct STracking {
    std::array<std::int32_t, 5> counts{}; ///< GPS L1, L2, GLONASS L1, L2, satellites
    std::string sbas;
    std::string status;
};

std::optional<STracking> Ask(SContext& context) {
    const auto answer = context.daemon.CallForList(kMethod, {}, 7);
    if (!answer) {
        return std::nullopt;
    }
    STracking tracking;
    for (std::size_t i = 0; i < tracking.counts.size(); ++i) {
        if (!answer->At(i).AsInteger()) {
            context.daemon.FailForNonsense(kMethod, "not five whole numbers");
            return std::nullopt;
        }
        tracking.counts[i] = answer->GetInt(i);
    }
    // Each satellite is followed by a comma, the last one too.
    tracking.sbas = answer->GetString(5);
    if (tracking.sbas.ends_with(',')) {
        tracking.sbas.pop_back();
    }
    tracking.status = answer->GetString(6);
    return tracking;
}

TJSON Document(const STracking& tracking) {
    const auto& counts = tracking.counts;
    return {{"satellites", counts[4]},
            {"gps", {{"l1", counts[0]}, {"l2", counts[1]}}},
            {"glonass", {{"l1", counts[2]}, {"l2", counts[3]}}},
            {"sbas", tracking.sbas},
            {"status", tracking.status}};
}

std::string OrNone(const std::string& text) {
    return text.empty() ? "none" : text;
}

std::string Pair(std::int32_t l1, std::int32_t l2) {
    return "L1 " + std::to_string(l1) + ", L2 " + std::to_string(l2);
}

void Once(SContext& context) {
    const auto tracking = Ask(context);
    if (!tracking) {
        return;
    }
    const auto& counts = tracking->counts;
    context.output.Tell("satellites  " + std::to_string(counts[4]) + "\nGPS         " +
                            Pair(counts[0], counts[1]) + "\nGLONASS     " +
                            Pair(counts[2], counts[3]) + "\nSBAS        " + OrNone(tracking->sbas) +
                            "\nstatus      " + OrNone(tracking->status),
                        Document(*tracking));
}

std::string LocalTime(std::time_t time) {
    std::tm parts{};
    std::array<char, 32> text{};
    localtime_r(&time, &parts);
    std::strftime(text.data(), text.size(), "%F %T", &parts);
    return text.data();
}

void TellChange(COutput& output, const STracking& tracking) {
    const double now = Core::UnixTime::Now().AsSeconds();
    const auto& counts = tracking.counts;
    TJSON document = {{"time", now}};
    document.update(Document(tracking));
    output.Tell(LocalTime(static_cast<std::time_t>(now)) + "  " + std::to_string(counts[4]) +
                    " satellites; GPS " + Pair(counts[0], counts[1]) + "; GLONASS " +
                    Pair(counts[2], counts[3]) + "; SBAS " + OrNone(tracking.sbas) + "; status " +
                    OrNone(tracking.status),
                document);
}

/// Waits for a change. False when the daemon has gone; a quiet one is asked, since a dead link is
/// quiet as well.
bool WaitForChange(SContext& context) {
    std::optional<MPISocketClientC::SCallback> callback;
    while (context.daemon.NextCallback(kQuiet, callback)) {
        if (callback && callback->method == kCallback) {
            return true;
        }
        if (!callback && !context.daemon.CallForList("DummyFunction")) {
            return false;
        }
    }
    return false;
}

/// Until it is interrupted or the daemon goes. The callbacks come because the daemon was asked.
void Watch(SContext& context) {
    do {
        const auto tracking = Ask(context);
        if (!tracking) {
            return;
        }
        TellChange(context.output, *tracking);
    } while (WaitForChange(context));
}

} // namespace

void AddTrackingCommand(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(
        app,
        {.name = "tracking",
         .summary = "What the receiver tracks, and its status",
         .details = "L1 and L2 are counts of channels, of which a satellite may have several.",
         .examples = "tracking\ntracking --watch\n--json tracking --watch | jq .satellites"},
        kLookingGroup);
    const auto watches = std::make_shared<bool>(false);
    command.add_flag("--watch", *watches,
                     "A line at each change of the number of satellites, until interrupted");
    OnRun(command, context, [&context, watches] { *watches ? Watch(context) : Once(context); });
}

} // namespace Ctl
