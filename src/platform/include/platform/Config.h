// The configuration database: values by section and key, shared by all programs of the machine.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Reads and writes the INI file named by the environment's CORVANE_CONFIG, else
/// /etc/corvane/corvane.conf. A missing file is an empty database. Reads see what other programs
/// have written since; writes are durable and whole before the call returns.
class CConfig {
public:
    /// The database of this machine. The handle is counted: pair every call with Release().
    static CConfig* GetSystemConfig();
    void Release();
    /// Where this machine's database is.
    static std::string SystemPath();

    /// Opens the file at `path`, for programs and tests that name one themselves.
    explicit CConfig(std::string path);
    ~CConfig();
    CConfig(const CConfig&) = delete;
    CConfig& operator=(const CConfig&) = delete;

    /// Each returns the default when the key is missing; the number and boolean forms also when
    /// the value does not read as one (integers as Core::Utilities::ParseInt reads them, booleans
    /// from true/false, yes/no, on/off, 1/0), saying so once on standard error.
    std::string GetString(const std::string& section, const std::string& key,
                          const std::string& defaultValue);
    std::int32_t GetInteger(const std::string& section, const std::string& key,
                            std::int32_t defaultValue);
    double GetDouble(const std::string& section, const std::string& key, double defaultValue);
    bool GetBoolean(const std::string& section, const std::string& key, bool defaultValue);

    /// The names of all sections, in the file's order.
    std::vector<std::string> GetSections();
    /// The values of all keys of a section; nothing when there is no such section.
    std::optional<std::map<std::string, std::string>> GetSection(const std::string& section);

    /// Each returns whether the value is safely in the file. If it is not, one line on standard
    /// error says why, and the value holds for this process. A section, key or value that an INI
    /// line cannot carry (a line break, blanks around it, an empty key, ...) is refused and changes
    /// nothing.
    bool SetString(const std::string& section, const std::string& key, const std::string& value);
    bool SetInteger(const std::string& section, const std::string& key, std::int32_t value);
    bool SetDouble(const std::string& section, const std::string& key, double value);
    bool SetBoolean(const std::string& section, const std::string& key, bool value);

    /// Removes every occurrence of the key; true also when there was none.
    bool Remove(const std::string& section, const std::string& key);

    /// Tries again to write what could not be written before; true when nothing is left to write.
    bool Save();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
