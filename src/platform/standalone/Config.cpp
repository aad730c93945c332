#include "platform/Config.h"

#include "ConfigValues.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr const char* kDefaultPath = "/etc/corvane/corvane.conf";

constexpr std::array<std::pair<std::string_view, bool>, 8> kBooleans = {{
    {"true", true},
    {"false", false},
    {"yes", true},
    {"no", false},
    {"on", true},
    {"off", false},
    {"1", true},
    {"0", false},
}};

/// Upper and lower case of ASCII letters count as the same.
bool IsSameWord(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

bool ParseBoolean(std::string_view text, bool& value) {
    for (const auto& [word, meaning] : kBooleans) {
        if (IsSameWord(text, word)) {
            value = meaning;
            return true;
        }
    }
    return false;
}

/// The process-wide object and how many handles on it are out.
struct SSystemConfig {
    std::mutex mutex;
    std::unique_ptr<CConfig> config;
    std::size_t handles = 0;
};

SSystemConfig& SystemConfig() {
    static SSystemConfig system;
    return system;
}

} // namespace

class CConfig::Impl : public CConfigValues {
public:
    using CConfigValues::CConfigValues;

    /// `parse` is one of the parsers above and in platform/Text.h.
    template <typename T>
    T GetAs(const std::string& section, const std::string& key, T defaultValue, const char* kind,
            bool (*parse)(std::string_view, T&)) {
        const std::optional<std::string> text = Get(section, key);
        T value = defaultValue;
        if (text && !parse(*text, value)) {
            TellUnreadable(section, key, *text, kind);
        }
        return value;
    }
};

CConfig::CConfig(std::string path) : m_impl(std::make_unique<Impl>(std::move(path))) {
}

CConfig::~CConfig() = default;

std::string CConfig::SystemPath() {
    const char* const path = std::getenv("CORVANE_CONFIG");
    return path == nullptr || *path == '\0' ? kDefaultPath : path;
}

CConfig* CConfig::GetSystemConfig() {
    SSystemConfig& system = SystemConfig();
    const std::lock_guard lock(system.mutex);
    if (++system.handles == 1) {
        system.config = std::make_unique<CConfig>(SystemPath());
    }
    return system.config.get();
}

void CConfig::Release() {
    SSystemConfig& system = SystemConfig();
    const std::lock_guard lock(system.mutex);
    if (system.config.get() == this && --system.handles == 0) {
        system.config.reset();
    }
}

std::string CConfig::GetString(const std::string& section, const std::string& key,
                               const std::string& defaultValue) {
    return m_impl->Get(section, key).value_or(defaultValue);
}

std::int32_t CConfig::GetInteger(const std::string& section, const std::string& key,
                                 std::int32_t defaultValue) {
    return m_impl->GetAs(section, key, defaultValue, "an integer", Core::Utilities::ParseInt);
}

double CConfig::GetDouble(const std::string& section, const std::string& key, double defaultValue) {
    return m_impl->GetAs(section, key, defaultValue, "a number", Core::Utilities::ParseDouble);
}

bool CConfig::GetBoolean(const std::string& section, const std::string& key, bool defaultValue) {
    return m_impl->GetAs(section, key, defaultValue, "a boolean", ParseBoolean);
}

std::vector<std::string> CConfig::GetSections() {
    return m_impl->GetSections();
}

std::optional<std::map<std::string, std::string>> CConfig::GetSection(const std::string& section) {
    return m_impl->GetSection(section);
}

bool CConfig::SetString(const std::string& section, const std::string& key,
                        const std::string& value) {
    return m_impl->Change(section, key, value);
}

bool CConfig::SetInteger(const std::string& section, const std::string& key, std::int32_t value) {
    return SetString(section, key, std::to_string(value));
}

bool CConfig::SetDouble(const std::string& section, const std::string& key, double value) {
    if (!std::isfinite(value)) {
        m_impl->TellRefusal(section, key, "the value is not finite");
        return false;
    }
    std::array<char, 32> buffer; // the longest double, -2.2250738585072014e-308, has 24
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return SetString(section, key, std::string(buffer.data(), end));
}

bool CConfig::SetBoolean(const std::string& section, const std::string& key, bool value) {
    return SetString(section, key, value ? "1" : "0");
}

bool CConfig::Remove(const std::string& section, const std::string& key) {
    return m_impl->Change(section, key, std::nullopt);
}

bool CConfig::Save() {
    return m_impl->Save();
}
