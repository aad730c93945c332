// What a position type is worth: the classes and qualities that consumers decide by.
#pragma once

#include <cstdint>

namespace SolutionQuality {

/// The solution status that stands for a solution.
inline constexpr std::uint32_t kComputed = 0;

inline constexpr std::int32_t kSingleClass = 4;
inline constexpr std::int32_t kFloatClass = 5;
inline constexpr std::int32_t kIntegerClass = 6;
inline constexpr std::int32_t kLBandClass = 2;
inline constexpr std::int32_t kNoClass = -1;

/// The class of a position type, kNoClass for one that belongs to none.
std::int32_t SolutionClass(std::uint32_t positionType);

/// Whether there is a position at all: computed, not merely propagated, and of some class.
bool IsUsable(std::uint32_t solutionStatus, std::uint32_t positionType);

/// The fix quality of a usable position: 1 single, 2 better, 4 narrow-lane integer.
std::int32_t FixQuality(std::uint32_t positionType);

/// The position quality that the type alone gives: 3 or 2 for the best ones, 0 where something
/// else decides.
std::int32_t QualityOfType(std::uint32_t positionType);

/// The flag published with every RTKXYZ.
std::int32_t RTKXYZQualityFlag(std::uint32_t positionType);

} // namespace SolutionQuality
