#include "hub/gpsd/Noise.h"

#include "hub/state/SkyView.h"
#include "platform/Text.h"

#include <array>
#include <cmath>
#include <string_view>
#include <vector>

namespace Hub::GPSD {

namespace {

std::optional<double> Number(std::string_view field) {
    double value = 0.0;
    if (!Core::Utilities::ParseDouble(field, value)) {
        return std::nullopt;
    }
    return value;
}

/// Seconds of the day; nothing unless it reads hhmmss or hhmmss.ss.
std::optional<double> TimeOfDay(std::string_view field) {
    constexpr std::size_t kDigits = 6;
    const auto clock = Number(field);
    if (!clock || *clock < 0.0 || field.find('.') < kDigits || field.size() < kDigits) {
        return std::nullopt;
    }
    const double hours = std::floor(*clock / 10000.0);
    const double minutes = std::floor(std::fmod(*clock, 10000.0) / 100.0);
    const double seconds = std::fmod(*clock, 100.0);
    if (hours >= 24.0 || minutes >= 60.0 || seconds >= 61.0) {
        return std::nullopt;
    }
    return hours * 3600.0 + minutes * 60.0 + seconds;
}

/// The moment next to `about` at which it is this time of the day.
double MomentAt(double timeOfDay, double about) {
    constexpr double kDay = 86400.0;
    return timeOfDay + kDay * std::round((about - timeOfDay) / kDay);
}

} // namespace

std::optional<TReport> NoiseOf(const SFix& fix) {
    if (!fix.navigation) {
        return std::nullopt;
    }
    TReport report = ReportOfDevice("GST");
    SetTime(report, fix.navigation->utc);
    SetNumber(report, "lat", fix.navigation->sigmaNorth);
    SetNumber(report, "lon", fix.navigation->sigmaEast);
    SetNumber(report, "alt", fix.navigation->sigmaUp);
    return report;
}

std::optional<TReport> NoiseOf(const SSentence& sentence, double about) {
    static constexpr std::array kMembers = {"rms", "major", "minor", "orient", "lat", "lon", "alt"};
    if (!IsSentence(sentence.sentence)) {
        return std::nullopt;
    }
    const std::vector<std::string_view> fields = FieldsOf(sentence.sentence);
    if (fields.size() != 1 + kMembers.size()) {
        return std::nullopt;
    }
    TReport report = ReportOfDevice("GST");
    if (const auto timeOfDay = TimeOfDay(fields[0])) {
        SetTime(report, MomentAt(*timeOfDay, about));
    }
    const std::size_t before = report.size();
    for (std::size_t i = 0; i < kMembers.size(); ++i) {
        SetNumber(report, kMembers[i], Number(fields[1 + i]));
    }
    if (report.size() == before) {
        return std::nullopt;
    }
    return report;
}

} // namespace Hub::GPSD
