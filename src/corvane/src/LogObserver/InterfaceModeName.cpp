#include "LogObserver/InterfaceModeName.h"

#include <array>

namespace {

// Number 11 has no name, and 12 is "TCOM2"; kept: consumers rely on it.
constexpr std::array<const char*, 21> kNames = {
    "NONE",   "NOVATEL",       "RTCM",  "RTCA",  "CMR",     "OMNISTAR", "ZQ2",
    "IMU",    "RTCMNOCR",      "CDGPS", "TCOM1", "",        "TCOM2",    "TAUX",
    "RTCMV3", "NOVATELBINARY", "",      "",      "GENERIC", "",         "MRTCA",
};

} // namespace

std::string InterfaceModeName(std::uint32_t mode) {
    if (mode < kNames.size() && *kNames[mode] != '\0') {
        return kNames[mode];
    }
    return "UNKNOWN (" + std::to_string(static_cast<std::int32_t>(mode)) + ")";
}
