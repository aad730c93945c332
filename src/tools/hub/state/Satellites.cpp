#include "hub/state/Satellites.h"

#include <algorithm>

namespace Hub {

namespace {

/// A receiver of any kind uses fewer.
constexpr std::int64_t kMostUsed = 999;

} // namespace

std::string_view SystemName(std::int32_t prn) {
    if (prn >= 1 && prn <= 32) {
        return "GPS";
    }
    if (prn >= 38 && prn <= 61) {
        return "GLONASS";
    }
    return prn >= 120 && prn <= 138 ? "SBAS" : "unknown";
}

/// Either all of them stand in the first field, or each system's in its own.
std::int32_t SatellitesUsed(const SSolution& solution) {
    std::int64_t sum = 0;
    for (const std::int32_t count : solution.data.satellites) {
        sum += count;
    }
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(sum, 0, kMostUsed));
}

} // namespace Hub
