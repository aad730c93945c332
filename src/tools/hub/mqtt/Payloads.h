// What is published to MQTT, as docs/mqtt.md has it.
#pragma once

#include "hub/Messages.h"
#include "hub/state/Health.h"
#include "hub/state/SkyView.h"

#include <optional>
#include <string>
#include <string_view>

namespace Hub {

/// One level of a topic: "/", "+", "#" and control characters are written as %XX, and in a text
/// that is no UTF-8 every byte that is no ASCII.
std::string TopicLevel(std::string_view name);

std::string StatusTopic(const SStatus& status);
std::string DiagnosticTopic(const SDiagnostic& diagnostic);

std::string PositionPayload(const SSolution& solution, std::optional<double> geoid);
std::string SkyPayload(const CSkyView& view);
std::string BasePayload(const SBase& base);
std::string StatusPayload(const SStatus& status);
std::string EventPayload(const SEvent& event);
std::string DiagnosticPayload(const SDiagnostic& diagnostic);
std::string HealthPayload(const SHealth& health, double time);

} // namespace Hub
