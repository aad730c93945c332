#include "LogObserver/SolutionQuality.h"

#include "Logs/NovatelOEMV/PositionType.h"

using namespace Novatel::PositionType;

namespace SolutionQuality {

std::int32_t SolutionClass(std::uint32_t positionType) {
    switch (positionType) {
    case kSingle:
    case kPseudorangeDifferential:
    case kSBAS:
    case kOmnistarVBS:
        return kSingleClass;
    case kL1Float:
    case kIonosphereFreeFloat:
    // Among the float types, and the narrow-lane float among the integer ones below; kept:
    // consumers rely on it.
    case kL1Integer:
    case kCDGPS:
        return kFloatClass;
    case kNarrowFloat:
    case kWideInteger:
    case kNarrowInteger:
    case kRTKDirectINS:
        return kIntegerClass;
    case kOmnistarHP:
    case kOmnistarXP:
        return kLBandClass;
    default:
        return kNoClass;
    }
}

bool IsUsable(std::uint32_t solutionStatus, std::uint32_t positionType) {
    return solutionStatus == kComputed && positionType != kPropagated &&
           SolutionClass(positionType) != kNoClass;
}

std::int32_t FixQuality(std::uint32_t positionType) {
    switch (positionType) {
    case kPseudorangeDifferential:
    case kSBAS:
    case kOmnistarVBS:
    case kNarrowFloat:
    case kWideInteger:
    case kOmnistarHP:
    case kOmnistarXP:
    case kCDGPS:
        return 2;
    case kNarrowInteger:
        return 4;
    default:
        return 1;
    }
}

std::int32_t QualityOfType(std::uint32_t positionType) {
    switch (positionType) {
    case kOmnistarHP:
    case kNarrowInteger:
        return 3;
    case kOmnistarXP:
    case kWideInteger:
    case kNarrowFloat:
        return 2;
    default:
        return 0;
    }
}

std::int32_t RTKXYZQualityFlag(std::uint32_t positionType) {
    switch (positionType) {
    case kNarrowFloat:
    case kWideInteger:
        return 2;
    case kNarrowInteger:
        return 3;
    default:
        return 1;
    }
}

} // namespace SolutionQuality
