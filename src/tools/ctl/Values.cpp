#include "Values.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <numeric>

namespace Ctl {

namespace {

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

bool IsOneOf(const std::string& word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

/// How many letters must be added, left out or changed to make one word of the other.
std::size_t Distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<bool> ParseSwitch(std::string_view text) {
    const std::string word = Lower(text);
    if (IsOneOf(word, {"on", "true", "yes", "1"})) {
        return true;
    }
    if (IsOneOf(word, {"off", "false", "no", "0"})) {
        return false;
    }
    return std::nullopt;
}

std::optional<std::int32_t> ParseWhole(std::string_view text) {
    std::int32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::optional<double> ParseNumber(std::string_view text) {
    double value = 0.0;
    const bool isNumber = Core::Utilities::Trim(text).size() == text.size() &&
                          Core::Utilities::ParseDouble(text, value);
    return isNumber ? std::optional(value) : std::nullopt;
}

BAtomC ParseCallArgument(std::string_view text) {
    if (text.starts_with(kTextMark)) {
        return std::string(text.substr(kTextMark.size()));
    }
    if (const auto whole = ParseWhole(text)) {
        return *whole;
    }
    if (const auto number = ParseNumber(text)) {
        return *number;
    }
    return std::string(text);
}

std::string NumberText(double number) {
    std::array<char, 32> buffer; // the longest double has 24 characters
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

std::string FixedText(double number, int decimals) {
    std::array<char, 512> text; // the largest double has 309 digits
    std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
    return text.data();
}

std::string SwitchText(bool isOn) {
    return isOn ? "on" : "off";
}

TJSON JSONOf(const BAtomC& value) {
    if (const auto integer = value.AsInteger()) {
        return *integer;
    }
    if (const auto number = value.AsDouble()) {
        return *number;
    }
    if (const std::string* const text = value.AsText()) {
        return *text;
    }
    if (const BListC* const list = value.AsList()) {
        TJSON values = TJSON::array();
        for (const BAtomC& each : *list) {
            values.push_back(JSONOf(each));
        }
        return values;
    }
    if (const BDictionaryC* const dictionary = value.AsDictionary()) {
        TJSON members = TJSON::object();
        for (const auto& [name, each] : *dictionary) {
            members[name] = JSONOf(each);
        }
        return members;
    }
    return nullptr;
}

std::string Nearest(std::string_view word, const std::vector<std::string>& candidates) {
    std::string nearest;
    // A third of a word may be wrong; more is another word.
    std::size_t least = word.size() / 3 + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = Distance(Lower(word), Lower(candidate));
        if (distance < least || (distance == least && nearest.empty())) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace Ctl
