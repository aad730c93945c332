#include "hub/state/ReceiverView.h"

#include "platform/Text.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace Hub {

using nlohmann::json;

namespace {

constexpr char kReceiver[] = "NovatelReceiverStatus";
constexpr char kConstellation[] = "NovatelConstellationManager";
/// Of the component that is the receiver's card.
constexpr std::string_view kCardType = "1";
constexpr int kMostComponents = 16;
constexpr int kMostGroups = 32;

json Text(const CState& state, const std::string& name, const std::string& key) {
    const SKept<SStatus>* const status = state.FindStatus(name, key);
    return status == nullptr ? json() : json(status->message.value);
}

json Whole(std::string_view text) {
    std::int32_t value = 0;
    return Core::Utilities::ParseInt(text, value) ? json(value) : json();
}

json Whole(const CState& state, const std::string& name, const std::string& key) {
    const SKept<SStatus>* const status = state.FindStatus(name, key);
    return status == nullptr ? json() : Whole(status->message.value);
}

std::string ComponentKey(int number, const char* member) {
    return std::string("component_") + (number < 10 ? "0" : "") + std::to_string(number) + "." +
           member;
}

void AddCard(json& receiver, const CState& state) {
    int card = -1;
    for (int i = 0; i < kMostComponents && card < 0; ++i) {
        const auto* const type = state.FindStatus(kReceiver, ComponentKey(i, "componentType"));
        card = type != nullptr && type->message.value == kCardType ? i : -1;
    }
    struct SMember {
        const char* name;
        const char* key;
    };
    constexpr std::array kMembers = {SMember{"model", "model"}, SMember{"serial", "psn"},
                                     SMember{"hardware", "hardwareVersion"},
                                     SMember{"firmware", "softwareVersion"}};
    for (const SMember& member : kMembers) {
        receiver[member.name] =
            card < 0 ? json() : Text(state, kReceiver, ComponentKey(card, member.key));
    }
}

/// Of a value such as "0x00000008: Antenna not powered,".
json Word(const CState& state, const char* key, const SNow& now) {
    const SKept<SStatus>* const status = state.FindStatus(kReceiver, key);
    if (status == nullptr) {
        return {};
    }
    const std::string_view value = status->message.value;
    const auto parts = Core::Utilities::Split(value, ':', 2);
    json bits = json::array();
    // A word of 0 may be told in words as well.
    const bool isAnySet = parts[0].find_first_not_of("0x") != std::string_view::npos;
    if (isAnySet && parts.size() > 1) {
        for (const std::string_view words : Core::Utilities::Split(parts[1], ',')) {
            if (const std::string_view trimmed = Core::Utilities::Trim(words); !trimmed.empty()) {
                bits.push_back({{"words", trimmed}});
            }
        }
    }
    return {{"word", Core::Utilities::Trim(parts[0])}, {"bits", bits}, {"age", status->Age(now)}};
}

json Idle(const CState& state) {
    const auto* const status = state.FindStatus(kReceiver, "ReceiverCPUIdlePercentage");
    double idle = 0.0;
    return status != nullptr && Core::Utilities::ParseDouble(status->message.value, idle)
               ? json(idle)
               : json();
}

json Ports(const CState& state) {
    json ports = json::array();
    for (const char* const name : {"COM1", "COM2", "USB1", "USB2", "USB3"}) {
        const auto* const status = state.FindStatus(kReceiver, std::string(name) + "_Config");
        if (status == nullptr) {
            continue;
        }
        auto fields = Core::Utilities::Split(status->message.value, ',', 3);
        fields.resize(3);
        ports.push_back({{"name", name},
                         {"baud", Whole(fields[0])},
                         {"transmit", Core::Utilities::Trim(fields[1])},
                         {"receive", Core::Utilities::Trim(fields[2])}});
    }
    return ports;
}

/// Of a value such as " 8 GPSL1,  6 GLOL1, ".
std::string GroupWords(std::string_view value) {
    std::string words;
    for (const std::string_view part : Core::Utilities::Split(value, ',')) {
        if (const std::string_view trimmed = Core::Utilities::Trim(part); !trimmed.empty()) {
            words.append(words.empty() ? "" : ", ").append(trimmed);
        }
    }
    return words;
}

json ChannelConfiguration(const CState& state) {
    json groups = json::array();
    for (int i = 1; i <= kMostGroups; ++i) {
        const auto* const status =
            state.FindStatus(kConstellation, "channel_config_" + std::to_string(i));
        if (status != nullptr) {
            groups.push_back({{"number", i}, {"words", GroupWords(status->message.value)}});
        }
    }
    json members = {{"current", Whole(state, kConstellation, "current_channel_configuration")},
                    {"desired", Whole(state, kConstellation, "desired_channel_configuration")},
                    {"available", Whole(state, kConstellation, "number_channel_configs_available")},
                    {"groups", groups}};
    const bool isTold = !members["current"].is_null() || !members["desired"].is_null();
    return isTold ? members : json();
}

} // namespace

json ReceiverJSON(const CState& state, const SNow& now) {
    json receiver = {{"idle", Idle(state)},
                     {"status", Word(state, "ReceiverStatus", now)},
                     {"error", Word(state, "ReceiverError", now)},
                     {"ports", Ports(state)},
                     {"channelConfiguration", ChannelConfiguration(state)}};
    AddCard(receiver, state);
    return receiver;
}

} // namespace Hub
