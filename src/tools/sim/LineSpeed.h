// The speed of a terminal in figures; apart, since the kernel's structures clash with the C
// library's.
#pragma once

#include <cstdint>

namespace Sim {

/// Bits per second at which those at the other end of a pseudo-terminal's master read; 0 when it
/// cannot be told.
std::uint32_t LineSpeed(int master);

/// Gives the terminal a speed, and passes every byte through as it is. False when that failed.
bool MakeRaw(int terminal, std::uint32_t baud);

} // namespace Sim
