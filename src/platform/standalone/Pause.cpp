#include "Clock.h"
#include "HubLink.h"

#include <cerrno>
#include <ctime>

namespace {

void Pause(Core::Time span) {
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    const std::int64_t nanoseconds = span.AsNanoseconds();
    timespec left = {};
    left.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
    left.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
    while (nanoseconds > 0 && nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

} // namespace

void Core::Sleep(Time span) {
    if (ClockHooks().sleep != nullptr) {
        ClockHooks().sleep(span);
    } else if (CHubLink::IsInUse()) {
        CHubLink::Get().Wait(span);
    } else {
        Pause(span);
    }
}
