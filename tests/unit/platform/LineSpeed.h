// What the kernel itself says about the speed of a line; apart, since its structures clash with
// the C library's.
#pragma once

#include <cstdint>

/// Bits per second that the line puts out.
std::int64_t SpeedInFigures(int descriptor);

/// False where something below, as an emulator, knows the standard speeds only.
bool TakesSpeedsInFigures(int descriptor);
