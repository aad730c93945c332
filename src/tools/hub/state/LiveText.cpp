// The live view: solution, base station, sky and signals.

#include "hub/state/Health.h"
#include "hub/state/Navigation.h"
#include "hub/state/Presentation.h"
#include "hub/state/Satellites.h"
#include "platform/Geodesy.h"

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

namespace Hub {

using nlohmann::json;

namespace {

json OrNull(const std::optional<double>& value) {
    return value ? json(*value) : json();
}

void AddNavigation(json& members, const std::optional<SNavigation>& navigation) {
    const SNavigation known = navigation.value_or(SNavigation());
    const auto add = [&](const char* name, const std::optional<double>& value) {
        members[name] = navigation ? OrNull(value) : json();
    };
    add("utc", known.utc);
    add("latitude", known.latitude);
    add("longitude", known.longitude);
    add("height", known.height);
    add("heightAboveGeoid", known.heightAboveGeoid);
    add("speed", known.speed);
    add("course", known.course);
    add("velocityEast", known.velocityEast);
    add("velocityNorth", known.velocityNorth);
    add("velocityUp", known.velocityUp);
    add("sigmaEast", known.sigmaEast);
    add("sigmaNorth", known.sigmaNorth);
    add("sigmaUp", known.sigmaUp);
    add("sigmaHorizontal", known.sigmaHorizontal);
}

json LiveSolution(const CState& state, const SNow& now) {
    if (!state.Solution()) {
        return {};
    }
    json members = SolutionJSON(state.Solution()->message, state.Geoid());
    members["age"] = state.Solution()->Age(now);
    return members;
}

/// The distance is that to the last position, null while there is none.
json LiveBase(const CState& state, const SNow& now) {
    if (!state.Base()) {
        return {};
    }
    const SBase& base = state.Base()->message;
    const Core::Maths::SVector place{base.x, base.y, base.z};
    const Core::Maths::SGeodetic geodetic = Core::Maths::ToGeodetic(place);
    json members = {{"age", state.Base()->Age(now)},
                    {"latitude", Core::Maths::Degrees(geodetic.latitude)},
                    {"longitude", Core::Maths::Degrees(geodetic.longitude)},
                    {"height", geodetic.height},
                    {"distance", nullptr}};
    if (state.Solution() && state.Solution()->message.HasPosition()) {
        const Position::SECEFPositionSolutionData& data = state.Solution()->message.data;
        members["distance"] = Core::Maths::DistanceBetween(place, {data.x, data.y, data.z});
    }
    return members;
}

json LiveSky(const CState& state, const SNow& now) {
    const CSkyView& view = state.View();
    if (!view.Time()) {
        return {};
    }
    json members = SkyJSON(view);
    members["age"] = state.ViewAge(now);
    return members;
}

json LiveSignals(const CState& state, const SNow& now) {
    if (!state.Sky()) {
        return {};
    }
    std::map<int, json> densities;
    for (const SSky::SChannel& channel : state.Sky()->message.channels) {
        json& list = densities.try_emplace(channel.prn, json::array()).first->second;
        list.push_back(OrNull(channel.cn0));
    }
    json channels = json::array();
    for (const auto& [prn, cn0] : densities) {
        channels.push_back({{"prn", prn}, {"system", SystemName(prn)}, {"cn0", cn0}});
    }
    return {{"age", state.Sky()->Age(now)}, {"channels", channels}};
}

} // namespace

json SolutionJSON(const SSolution& solution, std::optional<double> geoid) {
    const Position::SECEFPositionSolutionData& data = solution.data;
    json members = {{"time", solution.time},
                    {"week", data.week},
                    {"seconds", data.seconds},
                    {"hasPosition", solution.HasPosition()},
                    {"x", data.x},
                    {"y", data.y},
                    {"z", data.z},
                    {"quality", data.positionQuality},
                    {"qualityWords", QualityWords(data.positionQuality)},
                    {"fix", FixWords(solution)},
                    {"fixIndicator", FixIndicator(solution)},
                    {"solutionClass", data.solutionClass},
                    {"differentialAge", data.differentialAge},
                    {"satellites", data.satellites},
                    {"satellitesUsed", SatellitesUsed(solution)},
                    {"velocityLatency", data.velocityLatency}};
    AddNavigation(members, Navigate(solution, geoid));
    return members;
}

json SkyJSON(const CSkyView& view) {
    json satellites = json::array();
    const auto orNull = [](const std::optional<std::int32_t>& value) {
        return value ? json(*value) : json();
    };
    for (const CSkyView::SSatellite& satellite : view.Satellites()) {
        satellites.push_back({{"prn", satellite.prn},
                              {"elevation", orNull(satellite.elevation)},
                              {"azimuth", orNull(satellite.azimuth)},
                              {"cn0", orNull(satellite.cn0)},
                              {"isUsed", satellite.isUsed}});
    }
    const CSkyView::SUse use = view.Use().value_or(CSkyView::SUse());
    return {{"satellites", satellites},
            {"mode", view.Use() ? json(use.mode) : json()},
            {"pdop", OrNull(use.pdop)},
            {"hdop", OrNull(use.hdop)},
            {"vdop", OrNull(use.vdop)}};
}

std::string LiveText(const CState& state, const SNow& now) {
    const SHealth health = Judge(state, now);
    const json frame = {{"now", now.wall},
                        {"health", {{"state", health.Name()}, {"words", health.words}}},
                        {"solution", LiveSolution(state, now)},
                        {"base", LiveBase(state, now)},
                        {"sky", LiveSky(state, now)},
                        {"signals", LiveSignals(state, now)}};
    return frame.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace Hub
