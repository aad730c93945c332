#include "Clock.h"

namespace Core {

SClockHooks& ClockHooks() {
    static constinit SClockHooks hooks;
    return hooks;
}

} // namespace Core
