// A clock that stands still until a test moves it, and pauses that take no time but the clock's.
// Each one begins long after the one before, so that no trace line counts as a repetition.
#pragma once

#include "Clock.h"

#include <vector>

class CFakeClock {
public:
    CFakeClock() {
        s_now = s_now + Core::Time::FromMilliseconds(1'000'000'000);
        s_overshoot = Core::Time();
        s_pauses.clear();
        s_atPause = nullptr;
        Core::ClockHooks().monotonic = [] { return s_now; };
        Core::ClockHooks().sleep = &Pause;
    }
    ~CFakeClock() { Core::ClockHooks() = Core::SClockHooks(); }
    CFakeClock(const CFakeClock&) = delete;
    CFakeClock& operator=(const CFakeClock&) = delete;

    void Advance(Core::Time span) { s_now = s_now + span; }
    Core::Time Now() const { return s_now; }

    /// Every pause lasts longer than it was ordered to by so much.
    void LetPausesOvershoot(Core::Time span) { s_overshoot = span; }
    /// Called while the program pauses.
    void AtPause(void (*call)()) { s_atPause = call; }

    /// How long the pauses were ordered to be.
    const std::vector<Core::Time>& Pauses() const { return s_pauses; }

private:
    static void Pause(Core::Time span) {
        s_pauses.push_back(span);
        s_now = s_now + span + s_overshoot;
        if (s_atPause != nullptr) {
            s_atPause();
        }
    }

    static inline Core::Time s_now = Core::Time::FromMilliseconds(1'000'000'000'000);
    static inline Core::Time s_overshoot;
    static inline std::vector<Core::Time> s_pauses;
    static inline void (*s_atPause)() = nullptr;
};
