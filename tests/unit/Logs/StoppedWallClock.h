// A wall clock that stands at one moment while a test makes records.
#pragma once

#include "Clock.h"

class CStoppedWallClock {
public:
    explicit CStoppedWallClock(Core::Time sinceEpoch) {
        s_now = sinceEpoch;
        Core::ClockHooks().unix = [] { return s_now; };
    }
    ~CStoppedWallClock() { Core::ClockHooks().unix = nullptr; }
    CStoppedWallClock(const CStoppedWallClock&) = delete;
    CStoppedWallClock& operator=(const CStoppedWallClock&) = delete;

private:
    static inline Core::Time s_now;
};
