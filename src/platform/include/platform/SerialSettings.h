// The settings of a serial line or of a pseudo-terminal that stands for one; apart, for the
// kernel's terminal structures, which alone know any speed, clash with the C library's.
#pragma once

#include <cstdint>
#include <string>

namespace Core::IO {

/// Makes the line raw (8 data bits, no parity, 1 stop bit, no flow control, modem lines ignored)
/// at `baud` bits per second. Empty on success, else the reason; the line is as it was then.
std::string MakeLineRaw(int descriptor, std::int32_t baud);

/// Changes the speed alone, at once. The result is that of MakeLineRaw().
std::string ChangeLineSpeed(int descriptor, std::int32_t baud);

/// Bits per second that the line puts out, or that those at the other end of a pseudo-terminal's
/// master have set; 0 when it cannot be told.
std::uint32_t LineSpeed(int descriptor);

} // namespace Core::IO
