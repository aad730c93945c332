#include "ConfigValues.h"

#include "JSONText.h"
#include "platform/DebugPrint.h"

#include <algorithm>

namespace {

/// On one line whatever the text holds.
std::string Quoted(const std::string& text) {
    std::string quoted;
    JSONText::AppendString(quoted, text);
    return quoted;
}

/// Why an INI file cannot carry this; nullptr when it can. A key that it cannot carry may still be
/// removed: it is not there.
const char* WhyNot(const std::string& section, const std::string& key,
                   const std::optional<std::string>& value) {
    if (!value) {
        return nullptr;
    }
    if (const char* const reason = CConfigText::WhyNoSection(section)) {
        return reason;
    }
    if (const char* const reason = CConfigText::WhyNoKey(key)) {
        return reason;
    }
    return CConfigText::WhyNoValue(*value);
}

} // namespace

std::optional<std::string> CConfigValues::Get(const std::string& section, const std::string& key) {
    const std::lock_guard lock(m_mutex);
    const auto unsaved = m_unsaved.find({section, key});
    return unsaved != m_unsaved.end() ? unsaved->second : m_file.Read().Get(section, key);
}

std::vector<std::string> CConfigValues::GetSections() {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> sections = m_file.Read().GetSections();
    for (const auto& [key, value] : m_unsaved) {
        if (value && std::find(sections.begin(), sections.end(), key.first) == sections.end()) {
            sections.push_back(key.first);
        }
    }
    return sections;
}

std::optional<std::map<std::string, std::string>>
CConfigValues::GetSection(const std::string& section) {
    const std::lock_guard lock(m_mutex);
    auto values = m_file.Read().GetSection(section);
    for (const auto& [key, value] : m_unsaved) {
        if (key.first != section) {
            continue;
        }
        if (value) {
            values = values.value_or(std::map<std::string, std::string>());
            (*values)[key.second] = *value;
        } else if (values) {
            values->erase(key.second);
        }
    }
    return values;
}

bool CConfigValues::Change(const std::string& section, const std::string& key,
                           std::optional<std::string> value) {
    if (const char* const reason = WhyNot(section, key, value)) {
        TellRefusal(section, key, reason);
        return false;
    }
    const std::lock_guard lock(m_mutex);
    m_unsaved[{section, key}] = std::move(value);
    const std::string reason = WriteUnsaved();
    if (!reason.empty()) {
        deprintf("%s: [%s] %s holds for this process only: %s\n", m_file.Path().c_str(),
                 section.c_str(), key.c_str(), reason.c_str());
    }
    return reason.empty();
}

bool CConfigValues::Save() {
    const std::lock_guard lock(m_mutex);
    const std::string reason = WriteUnsaved();
    if (!reason.empty()) {
        deprintf("%s: what was set holds for this process only: %s\n", m_file.Path().c_str(),
                 reason.c_str());
    }
    return reason.empty();
}

void CConfigValues::TellRefusal(const std::string& section, const std::string& key,
                                const char* reason) {
    deprintf("%s: [%s] %s is not changed: %s\n", m_file.Path().c_str(), Quoted(section).c_str(),
             Quoted(key).c_str(), reason);
}

void CConfigValues::TellUnreadable(const std::string& section, const std::string& key,
                                   const std::string& value, const char* kind) {
    const std::lock_guard lock(m_mutex);
    const auto [told, isNew] = m_toldUnreadable.try_emplace({section, key}, value);
    if (isNew || told->second != value) {
        told->second = value;
        deprintf("%s: [%s] %s = %s is not %s, the default is used\n", m_file.Path().c_str(),
                 section.c_str(), key.c_str(), value.c_str(), kind);
    }
}

std::string CConfigValues::WriteUnsaved() {
    if (m_unsaved.empty()) {
        return {};
    }
    std::string reason = m_file.Change([this](CConfigText& text) {
        for (const auto& [key, value] : m_unsaved) {
            if (value) {
                text.Set(key.first, key.second, *value);
            } else {
                text.Remove(key.first, key.second);
            }
        }
    });
    if (reason.empty()) {
        m_unsaved.clear();
    }
    return reason;
}
