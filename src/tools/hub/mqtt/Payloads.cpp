#include "hub/mqtt/Payloads.h"

#include "hub/Names.h"
#include "hub/state/DiagnosticWords.h"
#include "hub/state/Presentation.h"
#include "platform/Geodesy.h"

#include <algorithm>
#include <mosquitto.h>
#include <nlohmann/json.hpp>

namespace Hub {

using nlohmann::json;

namespace {

std::string Text(const json& document) {
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace

std::string TopicLevel(std::string_view name) {
    const auto isPlain = [](char byte) {
        return byte != '/' && byte != '+' && byte != '#' && byte != '\x7F' &&
               static_cast<unsigned char>(byte) >= ' ';
    };
    std::string level = Escaped(name, isPlain);
    if (mosquitto_validate_utf8(level.data(), static_cast<int>(level.size())) != MOSQ_ERR_SUCCESS) {
        level = Escaped(name, [&](char byte) {
            return isPlain(byte) && static_cast<unsigned char>(byte) < 0x80;
        });
    }
    return level;
}

std::string StatusTopic(const SStatus& status) {
    return "status/" + TopicLevel(status.name) + "/" + TopicLevel(status.key);
}

std::string DiagnosticTopic(const SDiagnostic& diagnostic) {
    return "diagnostic/" + std::to_string(diagnostic.code) + "/" + std::to_string(diagnostic.sub) +
           "/" + TopicLevel(diagnostic.name);
}

std::string PositionPayload(const SSolution& solution, std::optional<double> geoid) {
    return Text(SolutionJSON(solution, geoid));
}

std::string SkyPayload(const CSkyView& view) {
    json members = SkyJSON(view);
    members["time"] = view.Time() ? json(*view.Time()) : json();
    return Text(members);
}

std::string BasePayload(const SBase& base) {
    const Core::Maths::SGeodetic place = Core::Maths::ToGeodetic({base.x, base.y, base.z});
    return Text({{"time", base.time},
                 {"latitude", Core::Maths::Degrees(place.latitude)},
                 {"longitude", Core::Maths::Degrees(place.longitude)},
                 {"height", place.height},
                 {"x", base.x},
                 {"y", base.y},
                 {"z", base.z}});
}

std::string StatusPayload(const SStatus& status) {
    return Text({{"value", status.value}, {"time", status.time}});
}

std::string EventPayload(const SEvent& event) {
    return Text({{"time", event.time},
                 {"level", event.level == EEventLevel::error ? "error" : "warning"},
                 {"name", event.name},
                 {"text", event.text}});
}

std::string DiagnosticPayload(const SDiagnostic& diagnostic) {
    return Text({{"raised", diagnostic.isRaised},
                 {"time", diagnostic.time},
                 {"value", diagnostic.isRaised ? json(diagnostic.value) : json()},
                 {"words", DiagnosticWords(diagnostic.code, diagnostic.sub)}});
}

std::string HealthPayload(const SHealth& health, double time) {
    return Text({{"state", health.Name()}, {"words", health.words}, {"time", time}});
}

} // namespace Hub
