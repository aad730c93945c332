#include "ConfigList.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace Ctl {

namespace {

using TValues = std::map<std::string, std::string>;

TValues ValuesOf(CConfig& config, const std::string& section) {
    return config.GetSection(section).value_or(TValues());
}

/// The sections of the known keys, then those of the file that are not among them.
std::vector<std::string> Sections(CConfig& config) {
    std::vector<std::string> sections;
    const auto add = [&](const std::string& section) {
        if (std::find(sections.begin(), sections.end(), section) == sections.end()) {
            sections.push_back(section);
        }
    };
    for (const SConfigKey& known : ConfigKeys()) {
        add(known.section);
    }
    for (const std::string& section : config.GetSections()) {
        add(section);
    }
    return sections;
}

} // namespace

std::string WhyNotReadable(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        return std::strerror(EISDIR);
    }
    if (access(path.c_str(), R_OK) == 0 || errno == ENOENT || errno == ENOTDIR) {
        return "";
    }
    return std::strerror(errno);
}

std::optional<std::string> ValueIn(CConfig& config, const std::string& section,
                                   const std::string& key) {
    const TValues values = ValuesOf(config, section);
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::string DefaultOf(CConfig& config, const std::string& section, const SConfigKey& key) {
    if (key.defaultKey == nullptr) {
        return key.defaultValue;
    }
    const SConfigKey& other = *FindConfigKey(section, key.defaultKey);
    const auto value = ValueIn(config, section, other.key);
    return value ? *value : DefaultOf(config, section, other);
}

std::vector<SSetting> Settings(CConfig& config, const std::string& section, bool wantsAll) {
    std::vector<SSetting> settings;
    for (const std::string& each :
         section.empty() ? Sections(config) : std::vector<std::string>{section}) {
        TValues values = ValuesOf(config, each);
        for (const SConfigKey& known : ConfigKeys()) {
            const bool isOfSection = FindConfigKey(each, known.key) == &known;
            const auto value = values.find(known.key);
            if (isOfSection && value != values.end()) {
                settings.push_back({each, known.key, value->second, true, &known});
                values.erase(value);
            } else if (isOfSection && wantsAll) {
                settings.push_back(
                    {each, known.key, DefaultOf(config, each, known), false, &known});
            }
        }
        for (const auto& [key, value] : values) {
            settings.push_back({each, key, value, true, nullptr});
        }
    }
    return settings;
}

std::string Text(const SSetting& setting, bool isExplained) {
    std::string text = setting.key + " = " + setting.value;
    if (isExplained && !setting.isSet) {
        text += "    (not set)";
    }
    if (setting.known == nullptr) {
        text += "    (nothing reads it)";
    }
    text += '\n';
    if (isExplained && setting.known != nullptr) {
        text += "    " + std::string(setting.known->meaning) + "\n    " + KindText(*setting.known) +
                "\n    in force " + EffectText(setting.known->effect) + "\n";
    }
    return text;
}

TJSON Document(const SSetting& setting) {
    TJSON document = {{"section", setting.section},
                      {"key", setting.key},
                      {"value", setting.value},
                      {"isSet", setting.isSet},
                      {"isKnown", setting.known != nullptr}};
    if (setting.known != nullptr) {
        document["kind"] = KindText(*setting.known);
        document["meaning"] = setting.known->meaning;
        document["inForce"] = EffectText(setting.known->effect);
    }
    return document;
}

} // namespace Ctl
