// The commands that bring the receiver into the daemon's configuration, in sending order.
#pragma once

#include "Control/ReceiverSettings.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What every command to the receiver ends in.
inline constexpr char kCommandEnd[] = "\r\n";

/// What the conditions and the variable parts of the commands look at.
struct SConfigurationInput {
    const SReceiverSettings& settings;
    /// The channel configuration that is wanted; none while nobody decides on it.
    std::optional<std::int32_t> desiredChannelConfiguration;
};

/// Whether the channel configuration may be commanded. It may not: a change reboots the receiver at
/// once, so it is left to an operator.
bool CanSelectChannelConfiguration();

/// The whole list, each command with its end.
std::vector<std::string> ReceiverConfiguration(const SConfigurationInput& input);

/// The word of the receiver's INTERFACEMODE command for corrections of a reference format. "NONE"
/// has one too, so that the port is never in a mode without a type of correction; a name that is
/// not known is its own word.
std::string CorrectionInterfaceMode(const std::string& referenceFormat);
