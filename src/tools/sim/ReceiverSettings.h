// The settings that RXCONFIG reports, each as the command that would make it.
#pragma once

#include "LogEncoder.h"

#include <string>
#include <string_view>
#include <vector>

namespace Sim {

struct SStoredSetting {
    std::uint16_t commandID = 0;
    std::string_view command; ///< "COM"
    Bytes binaryBody;
    std::string asciiBody;
};

/// Line settings and interface mode of every port.
std::vector<SStoredSetting> StoredSettings(const SReceiverInfo& info);

/// As logs and commands write it, "COM1"; "NO_PORTS" for a number that is no port's.
std::string_view PortName(std::uint32_t number);

} // namespace Sim
