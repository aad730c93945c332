// The reports of gpsd's protocol, one JSON object each; docs/gpsd.md tells how their members are
// made. What is not known is left out.
#pragma once

#include "hub/gpsd/Policy.h"
#include "hub/state/Navigation.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace Hub::GPSD {

/// Members stay in the order in which they were set, as clients' readers want the parents first.
using TReport = nlohmann::ordered_json;

/// The only device: whatever receivers the daemon has, it tells one position.
inline constexpr const char* kDevice = "corvane";

/// A solution and what belongs to it.
struct SFix {
    SSolution solution;
    std::optional<SNavigation> navigation; ///< nothing without a position
    std::optional<double> geoid;
    std::optional<double> hdop; ///< the receiver's own, from GPGSA
};

TReport VersionReport();
/// `activated` is the moment of its first solution, seconds since the Unix epoch; nothing when it
/// is not there (any more).
TReport DeviceReport(std::optional<double> activated);
TReport DevicesReport(std::optional<double> activated);
TReport WatchReport(const SPolicy& policy);
TReport ErrorReport(const std::string& message);

TReport PositionReport(const SFix& fix);
/// When there is no solution, or an old one only.
TReport NoPositionReport();

/// A line as clients get it.
std::string LineOf(const TReport& report);

/// The beginning of a report that comes from the device.
TReport ReportOfDevice(const char* kind);
/// Sets a member, unless its value is no finite number.
void SetNumber(TReport& report, const char* key, std::optional<double> value);
void SetTime(TReport& report, double seconds);

} // namespace Hub::GPSD
