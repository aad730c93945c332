#include "Clock.h"
#include "HubLink.h"

void Core::Sleep(Time span) {
    if (ClockHooks().sleep != nullptr) {
        ClockHooks().sleep(span);
        return;
    }
    CHubLink::Get().Wait(span);
}
