#include "hub/gpsd/Reports.h"

#include "hub/gpsd/UTC.h"

#include <algorithm>
#include <cmath>

namespace Hub::GPSD {

namespace {

/// Errors are told with 95 % confidence, standard deviations are ours. Of one axis that is 1.96 of
/// them (normal distribution); of a distance in the plane or in space, twice the root of the sum of
/// the squares holds 95 % or more, whatever the shape of the error ellipsoid.
constexpr double kAxis95 = 1.96;
constexpr double kDistance95 = 2.0;

/// What the protocol calls the ways in which a position was found.
std::optional<int> StatusOf(const SSolution& solution) {
    constexpr int kSingle = 1;
    constexpr int kDifferential = 2;
    constexpr int kRTKFixed = 3;
    constexpr int kRTKFloat = 4;
    switch (FixIndicator(solution)) {
    case 1:
        return kSingle;
    case 2:
        return kDifferential;
    case 4:
        return kRTKFixed;
    case 5:
        return kRTKFloat;
    default:
        return std::nullopt;
    }
}

TReport Report(const char* kind) {
    return {{"class", kind}};
}

/// How far GPS time, which has none of them, is ahead of UTC. Nothing for a GPS time that is none.
std::optional<int> LeapSeconds(const SFix& fix) {
    constexpr double kGPSEpoch = 315964800.0; // 1980-01-06, since the Unix epoch
    constexpr double kWeek = 604800.0;
    constexpr double kMost = 100.0;
    const Position::SECEFPositionSolutionData& data = fix.solution.data;
    const double ahead = kGPSEpoch + kWeek * data.week + data.seconds - fix.navigation->utc;
    if (!(std::fabs(ahead) < kMost)) {
        return std::nullopt;
    }
    return static_cast<int>(std::lround(ahead));
}

void SetPlace(TReport& report, const SFix& fix) {
    const SNavigation& navigation = *fix.navigation;
    SetNumber(report, "lat", navigation.latitude);
    SetNumber(report, "lon", navigation.longitude);
    SetNumber(report, "altHAE", navigation.height);
    SetNumber(report, "altMSL", navigation.heightAboveGeoid);
    SetNumber(report, "alt", navigation.heightAboveGeoid);
    SetNumber(report, "geoidSep", fix.geoid);
    SetNumber(report, "epx", kAxis95 * navigation.sigmaEast);
    SetNumber(report, "epy", kAxis95 * navigation.sigmaNorth);
    SetNumber(report, "epv", kAxis95 * navigation.sigmaUp);
    SetNumber(report, "eph", kDistance95 * navigation.sigmaHorizontal);
    SetNumber(report, "sep",
              kDistance95 * std::hypot(navigation.sigmaHorizontal, navigation.sigmaUp));
}

void SetMovement(TReport& report, const SNavigation& navigation) {
    SetNumber(report, "track", navigation.course);
    SetNumber(report, "speed", navigation.speed);
    SetNumber(report, "climb", navigation.velocityUp);
    SetNumber(report, "velN", navigation.velocityNorth);
    SetNumber(report, "velE", navigation.velocityEast);
    SetNumber(report, "velD", -navigation.velocityUp);
}

void SetEarthCentred(TReport& report, const Position::SECEFPositionSolutionData& data) {
    SetNumber(report, "ecefx", data.x);
    SetNumber(report, "ecefy", data.y);
    SetNumber(report, "ecefz", data.z);
    SetNumber(report, "ecefvx", data.velocityX);
    SetNumber(report, "ecefvy", data.velocityY);
    SetNumber(report, "ecefvz", data.velocityZ);
    SetNumber(report, "ecefpAcc",
              kDistance95 * std::hypot(data.standardDeviationX, data.standardDeviationY,
                                       data.standardDeviationZ));
}

} // namespace

TReport ReportOfDevice(const char* kind) {
    TReport report = Report(kind);
    report["device"] = kDevice;
    return report;
}

std::string LineOf(const TReport& report) {
    return report.dump(-1, ' ', false, TReport::error_handler_t::replace) + "\r\n";
}

void SetNumber(TReport& report, const char* key, std::optional<double> value) {
    if (value && std::isfinite(*value)) {
        report[key] = *value;
    }
}

void SetTime(TReport& report, double seconds) {
    if (const auto time = ISO8601(seconds)) {
        report["time"] = *time;
    }
}

/// Clients tell by the release which members to expect, so it is that of the gpsd whose protocol
/// this is; "rev" tells who really answers.
TReport VersionReport() {
    TReport report = Report("VERSION");
    report["release"] = "3.22";
    report["rev"] = "corvane " CORVANE_VERSION;
    report["proto_major"] = 3;
    report["proto_minor"] = 14;
    return report;
}

TReport DeviceReport(std::optional<double> activated) {
    constexpr int kSeenGPS = 1;
    TReport report = Report("DEVICE");
    report["path"] = kDevice;
    if (!activated) {
        report["activated"] = 0;
        return report;
    }
    report["driver"] = "corvane";
    if (const auto time = ISO8601(*activated)) {
        report["activated"] = *time;
    }
    report["flags"] = kSeenGPS;
    return report;
}

TReport DevicesReport(std::optional<double> activated) {
    TReport report = Report("DEVICES");
    report["devices"] = TReport::array();
    if (activated) {
        report["devices"].push_back(DeviceReport(activated));
    }
    return report;
}

TReport WatchReport(const SPolicy& policy) {
    TReport report = Report("WATCH");
    report["enable"] = policy.isEnabled;
    report["json"] = policy.wantsJSON;
    report["nmea"] = policy.wantsNMEA;
    report["raw"] = policy.raw;
    report["scaled"] = policy.isScaled;
    report["timing"] = policy.wantsTiming;
    report["split24"] = policy.splits24;
    report["pps"] = policy.wantsPPS;
    if (!policy.device.empty()) {
        report["device"] = policy.device;
    }
    return report;
}

TReport ErrorReport(const std::string& message) {
    TReport report = Report("ERROR");
    report["message"] = message;
    return report;
}

TReport NoPositionReport() {
    TReport report = ReportOfDevice("TPV");
    report["mode"] = 1;
    return report;
}

TReport PositionReport(const SFix& fix) {
    if (!fix.navigation) {
        return NoPositionReport();
    }
    constexpr int kThreeDimensional = 3;
    const Position::SECEFPositionSolutionData& data = fix.solution.data;
    TReport report = ReportOfDevice("TPV");
    const auto status = StatusOf(fix.solution);
    if (status) {
        report["status"] = *status;
    }
    report["mode"] = kThreeDimensional;
    SetTime(report, fix.navigation->utc);
    if (const auto leapSeconds = LeapSeconds(fix)) {
        report["leapseconds"] = *leapSeconds;
    }
    SetPlace(report, fix);
    SetMovement(report, *fix.navigation);
    SetEarthCentred(report, data);
    if (status && *status > 1) {
        SetNumber(report, "dgpsAge", data.differentialAge);
    }
    return report;
}

} // namespace Hub::GPSD
