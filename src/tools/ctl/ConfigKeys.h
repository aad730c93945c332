// What the configuration database may hold: every key that the daemon reads, and what it does.
#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Ctl {

struct SConfigKey {
    enum class EType {
        text,
        integer,
        number,
        flag,    ///< stored as 0 or 1
        choice,  ///< one of `choices`
        address, ///< IPv4
        place,   ///< latitude,longitude,height
    };
    enum class EEffect {
        start,   ///< read when the daemon starts
        rebuild, ///< read whenever the receiver's configuration is made anew
        region,  ///< read when the daemon starts and when it is told to refresh the region
        none,    ///< read, and nothing depends on it
    };

    const char* section; ///< one that ends in ":*" stands for all that begin so
    const char* key;
    EType type = EType::text;
    const char* defaultValue = "";
    /// The key of the same section whose value is the default; null for `defaultValue`.
    const char* defaultKey = nullptr;
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    const char* choices = ""; ///< with "|" between
    EEffect effect = EEffect::start;
    const char* meaning;
};

/// In the order in which they are shown.
std::span<const SConfigKey> ConfigKeys();

/// Null for one that nothing reads.
const SConfigKey* FindConfigKey(const std::string& section, const std::string& key);

/// The known keys of a section, or of all of them when it is empty.
std::vector<std::string> ConfigKeyNames(const std::string& section);

/// "integer 0 to 3", "on or off": what a value may be.
std::string KindText(const SConfigKey& key);

/// When a change of the key is noticed.
std::string EffectText(SConfigKey::EEffect effect);

/// The value as it is to be stored; nothing when it is none for the key.
std::optional<std::string> StoredValue(const SConfigKey& key, const std::string& value);

} // namespace Ctl
