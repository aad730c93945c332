// The values of a configuration file, with those over it that could not be written to it.
#pragma once

#include "ConfigFile.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What CConfig is made of; may be used by several threads.
class CConfigValues {
public:
    explicit CConfigValues(std::string path) : m_file(std::move(path)) {}

    std::optional<std::string> Get(const std::string& section, const std::string& key);

    /// The sections that have a header, and those of values that are not written yet.
    std::vector<std::string> GetSections();

    /// The values of a section by key; nothing when there is no such section.
    std::optional<std::map<std::string, std::string>> GetSection(const std::string& section);

    /// Sets the value, or removes the key when there is none, and writes all that is not written
    /// yet. False if that failed, or if an INI file cannot carry it: then nothing changes. Why is
    /// told on standard error.
    bool Change(const std::string& section, const std::string& key,
                std::optional<std::string> value);

    /// Writes all that is not written yet.
    bool Save();

    /// Tells on standard error that a value is refused, and why.
    void TellRefusal(const std::string& section, const std::string& key, const char* reason);

    /// Tells, once for each value, that it does not read as `kind`.
    void TellUnreadable(const std::string& section, const std::string& key,
                        const std::string& value, const char* kind);

private:
    using Key = std::pair<std::string, std::string>;

    std::string WriteUnsaved();

    std::mutex m_mutex;
    CConfigFile m_file;
    std::map<Key, std::optional<std::string>> m_unsaved;
    std::map<Key, std::string> m_toldUnreadable;
};
