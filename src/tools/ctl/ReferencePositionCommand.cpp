// Where the reference station stands: shown, set and cleared.

#include "Commands.h"
#include "Values.h"
#include "platform/Geodesy.h"

#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

using Core::Maths::Degrees;
using Core::Maths::DistanceBetween;
using Core::Maths::Radians;
using Core::Maths::SGeodetic;
using Core::Maths::SVector;

/// How far from the Earth's centre an antenna may be, in metres.
constexpr double kLeastRadius = 6'300'000.0;
constexpr double kMostRadius = 6'500'000.0;
/// The daemon keeps degrees with 12 decimals and metres with 4.
constexpr double kTolerance = 0.01;

std::string Text(const SVector& place) {
    return "X " + FixedText(place.x, 4) + " m, Y " + FixedText(place.y, 4) + " m, Z " +
           FixedText(place.z, 4) + " m";
}

std::string Text(const SGeodetic& place) {
    return "latitude " + FixedText(Degrees(place.latitude), 9) + " deg, longitude " +
           FixedText(Degrees(place.longitude), 9) + " deg, height " + FixedText(place.height, 4) +
           " m";
}

TJSON Document(const SVector& place, const SGeodetic& geodetic) {
    return {{"reference-position",
             {{"ecef", {{"x", place.x}, {"y", place.y}, {"z", place.z}}},
              {"geodetic",
               {{"latitude", Degrees(geodetic.latitude)},
                {"longitude", Degrees(geodetic.longitude)},
                {"height", geodetic.height}}}}}};
}

std::optional<SVector> Stored(SContext& context) {
    constexpr char kMethod[] = "novatel_GetReferencePosition";
    const auto answer = context.daemon.CallForList(kMethod, {}, 3);
    if (!answer) {
        return std::nullopt;
    }
    for (const BAtomC& value : *answer) {
        if (!value.AsDouble()) {
            context.daemon.FailForNonsense(kMethod, "not three numbers");
            return std::nullopt;
        }
    }
    return SVector{answer->GetDouble(0), answer->GetDouble(1), answer->GetDouble(2)};
}

void Tell(COutput& output, const SVector& place) {
    if (place.x == 0.0 && place.y == 0.0 && place.z == 0.0) {
        output.Tell("no reference position is set", {{"reference-position", nullptr}});
        return;
    }
    const SGeodetic geodetic = Core::Maths::ToGeodetic(place);
    output.Tell("ECEF      " + Text(place) + "\ngeodetic  " + Text(geodetic),
                Document(place, geodetic));
}

void Show(SContext& context) {
    if (const auto place = Stored(context)) {
        Tell(context.output, *place);
    }
}

void Clear(SContext& context) {
    if (context.daemon.CallForSuccess("novatel_UnsetReferencePosition")) {
        Show(context);
    }
}

struct SPlaceArguments {
    bool isGeodetic = false;
    double first = 0.0;
    double second = 0.0;
    double third = 0.0;
};

SVector PlaceOf(const SPlaceArguments& given) {
    return given.isGeodetic
               ? Core::Maths::ToECEF({Radians(given.first), Radians(given.second), given.third})
               : SVector{given.first, given.second, given.third};
}

/// Why nothing stands there; empty when something may.
std::string WhyNoPlace(const SPlaceArguments& given) {
    if (given.isGeodetic) {
        if (std::abs(given.first) > 90.0) {
            return "a latitude is -90 to 90 degrees";
        }
        if (given.second < -180.0 || given.second > 360.0) {
            return "a longitude is -180 to 180 degrees, or 0 to 360";
        }
    }
    const double radius = DistanceBetween(PlaceOf(given), {});
    if (radius >= kLeastRadius && radius <= kMostRadius) {
        return "";
    }
    return "that is " + FixedText(radius, 0) + " m from the Earth's centre, not on the Earth" +
           (given.isGeodetic ? "" : "; degrees need --geodetic");
}

void Set(SContext& context, const SPlaceArguments& given) {
    if (const std::string why = WhyNoPlace(given); !why.empty()) {
        context.output.Fail(EStatus::usage, why, "Try: corvanectl reference-position set --help");
        return;
    }
    const SVector wanted = PlaceOf(given);
    if (!context.daemon.CallForSuccess("novatel_SetReferencePosition",
                                       BListC().Add(wanted.x).Add(wanted.y).Add(wanted.z))) {
        return;
    }
    const auto place = Stored(context);
    if (!place) {
        return;
    }
    if (DistanceBetween(*place, wanted) > kTolerance) {
        context.output.Fail(EStatus::refused, "the daemon has another place: " + Text(*place));
        return;
    }
    Tell(context.output, *place);
}

void AddSet(CLI::App& parent, SContext& context) {
    CLI::App& command =
        AddCommand(parent, {.name = "set",
                            .summary = "Stores the place and configures the receiver anew",
                            .examples = "reference-position set 4000000.5 3000000.25 3900000.125\n"
                                        "reference-position set --geodetic 47.1234 -8.5678 431.2"});
    const auto given = std::make_shared<SPlaceArguments>();
    command.add_flag("--geodetic", given->isGeodetic,
                     "Degrees, and metres above the ellipsoid, instead of ECEF");
    command.add_option("X", given->first, "X or latitude")->type_name("")->required();
    command.add_option("Y", given->second, "Y or longitude")->type_name("")->required();
    command.add_option("Z", given->third, "Z or height; X, Y and Z are ECEF, in metres")
        ->type_name("")
        ->required();
    OnRun(command, context, [&context, given] { Set(context, *given); });
}

} // namespace

void AddReferencePositionCommand(CLI::App& app, SContext& context) {
    CLI::App& command =
        AddCommand(app,
                   {.name = "reference-position",
                    .summary = "Where the reference station stands (WGS-84)",
                    .examples = "reference-position\n"
                                "reference-position set --geodetic 47.1234 -8.5678 431.2\n"
                                "reference-position clear"},
                   kSettingGroup);
    command.require_subcommand(0, 1);
    OnRun(command, context, [&context] { Show(context); });
    OnRun(AddCommand(command, {.name = "show",
                               .summary = "Shows it, as ECEF and geodetic",
                               .examples = "reference-position show"}),
          context, [&context] { Show(context); });
    AddSet(command, context);
    OnRun(AddCommand(command, {.name = "clear",
                               .summary = "Forgets the place and configures the receiver anew",
                               .examples = "reference-position clear"}),
          context, [&context] { Clear(context); });
}

} // namespace Ctl
