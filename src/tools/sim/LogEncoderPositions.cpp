// Solutions, dilutions of precision, the reference station and time.
#include "DilutionOfPrecision.h"
#include "LocalFrame.h"
#include "LogBodies.h"
#include "SatelliteSignals.h"
#include "UTC.h"

#include "Logs/NovatelOEMV/PositionType.h"

#include "platform/Maths.h"

#include <algorithm>
#include <cmath>

namespace Sim {

namespace {

using namespace Novatel::PositionType;

constexpr std::uint32_t kNoType = 0;
constexpr std::uint32_t kDopplerVelocity = 8;
constexpr std::uint32_t kWGS84 = 61;

/// Signals used: both frequencies of GPS and of GLONASS.
constexpr std::uint8_t kAllSignals = 0x33;
/// Ionosphere corrected by measuring on two frequencies; bit 0: the RTK solution has been verified.
constexpr std::uint8_t kMultiFrequency = 0x06;
constexpr std::uint8_t kVerified = 0x01;

std::uint32_t VelocityType(const SSolution& solution) {
    switch (solution.type) {
    case kSingle:
    case kPseudorangeDifferential:
    case kSBAS:
        return kDopplerVelocity;
    default:
        return solution.type;
    }
}

std::string_view StationOf(const SSolution& solution) {
    return solution.differentialAge > 0.0F ? kStationID : "";
}

void EncodeSatellites(CByteWriter& body, const SSolution& solution, const SState& state) {
    const auto onTwo = std::ranges::count_if(state.satellites, [](const SSatellite& satellite) {
        return satellite.isUsed && satellite.cn0L2 > 0.0F;
    });
    const bool isAny = solution.satellitesUsed > 0;
    const bool isVerified = solution.type == kNarrowInteger;
    body.U8(solution.satellitesTracked).U8(solution.satellitesUsed).U8(solution.satellitesUsed);
    body.U8(static_cast<std::uint8_t>(std::min<std::ptrdiff_t>(onTwo, solution.satellitesUsed)));
    body.U8(0);
    body.U8(isAny ? static_cast<std::uint8_t>(kMultiFrequency | (isVerified ? kVerified : 0)) : 0);
    body.U8(0).U8(isAny ? kAllSignals : std::uint8_t{0});
}

void EncodeCartesian(CByteWriter& body, const SSolution& solution, const SState& state) {
    body.U32(solution.status).U32(solution.type);
    body.Double(solution.x).Double(solution.y).Double(solution.z);
    body.Float(solution.deviationX).Float(solution.deviationY).Float(solution.deviationZ);
    body.U32(solution.status).U32(VelocityType(solution));
    body.Double(solution.velocityX).Double(solution.velocityY).Double(solution.velocityZ);
    for (int axis = 0; axis < 3; ++axis) {
        body.Float(solution.velocityDeviation);
    }
    body.Text(StationOf(solution), 4);
    body.Float(solution.velocityLatency);
    body.Float(solution.differentialAge).Float(solution.solutionAge);
    EncodeSatellites(body, solution, state);
}

struct SGeodeticFields {
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double height = 0.0;    ///< metres above mean sea level
    SVector deviations;     ///< east, north, up; metres
};

SGeodeticFields GeodeticFieldsOf(const SSolution& solution, double undulation) {
    if (solution.type == kNoType) {
        return {};
    }
    const SGeodetic place = Core::Maths::ToGeodetic({solution.x, solution.y, solution.z});
    const double x = solution.deviationX;
    const double y = solution.deviationY;
    const double z = solution.deviationZ;
    const SVector variances = CLocalFrame(place).ToLocalVariances({x * x, y * y, z * z});
    return {.latitude = Core::Maths::Degrees(place.latitude),
            .longitude = Core::Maths::Degrees(place.longitude),
            .height = place.height - undulation,
            .deviations = {std::sqrt(variances.x), std::sqrt(variances.y), std::sqrt(variances.z)}};
}

void EncodeGeodetic(CByteWriter& body, const SSolution& solution, const SState& state) {
    const SGeodeticFields fields = GeodeticFieldsOf(solution, double{state.undulation});
    body.U32(solution.status).U32(solution.type);
    body.Double(fields.latitude).Double(fields.longitude).Double(fields.height);
    body.Float(state.undulation).U32(kWGS84);
    body.Float(static_cast<float>(fields.deviations.y));
    body.Float(static_cast<float>(fields.deviations.x));
    body.Float(static_cast<float>(fields.deviations.z));
    body.Text(StationOf(solution), 4);
    body.Float(solution.differentialAge).Float(solution.solutionAge);
    EncodeSatellites(body, solution, state);
}

} // namespace

const SSolution& BestSolution(const SState& state) {
    return state.rtk.status == 0 && state.rtk.type != kNoType ? state.rtk : state.pseudorange;
}

namespace LogBodies {

void BESTPOS(CByteWriter& body, const SLogInput& input) {
    EncodeGeodetic(body, BestSolution(input.state), input.state);
}

void PSRPOS(CByteWriter& body, const SLogInput& input) {
    EncodeGeodetic(body, input.state.pseudorange, input.state);
}

void RTKPOS(CByteWriter& body, const SLogInput& input) {
    EncodeGeodetic(body, input.state.rtk, input.state);
}

void PDPPOS(CByteWriter& body, const SLogInput& input) {
    EncodeGeodetic(body, input.state.pdp, input.state);
}

// The simulated receiver has no subscription to the L-band service.
void OMNIHPPOS(CByteWriter& body, const SLogInput& input) {
    SSolution none;
    none.status = 1;
    EncodeGeodetic(body, none, input.state);
}

void BESTXYZ(CByteWriter& body, const SLogInput& input) {
    EncodeCartesian(body, BestSolution(input.state), input.state);
}

void PSRXYZ(CByteWriter& body, const SLogInput& input) {
    EncodeCartesian(body, input.state.pseudorange, input.state);
}

void RTKXYZ(CByteWriter& body, const SLogInput& input) {
    EncodeCartesian(body, input.state.rtk, input.state);
}

void PDPXYZ(CByteWriter& body, const SLogInput& input) {
    EncodeCartesian(body, input.state.pdp, input.state);
}

// No layout is published: the third integer is 1 while the filter is smooth, the fifth counts the
// carrier phases that it uses; both are 0 once it only propagates. The rest is plausible.
void PDPSTAT(CByteWriter& body, const SLogInput& input) {
    const SSolution& solution = input.state.pdp;
    const bool isMeasuring =
        solution.status == 0 && solution.type != kPropagated && solution.satellitesUsed > 0;
    const std::uint32_t used = isMeasuring ? solution.satellitesUsed : std::uint32_t{0};
    body.U32(solution.satellitesTracked).U32(used).U32(isMeasuring ? 1 : 0).U32(0).U32(used);
    body.Double(double{solution.deviationX}).Double(double{solution.deviationY});
    body.Double(double{solution.deviationZ});
}

void PSRDOP(CByteWriter& body, const SLogInput& input) {
    /// What stands for a geometry without a solution.
    constexpr SDilution kNone = {9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0};
    const SDilution dilution = DilutionOf(input.state.satellites).value_or(kNone);
    std::vector<std::uint32_t> prns;
    for (const SSatellite& satellite : input.state.satellites) {
        if (satellite.isUsed) {
            prns.push_back(satellite.prn);
        }
    }
    for (const double value : {dilution.geometric, dilution.position, dilution.horizontal,
                               dilution.horizontalAndTime, dilution.time, kElevationMask}) {
        body.Float(static_cast<float>(value));
    }
    body.Count(prns.size());
    for (const std::uint32_t prn : prns) {
        body.U32(prn);
    }
}

void REFSTATION(CByteWriter& body, const SLogInput& input) {
    constexpr std::uint32_t kRTCMV3 = 4;
    const SState& state = input.state;
    body.U32(0).Double(state.baseX).Double(state.baseY).Double(state.baseZ);
    body.U32(0).U32(kRTCMV3).Text(kStationID, 8);
}

void TIME(CByteWriter& body, const SLogInput& input) {
    constexpr std::uint8_t kFineSteering = 180;
    constexpr std::uint32_t kConverging = 1;
    constexpr double kOffsetDeviation = 15e-9;
    const bool isSteered = input.info.timeStatus == kFineSteering;
    const SUTC utc = UTCOf(input.state.time);
    body.U32(isSteered ? 0 : kConverging);
    body.Double(input.state.clockOffset).Double(kOffsetDeviation);
    body.Double(-static_cast<double>(utc.leapSeconds));
    body.U32(utc.year).U8(utc.month).U8(utc.day).U8(utc.hour).U8(utc.minute);
    body.U32(utc.milliseconds).U32(isSteered ? 1 : 0);
}

} // namespace LogBodies

} // namespace Sim
