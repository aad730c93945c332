#include "LineSpeed.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace {

#ifdef TCGETS2
using Settings = struct termios2;
constexpr unsigned long kGet = TCGETS2;
constexpr unsigned long kSet = TCSETS2;
#else
using Settings = struct termios;
constexpr unsigned long kGet = TCGETS;
constexpr unsigned long kSet = TCSETS;
#endif

} // namespace

std::int64_t SpeedInFigures(int descriptor) {
    Settings settings{};
    return ::ioctl(descriptor, kGet, &settings) == 0 ? std::int64_t{settings.c_ospeed} : -1;
}

bool TakesSpeedsInFigures(int descriptor) {
    Settings before{};
    ::ioctl(descriptor, kGet, &before);
    Settings settings = before;
    settings.c_cflag = (settings.c_cflag & ~tcflag_t{CBAUD}) | BOTHER;
    settings.c_ospeed = 54321;
    settings.c_ispeed = 54321;
    ::ioctl(descriptor, kSet, &settings);
    ::ioctl(descriptor, kGet, &settings);
    ::ioctl(descriptor, kSet, &before);
    return (settings.c_cflag & CBAUD) == BOTHER && settings.c_ospeed == 54321;
}
