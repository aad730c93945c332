// Where tests put clocks of their own under the platform's times and pauses.
#pragma once

#include "platform/Time.h"

namespace Core {

/// Each null pointer means the real thing. Set by tests only, before the code under test runs.
struct SClockHooks {
    Time (*monotonic)() = nullptr; ///< in place of CLOCK_MONOTONIC
    Time (*unix)() = nullptr;      ///< in place of CLOCK_REALTIME, since the Unix epoch
    void (*sleep)(Time) = nullptr; ///< in place of Sleep()'s waiting
};

/// The hooks in force in this process.
SClockHooks& ClockHooks();

} // namespace Core
