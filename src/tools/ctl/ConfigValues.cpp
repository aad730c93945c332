// What values the keys of the configuration take.

#include "ConfigKeys.h"
#include "Values.h"
#include "platform/Text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cmath>
#include <netinet/in.h>
#include <string_view>

namespace Ctl {

namespace {

using EType = SConfigKey::EType;

bool IsWithin(const SConfigKey& key, double number) {
    return number >= key.least && number <= key.most;
}

bool IsChoice(const SConfigKey& key, const std::string& value) {
    const auto choices = Core::Utilities::Split(key.choices, '|');
    return std::find(choices.begin(), choices.end(), value) != choices.end();
}

bool IsAddress(const std::string& value) {
    in_addr address{};
    return inet_pton(AF_INET, value.c_str(), &address) == 1;
}

bool IsPlace(const std::string& value) {
    const auto fields = Core::Utilities::Split(value, ',');
    if (fields.size() != 3) {
        return false;
    }
    const auto latitude = ParseNumber(fields[0]);
    const auto longitude = ParseNumber(fields[1]);
    return latitude && longitude && ParseNumber(fields[2]) && std::abs(*latitude) <= 90.0 &&
           std::abs(*longitude) <= 360.0;
}

std::string RangeText(const SConfigKey& key) {
    const bool hasLeast = std::isfinite(key.least);
    if (std::isfinite(key.most)) {
        return (hasLeast ? " " + NumberText(key.least) : "") + " to " + NumberText(key.most);
    }
    return hasLeast ? ", " + NumberText(key.least) + " or more" : "";
}

} // namespace

std::string KindText(const SConfigKey& key) {
    switch (key.type) {
    case EType::integer:
        return "whole number" + RangeText(key);
    case EType::number:
        return "number" + RangeText(key);
    case EType::flag:
        return "1 or 0 (on or off)";
    case EType::choice:
        return key.choices;
    case EType::address:
        return "IPv4 address";
    case EType::place:
        return "latitude,longitude,height (degrees, metres)";
    case EType::text:
        break;
    }
    return "text";
}

std::optional<std::string> StoredValue(const SConfigKey& key, const std::string& value) {
    bool isGood = true;
    if (key.type == EType::integer) {
        const auto number = ParseWhole(value);
        isGood = number && IsWithin(key, *number);
    } else if (key.type == EType::number) {
        const auto number = ParseNumber(value);
        isGood = number && IsWithin(key, *number);
    } else if (key.type == EType::flag) {
        const auto isOn = ParseSwitch(value);
        return isOn ? std::optional<std::string>(*isOn ? "1" : "0") : std::nullopt;
    } else if (key.type == EType::choice) {
        isGood = IsChoice(key, value);
    } else if (key.type == EType::address) {
        isGood = IsAddress(value);
    } else if (key.type == EType::place) {
        isGood = IsPlace(value);
    }
    return isGood ? std::optional(value) : std::nullopt;
}

} // namespace Ctl
