#include "hub/state/Navigation.h"

#include "platform/Geodesy.h"
#include "platform/Time.h"

#include <cmath>

namespace Hub {

namespace {

using Core::Maths::SVector;

/// Slower than this, what a receiver tells of its velocity points anywhere.
constexpr double kSlowestCourse = 0.1;

/// The axes of east, north and up at a place, seen from the Earth's own.
struct SAxes {
    SVector east;
    SVector north;
    SVector up;
};

SAxes AxesAt(const Core::Maths::SGeodetic& place) {
    const double sineLatitude = std::sin(place.latitude);
    const double cosineLatitude = std::cos(place.latitude);
    const double sineLongitude = std::sin(place.longitude);
    const double cosineLongitude = std::cos(place.longitude);
    return {{-sineLongitude, cosineLongitude, 0.0},
            {-sineLatitude * cosineLongitude, -sineLatitude * sineLongitude, cosineLatitude},
            {cosineLatitude * cosineLongitude, cosineLatitude * sineLongitude, sineLatitude}};
}

double Along(const SVector& vector, const SVector& axis) {
    return vector.x * axis.x + vector.y * axis.y + vector.z * axis.z;
}

/// Of a sum of three independent parts.
double SigmaAlong(const SVector& sigma, const SVector& axis) {
    return std::hypot(sigma.x * axis.x, sigma.y * axis.y, sigma.z * axis.z);
}

std::optional<double> CourseOf(const SNavigation& navigation) {
    if (!(navigation.speed >= kSlowestCourse)) {
        return std::nullopt;
    }
    const double degrees =
        Core::Maths::Degrees(std::atan2(navigation.velocityEast, navigation.velocityNorth));
    const double course = degrees < 0.0 ? degrees + 360.0 : degrees;
    return course < 360.0 ? course : 0.0; // a rounding away from 360
}

Core::Maths::SGeodetic PlaceOf(const SNavigation& navigation) {
    return {Core::Maths::Radians(navigation.latitude), Core::Maths::Radians(navigation.longitude),
            navigation.height};
}

} // namespace

std::optional<SNavigation> Navigate(const SSolution& solution, std::optional<double> geoid) {
    const Position::SECEFPositionSolutionData& data = solution.data;
    if (!solution.HasPosition() || !std::isfinite(data.x) || !std::isfinite(data.y) ||
        !std::isfinite(data.z)) {
        return std::nullopt;
    }
    const Core::Maths::SGeodetic place = Core::Maths::ToGeodetic({data.x, data.y, data.z});
    const SAxes axes = AxesAt(place);
    const SVector velocity{data.velocityX, data.velocityY, data.velocityZ};
    const SVector sigma{data.standardDeviationX, data.standardDeviationY, data.standardDeviationZ};

    SNavigation navigation;
    navigation.utc = Core::GPSTime::FromGPSTime(data.week, data.seconds).AsUnixTime().AsSeconds();
    navigation.latitude = Core::Maths::Degrees(place.latitude);
    navigation.longitude = Core::Maths::Degrees(place.longitude);
    navigation.height = place.height;
    if (geoid) {
        navigation.heightAboveGeoid = place.height - *geoid;
    }
    navigation.velocityEast = Along(velocity, axes.east);
    navigation.velocityNorth = Along(velocity, axes.north);
    navigation.velocityUp = Along(velocity, axes.up);
    navigation.speed = std::hypot(navigation.velocityEast, navigation.velocityNorth);
    navigation.course = CourseOf(navigation);
    navigation.sigmaEast = SigmaAlong(sigma, axes.east);
    navigation.sigmaNorth = SigmaAlong(sigma, axes.north);
    navigation.sigmaUp = SigmaAlong(sigma, axes.up);
    navigation.sigmaHorizontal = std::hypot(navigation.sigmaEast, navigation.sigmaNorth);
    return navigation;
}

std::string_view QualityWords(std::int32_t positionQuality) {
    switch (positionQuality) {
    case 1:
        return "usable";
    case 2:
        return "good";
    case 3:
        return "best";
    default:
        return "no position";
    }
}

/// By the table of docs/published.md, which tells position types by class and quality. Until the
/// first PDPSTAT both qualities are 1, whatever the type.
std::string_view FixWords(const SSolution& solution) {
    if (!solution.HasPosition()) {
        return "no position";
    }
    const std::int32_t fixQuality = solution.data.fixQuality;
    switch (solution.data.solutionClass) {
    case 2:
        return fixQuality == 1                      ? "OmniSTAR HP or XP"
               : solution.data.positionQuality == 3 ? "OmniSTAR HP"
                                                    : "OmniSTAR XP";
    case 4:
        return fixQuality == 1 ? "single" : "differential (SBAS or pseudorange)";
    case 5:
        return fixQuality == 1 ? "carrier phase float" : "CDGPS differential";
    case 6:
        return fixQuality == 4   ? "narrow-lane integer (RTK fixed)"
               : fixQuality == 2 ? "narrow-lane float or wide-lane integer (RTK)"
                                 : "RTK of a kind that is not told";
    default:
        return "of no known kind";
    }
}

int FixIndicator(const SSolution& solution) {
    if (!solution.HasPosition()) {
        return 0;
    }
    const std::int32_t fixQuality = solution.data.fixQuality;
    switch (solution.data.solutionClass) {
    case 2: // OmniSTAR's corrections are carrier phase solutions without a fixed integer
        return 5;
    case 5:
        return fixQuality == 1 ? 5 : 2;
    case 6:
        return fixQuality == 4 ? 4 : 5;
    default:
        return fixQuality == 2 ? 2 : 1;
    }
}

SEastNorthUp Between(const SNavigation& from, const SNavigation& to) {
    const Core::Maths::SGeodetic start = PlaceOf(from);
    const SAxes axes = AxesAt(start);
    const SVector way = Core::Maths::ToECEF(PlaceOf(to)) - Core::Maths::ToECEF(start);
    return {Along(way, axes.east), Along(way, axes.north), Along(way, axes.up)};
}

} // namespace Hub
