// The firmware file as far as it can be judged before the daemon reads it.
#pragma once

#include <string>

namespace Ctl {

/// Why the file on this machine is no firmware; empty when it may be some. One that only others may
/// read is theirs to judge.
std::string WhyNoFirmware(const std::string& path);

} // namespace Ctl
