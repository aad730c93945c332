// What the receiver's channel configurations and signal types are.
#pragma once

#include <cstdint>
#include <string>

/// The receiver's name of a signal type, "UNKNOWN <number>" for one without.
std::string SignalTypeName(std::uint32_t signalType);

/// How many channels a channel configuration (1 to 6) of the 14-channel receiver gives to each
/// system; 0 for any other number.
std::int32_t GPSChannels(std::int32_t configuration);
std::int32_t GlonassChannels(std::int32_t configuration);
std::int32_t SBASChannels(std::int32_t configuration);
