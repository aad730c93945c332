// What is set in a configuration file, and what else could be.
#pragma once

#include "ConfigKeys.h"
#include "Output.h"
#include "platform/Config.h"

#include <optional>
#include <string>
#include <vector>

namespace Ctl {

struct SSetting {
    std::string section;
    std::string key;
    std::string value; ///< what it is unless set, when it is not set
    bool isSet = false;
    const SConfigKey* known = nullptr; ///< null when nothing reads it
};

/// Why a file that is there cannot be read; empty when it can, or is not there.
std::string WhyNotReadable(const std::string& path);

/// Nothing when it is not set.
std::optional<std::string> ValueIn(CConfig& config, const std::string& section,
                                   const std::string& key);

/// What a known key is unless it is set.
std::string DefaultOf(CConfig& config, const std::string& section, const SConfigKey& key);

/// Those of a section, or of all when it is empty, a section's together: the known ones in their
/// order, the others behind. With `wantsAll` also those that are not set.
std::vector<SSetting> Settings(CConfig& config, const std::string& section, bool wantsAll);

/// "key = value", with what the key does when that is wanted; ends its lines.
std::string Text(const SSetting& setting, bool isExplained);
TJSON Document(const SSetting& setting);

} // namespace Ctl
