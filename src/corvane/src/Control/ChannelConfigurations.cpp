#include "Control/ChannelConfigurations.h"

#include <cstddef>

namespace {

struct SSignalType {
    std::uint32_t number;
    const char* name;
};

constexpr SSignalType kSignalTypes[] = {
    {0, "GPSL1"},          {1, "GPSL1L2"},     {4, "SBASL1"},
    {5, "GPSL5"},          {6, "GPSL1L2C"},    {7, "GPSL2L2AUTO"},
    {8, "GLOL1L2"},        {10, "GLOL1"},      {11, "GALE1"},
    {12, "GALE5A"},        {13, "GALE5B"},     {14, "GALALTBOC"},
    {16, "GPSL1L2PL2C"},   {17, "GPSL1L5"},    {18, "SBASL1L5"},
    {19, "GPSL1L2PL2CL5"}, {20, "GPSL1L2PL5"}, {21, "GALE1E5AE5B"},
    {23, "GALE1E5A"},      {24, "GLOL1L2C"},   {22, "GALE1E5AE5BALTBOC"},
    {25, "GLOL1L2PL2C"},
};

struct SChannels {
    std::int32_t gps;
    std::int32_t glonass;
    std::int32_t sbas;
};

/// Of the configurations 1, 2, ...
constexpr SChannels kChannels[] = {
    {14, 0, 0}, {12, 0, 2}, {10, 4, 0}, {8, 6, 0}, {8, 4, 2}, {10, 2, 2},
};

SChannels ChannelsOf(std::int32_t configuration) {
    constexpr auto kCount = static_cast<std::int32_t>(std::size(kChannels));
    if (configuration < 1 || configuration > kCount) {
        return {0, 0, 0};
    }
    return kChannels[static_cast<std::size_t>(configuration) - 1];
}

} // namespace

std::string SignalTypeName(std::uint32_t signalType) {
    for (const SSignalType& known : kSignalTypes) {
        if (known.number == signalType) {
            return known.name;
        }
    }
    return "UNKNOWN " + std::to_string(signalType);
}

std::int32_t GPSChannels(std::int32_t configuration) {
    return ChannelsOf(configuration).gps;
}

std::int32_t GlonassChannels(std::int32_t configuration) {
    return ChannelsOf(configuration).glonass;
}

std::int32_t SBASChannels(std::int32_t configuration) {
    return ChannelsOf(configuration).sbas;
}
