#include "hub/history/Track.h"

#include "hub/history/Schema.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

namespace Hub {

namespace {

/// The rows of a table, of which there is one for every minute besides that for every second.
std::string RowsOf(const char* table) {
    return std::string("SELECT second, quality, sigma_horizontal, sigma_up, time, latitude, "
                       "longitude, height, satellites, differential_age, cn0 FROM ") +
           table + " WHERE second BETWEEN ?1 AND ?2 ORDER BY second";
}

struct SPoint {
    std::int64_t bucket = 0;
    std::int64_t quality = 0;              ///< the lowest
    std::optional<double> sigmaHorizontal; ///< the largest
    std::optional<double> sigmaUp;
    double time = 0.0; ///< like all below of the first position, or of the first row without one
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> height;
    std::int64_t satellites = 0;
    std::optional<double> differentialAge;
    std::optional<double> cn0;
};

/// Empty optionals are smaller than all others.
void TakeWorst(const CStatement& row, SPoint& point) {
    point.quality = std::min(point.quality, row.Integer(1));
    point.sigmaHorizontal = std::max(point.sigmaHorizontal, row.OptionalReal(2));
    point.sigmaUp = std::max(point.sigmaUp, row.OptionalReal(3));
}

void TakePlace(const CStatement& row, SPoint& point) {
    point.time = row.Real(4);
    point.latitude = row.OptionalReal(5);
    point.longitude = row.OptionalReal(6);
    point.height = row.OptionalReal(7);
    point.satellites = row.Integer(8);
    point.differentialAge = row.OptionalReal(9);
    point.cn0 = row.OptionalReal(10);
}

void Take(const CStatement& row, std::int64_t bucket, std::vector<SPoint>& points) {
    if (points.empty() || points.back().bucket != bucket) {
        SPoint point;
        point.bucket = bucket;
        point.quality = row.Integer(1);
        points.push_back(point);
        TakePlace(row, points.back());
    } else if (!points.back().latitude && row.Integer(1) > 0) {
        TakePlace(row, points.back());
    }
    TakeWorst(row, points.back());
}

using TJSON = nlohmann::ordered_json;

std::string ToJSON(const SHistoryArguments& arguments, double step,
                   const std::vector<SPoint>& points) {
    TJSON document{{"from", arguments.from}, {"to", arguments.to}, {"step", step}};
    const auto add = [&](const char* name, auto member) {
        TJSON& column = document[name] = TJSON::array();
        for (const SPoint& point : points) {
            column.push_back(point.*member);
        }
    };
    const auto addOptional = [&](const char* name, std::optional<double> SPoint::*member) {
        TJSON& column = document[name] = TJSON::array();
        for (const SPoint& point : points) {
            const std::optional<double>& value = point.*member;
            column.push_back(value ? TJSON(*value) : TJSON());
        }
    };
    add("time", &SPoint::time);
    addOptional("latitude", &SPoint::latitude);
    addOptional("longitude", &SPoint::longitude);
    addOptional("height", &SPoint::height);
    add("quality", &SPoint::quality);
    add("satellites", &SPoint::satellites);
    addOptional("sigmaHorizontal", &SPoint::sigmaHorizontal);
    addOptional("sigmaUp", &SPoint::sigmaUp);
    addOptional("differentialAge", &SPoint::differentialAge);
    addOptional("cn0", &SPoint::cn0);
    return document.dump();
}

} // namespace

std::optional<std::string> ReadTrack(const CDatabase& database,
                                     const SHistoryArguments& arguments) {
    // Whole seconds, as the rows are.
    const double step =
        std::max(1.0, std::ceil((arguments.to - arguments.from) / arguments.points));
    const auto first = static_cast<std::int64_t>(std::ceil(arguments.from));
    const auto last = static_cast<std::int64_t>(std::floor(arguments.to));
    const auto secondsPerPoint = static_cast<std::int64_t>(step);
    const char* const table = secondsPerPoint < History::kMinute ? "position" : "position_minute";
    CStatement rows(database, RowsOf(table).c_str());
    if (!rows.IsValid()) {
        return std::nullopt;
    }
    std::vector<SPoint> points;
    rows.Bind(first, last);
    while (rows.Step()) {
        // The end itself belongs to the last step.
        const std::int64_t bucket = (rows.Integer(0) - first) / secondsPerPoint;
        Take(rows, std::min<std::int64_t>(bucket, arguments.points - 1), points);
    }
    return rows.IsDone() ? std::optional(ToJSON(arguments, step, points)) : std::nullopt;
}

} // namespace Hub
