// How the hub reaches its MQTT broker, and as whom.
#pragma once

#include "hub/Settings.h"

#include <cstdint>
#include <string>

namespace Hub {

struct SMQTTAccess {
    std::string host;
    std::int32_t port = 0;
    std::string device;
    std::string user;
    std::string password;
    std::string caFile; ///< empty for a connection without TLS
    std::string certificate;
    std::string key;
};

/// Looks at the settings and at the files that they name. Returns what is wrong, the empty text
/// when nothing is.
std::string ReadAccess(const SSettings& settings, SMQTTAccess& access);

} // namespace Hub
