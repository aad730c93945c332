// What the logical ports of the controller are called.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace Mux {

struct SPortName {
    std::int32_t number;
    std::string_view name;
};

/// Who uses the ports knows them by their numbers; three of them (50, 52, 53) are the receiver's.
inline constexpr std::array<SPortName, 17> kPortNames = {{
    {0, "null"},
    {4, "radio"},
    {5, "gps_main"},
    {6, "gps_secondary"},
    {7, "ext1"},
    {8, "relay1"},
    {9, "relay2"},
    {10, "relay_ntrip"},
    {11, "relay_nmea"},
    {22, "ext2"},
    {23, "ext3"},
    {24, "ext4"},
    {36, "gps_secondary2"},
    {37, "gps_secondary_diagnostic"},
    {50, "gps_main_boot"},
    {52, "gps_main_diagnostic"},
    {53, "gps_main_correction"},
}};

/// "unknown" for any other number.
constexpr std::string_view NameOfPort(std::int32_t number) {
    const auto* const found =
        std::find_if(kPortNames.begin(), kPortNames.end(),
                     [number](const SPortName& port) { return port.number == number; });
    return found == kPortNames.end() ? "unknown" : found->name;
}

} // namespace Mux
