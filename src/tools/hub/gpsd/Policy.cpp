#include "hub/gpsd/Policy.h"

#include "hub/gpsd/Reports.h"

#include <nlohmann/json.hpp>

#include <array>
#include <utility>

namespace Hub::GPSD {

namespace {

using nlohmann::json;

std::string Wrong(const std::string& key, const char* kind) {
    return "'" + key + "' must be " + kind;
}

std::string SetFlag(bool& flag, const std::string& key, const json& value) {
    if (!value.is_boolean()) {
        return Wrong(key, "true or false");
    }
    flag = value.get<bool>();
    return {};
}

std::string SetRaw(int& raw, const json& value) {
    if (!value.is_number_integer() || value < 0 || value > 2) {
        return Wrong("raw", "0, 1 or 2");
    }
    raw = value.get<int>();
    return {};
}

std::string SetDevice(std::string& device, const json& value) {
    if (!value.is_string()) {
        return Wrong("device", "a text");
    }
    auto name = value.get<std::string>();
    if (!name.empty() && name != kDevice) {
        return std::string("there is no such device; the only one is '") + kDevice + "'";
    }
    device = std::move(name);
    return {};
}

std::string SetMember(SPolicy& policy, const std::string& key, const json& value) {
    static constexpr std::array<std::pair<std::string_view, bool SPolicy::*>, 7> kFlags = {{
        {"enable", &SPolicy::isEnabled},
        {"json", &SPolicy::wantsJSON},
        {"nmea", &SPolicy::wantsNMEA},
        {"scaled", &SPolicy::isScaled},
        {"timing", &SPolicy::wantsTiming},
        {"split24", &SPolicy::splits24},
        {"pps", &SPolicy::wantsPPS},
    }};
    for (const auto& [name, flag] : kFlags) {
        if (key == name) {
            return SetFlag(policy.*flag, key, value);
        }
    }
    if (key == "raw") {
        return SetRaw(policy.raw, value);
    }
    if (key == "device") {
        return SetDevice(policy.device, value);
    }
    if (key == "class") {
        return value == "WATCH" ? std::string() : Wrong(key, "\"WATCH\"");
    }
    return "unknown attribute '" + key + "'";
}

} // namespace

std::string Change(SPolicy& policy, std::string_view argument) {
    const json members = json::parse(argument, nullptr, false);
    if (!members.is_object()) {
        return "not a JSON object";
    }
    SPolicy changed = policy;
    changed.isEnabled = true;
    for (const auto& [key, value] : members.items()) {
        if (std::string why = SetMember(changed, key, value); !why.empty()) {
            return why;
        }
    }
    policy = changed;
    return {};
}

} // namespace Hub::GPSD
