// What the port multiplexer's logical ports and their functions are called, for people to read.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

struct SQuentaPortName {
    std::int32_t number;
    std::string_view name;
};

/// The logical ports; the receiver has three of them (50, 52, 53).
inline constexpr std::array<SQuentaPortName, 17> kQuentaPortNames = {{
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

/// The functions that the multiplexer can give a port.
inline constexpr std::array<std::string_view, 12> kQuentaFunctionNames = {
    "gnss_base", "gnss_rover", "gnss_l1only", "mpi_a",    "mpi_b", "mpi_c",
    "nmea",      "plixor",     "oemstar",     "oemstar2", "ntrip", "spray",
};

/// "unknown" for a number that is no port's.
constexpr std::string_view QuentaPortName(std::int32_t number) {
    const auto* const found =
        std::find_if(kQuentaPortNames.begin(), kQuentaPortNames.end(),
                     [number](const SQuentaPortName& port) { return port.number == number; });
    return found == kQuentaPortNames.end() ? "unknown" : found->name;
}
