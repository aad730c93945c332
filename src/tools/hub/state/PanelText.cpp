// The panel: everything about the programs, the receiver and what they have told.

#include "hub/state/Counts.h"
#include "hub/state/DiagnosticWords.h"
#include "hub/state/Health.h"
#include "hub/state/Presentation.h"
#include "hub/state/ReceiverView.h"

#include <nlohmann/json.hpp>

namespace Hub {

using nlohmann::json;

namespace {

json Processes(const CState& state) {
    json list = json::array();
    for (const auto& [sender, process] : state.Processes()) {
        list.push_back({{"process", process.process},
                        {"pid", process.pid},
                        {"version", process.version},
                        {"isConnected", process.isConnected},
                        {"since", process.since},
                        {"names", process.names}});
    }
    return list;
}

json Diagnostics(const CState& state) {
    json list = json::array();
    for (const auto& [key, raised] : state.Diagnostics()) {
        const SDiagnostic& diagnostic = raised.diagnostic;
        list.push_back({{"name", diagnostic.name},
                        {"code", diagnostic.code},
                        {"sub", diagnostic.sub},
                        {"value", diagnostic.value},
                        {"since", raised.since},
                        {"words", DiagnosticWords(diagnostic.code, diagnostic.sub)}});
    }
    return list;
}

json Events(const CState& state) {
    json list = json::array();
    for (auto event = state.Events().rbegin(); event != state.Events().rend(); ++event) {
        list.push_back({{"number", event->number},
                        {"time", event->event.time},
                        {"level", event->event.level == EEventLevel::error ? "error" : "warning"},
                        {"name", event->event.name},
                        {"text", event->event.text}});
    }
    return list;
}

json Statuses(const CState& state, const SNow& now) {
    json list = json::array();
    for (const auto& [key, kept] : state.Statuses()) {
        const SStatus& status = kept.message;
        list.push_back({{"name", status.name},
                        {"key", status.key},
                        {"level", status.level == EStatusLevel::essential ? "essential" : "info"},
                        {"value", status.value},
                        {"time", status.time},
                        {"age", kept.Age(now)}});
    }
    return list;
}

json Logs(const CState& state, const SNow& now) {
    json list = json::array();
    for (const auto& [key, log] : state.Logs().Logs()) {
        list.push_back({{"name", key.first},
                        {"id", key.second},
                        {"log", LogName(key.second)},
                        {"count", log.count},
                        {"rate", log.Rate(now.monotonic)},
                        {"age", (now.monotonic - log.last).AsSeconds()}});
    }
    return list;
}

json Checksums(const CState& state, const SNow& now) {
    json list = json::array();
    for (const auto& [key, kept] : state.Statuses()) {
        const auto counts = ChecksumCounts(kept.message);
        if (counts) {
            list.push_back({{"name", key.first},
                            {"good", counts->good},
                            {"rejected", counts->rejected},
                            {"age", kept.Age(now)}});
        }
    }
    return list;
}

json Activity(const CState& state, const SNow& now) {
    json list = json::array();
    for (const auto& [name, port] : state.Ports()) {
        list.push_back({{"name", name},
                        {"received", port.last.message.received},
                        {"sentences", port.last.message.sentences},
                        {"age", port.last.Age(now)}});
    }
    return list;
}

} // namespace

std::string PanelText(const CState& state, const SNow& now, double uptime) {
    const SHealth health = Judge(state, now);
    const json frame = {{"now", now.wall},
                        {"version", CORVANE_VERSION},
                        {"uptime", uptime},
                        {"health", {{"state", health.Name()}, {"words", health.words}}},
                        {"processes", Processes(state)},
                        {"receiver", ReceiverJSON(state, now)},
                        {"diagnostics", Diagnostics(state)},
                        {"events", Events(state)},
                        {"statuses", Statuses(state, now)},
                        {"logs", Logs(state, now)},
                        {"checksums", Checksums(state, now)},
                        {"activity", Activity(state, now)},
                        {"link",
                         {{"dropped", DroppedMessages(state)},
                          {"messages", state.MessageCount()},
                          {"refused", state.RefusedCount()}}}};
    return frame.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace Hub
