// How a solution was computed: the receiver's position types (the receiver's manual, "position or
// velocity type"). Numbers without a name occur.
#pragma once

#include <cstdint>

namespace Novatel::PositionType {

inline constexpr std::uint32_t kSingle = 16;
inline constexpr std::uint32_t kPseudorangeDifferential = 17;
inline constexpr std::uint32_t kSBAS = 18;
inline constexpr std::uint32_t kPropagated = 19; ///< without new observations
inline constexpr std::uint32_t kOmnistarVBS = 20;
inline constexpr std::uint32_t kL1Float = 32;
inline constexpr std::uint32_t kIonosphereFreeFloat = 33;
inline constexpr std::uint32_t kNarrowFloat = 34;
inline constexpr std::uint32_t kL1Integer = 48;
inline constexpr std::uint32_t kWideInteger = 49;
inline constexpr std::uint32_t kNarrowInteger = 50;
inline constexpr std::uint32_t kRTKDirectINS = 51;
inline constexpr std::uint32_t kOmnistarHP = 64;
inline constexpr std::uint32_t kOmnistarXP = 65;
inline constexpr std::uint32_t kCDGPS = 66;

} // namespace Novatel::PositionType
