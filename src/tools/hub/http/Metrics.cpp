#include "hub/http/Metrics.h"

#include "hub/http/MetricsText.h"
#include "hub/state/Counts.h"
#include "hub/state/Health.h"
#include "hub/state/Navigation.h"
#include "hub/state/Satellites.h"
#include "platform/Text.h"

#include <array>
#include <map>
#include <set>

namespace Hub {

namespace {

void AddHealth(CMetricsText& text, const CState& state, const SNow& now) {
    const SHealth health = Judge(state, now);
    text.Gauge("corvane_health", "1 for the state that holds, 0 for the others.");
    using enum SHealth::EState;
    for (const SHealth::EState each : {live, noPosition, old, silent, gone}) {
        text.Sample({{"state", SHealth{each, {}}.Name()}}, each == health.state ? 1 : 0);
    }
}

void AddSolution(CMetricsText& text, const CState& state, const SNow& now) {
    text.Counter("corvane_solutions_total", "Solutions that were published.");
    text.Sample(static_cast<double>(state.SolutionCount()));
    if (!state.Solution()) {
        return;
    }
    const SSolution& solution = state.Solution()->message;
    text.Gauge("corvane_solution_age_seconds", "Since the last solution was published.");
    text.Sample(state.Solution()->Age(now));
    text.Gauge("corvane_position_quality", "0 no position, 1 usable, 2 good, 3 best.");
    text.Sample(solution.data.positionQuality);
    text.Gauge("corvane_fix_indicator",
               "0 none, 1 single, 2 differential, 4 RTK integer, 5 RTK float.");
    text.Sample(FixIndicator(solution));
    text.Gauge("corvane_satellites_used", "Satellites that the solution has used.");
    text.Sample(SatellitesUsed(solution));
    text.Gauge("corvane_differential_age_seconds", "Of the corrections in the solution.");
    text.Sample(solution.data.differentialAge);
    if (const auto navigation = Navigate(solution, state.Geoid())) {
        text.Gauge("corvane_position_horizontal_sigma_meters", "Standard deviation in the plane.");
        text.Sample(navigation->sigmaHorizontal);
        text.Gauge("corvane_position_vertical_sigma_meters", "Standard deviation of the height.");
        text.Sample(navigation->sigmaUp);
        text.Gauge("corvane_speed_meters_per_second", "Over ground.");
        text.Sample(navigation->speed);
    }
}

void AddSignals(CMetricsText& text, const CState& state, const SNow& now) {
    if (!state.Sky()) {
        return;
    }
    const auto& channels = state.Sky()->message.channels;
    std::map<std::string_view, std::set<int>> tracked;
    for (const SSky::SChannel& channel : channels) {
        tracked[SystemName(channel.prn)].insert(channel.prn);
    }
    text.Gauge("corvane_satellites_tracked", "Satellites that the receiver tracks, by system.");
    for (const std::string_view system : {"GPS", "GLONASS", "SBAS", "unknown"}) {
        text.Sample({{"system", system}}, static_cast<double>(tracked[system].size()));
    }
    text.Gauge("corvane_signal_cn0_dbhz", "Carrier to noise density of a tracked signal.");
    std::map<int, int> signals;
    for (const SSky::SChannel& channel : channels) {
        const int number = ++signals[channel.prn];
        if (channel.cn0) {
            text.Sample({{"system", SystemName(channel.prn)},
                         {"prn", std::to_string(channel.prn)},
                         {"signal", std::to_string(number)}},
                        *channel.cn0);
        }
    }
    text.Gauge("corvane_sky_age_seconds", "Since the tracked satellites were published.");
    text.Sample(state.Sky()->Age(now));
}

void AddLogs(CMetricsText& text, const CState& state) {
    text.Counter("corvane_records_total", "Records of a log of the receiver.");
    for (const auto& [key, log] : state.Logs().Logs()) {
        text.Sample(
            {{"port", key.first}, {"id", std::to_string(key.second)}, {"log", LogName(key.second)}},
            static_cast<double>(log.count));
    }
    text.Counter("corvane_sentences_total",
                 "Sentences from a port by the result of their checksum.");
    for (const auto& [key, kept] : state.Statuses()) {
        if (const auto counts = ChecksumCounts(kept.message)) {
            text.Sample({{"port", key.first}, {"result", "good"}},
                        static_cast<double>(counts->good));
            text.Sample({{"port", key.first}, {"result", "rejected"}},
                        static_cast<double>(counts->rejected));
        }
    }
}

void AddPorts(CMetricsText& text, const CState& state, const SNow& now) {
    text.Counter("corvane_port_chunks_total", "Chunks of bytes from a port.");
    for (const auto& [name, port] : state.Ports()) {
        text.Sample({{"port", name}}, static_cast<double>(port.received));
    }
    text.Gauge("corvane_port_silence_seconds", "Since a port has brought bytes.");
    for (const auto& [name, port] : state.Ports()) {
        if (!port.lastBytes.IsZero()) {
            text.Sample({{"port", name}}, (now.monotonic - port.lastBytes).AsSeconds());
        }
    }
}

void AddReceiver(CMetricsText& text, const CState& state) {
    const auto* const idle = state.FindStatus("NovatelReceiverStatus", "ReceiverCPUIdlePercentage");
    double percent = 0.0;
    if (idle != nullptr && Core::Utilities::ParseDouble(idle->message.value, percent)) {
        text.Gauge("corvane_receiver_idle_ratio", "Idle share of the receiver's processor.");
        text.Sample(percent / 100.0);
    }
    text.Gauge("corvane_diagnostics_raised", "How many diagnostics are raised.");
    text.Sample(static_cast<double>(state.Diagnostics().size()));
    text.Gauge("corvane_diagnostic_raised", "1 for each diagnostic that is raised.");
    for (const auto& [key, raised] : state.Diagnostics()) {
        text.Sample({{"name", std::get<0>(key)},
                     {"code", std::to_string(std::get<1>(key))},
                     {"sub", std::to_string(std::get<2>(key))}},
                    1);
    }
}

void AddHub(CMetricsText& text, const CState& state, double uptime) {
    text.Counter("corvane_events_total", "Events that programs have told, by level.");
    text.Sample({{"level", "warning"}},
                static_cast<double>(state.EventCount(EEventLevel::warning)));
    text.Sample({{"level", "error"}}, static_cast<double>(state.EventCount(EEventLevel::error)));
    text.Counter("corvane_link_dropped_messages_total",
                 "Messages that programs had to drop, since the hub took none.");
    text.Sample(static_cast<double>(DroppedMessages(state)));
    std::map<std::string, int> connected;
    for (const auto& [sender, process] : state.Processes()) {
        connected[process.process] += process.isConnected ? 1 : 0;
    }
    text.Gauge("corvane_programs_connected", "Connections of a program.");
    for (const auto& [process, number] : connected) {
        text.Sample({{"process", process}}, number);
    }
    text.Counter("corvane_hub_messages_total", "Messages that the hub has taken.");
    text.Sample(static_cast<double>(state.MessageCount()));
    text.Counter("corvane_hub_refused_messages_total", "Messages that were wrong or had no room.");
    text.Sample(static_cast<double>(state.RefusedCount()));
    text.Counter("corvane_hub_raw_bytes_total", "Bytes of the receiver in raw blocks.");
    text.Sample(static_cast<double>(state.RawByteCount()));
    text.Gauge("corvane_hub_uptime_seconds", "Since the hub was started.");
    text.Sample(uptime);
    text.Gauge("corvane_hub_build_info", "Always 1; the version is in the label.");
    text.Sample({{"version", CORVANE_VERSION}}, 1);
}

} // namespace

std::string MetricsText(const CState& state, const SNow& now, double uptime) {
    CMetricsText text;
    AddHealth(text, state, now);
    AddSolution(text, state, now);
    AddSignals(text, state, now);
    AddLogs(text, state);
    AddPorts(text, state, now);
    AddReceiver(text, state);
    AddHub(text, state, uptime);
    return text.Text();
}

} // namespace Hub
