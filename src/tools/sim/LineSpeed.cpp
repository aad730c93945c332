#include "LineSpeed.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace Sim {

namespace {

// Where speeds have no structure of their own, the usual one holds them.
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

std::uint32_t LineSpeed(int master) {
    Settings settings{};
    return ::ioctl(master, kGet, &settings) == 0 ? settings.c_ospeed : 0;
}

bool MakeRaw(int terminal, std::uint32_t baud) {
    Settings settings{};
    if (::ioctl(terminal, kGet, &settings) != 0) {
        return false;
    }
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag = CS8 | CREAD | CLOCAL | BOTHER;
    settings.c_ospeed = baud;
    settings.c_ispeed = baud;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return ::ioctl(terminal, kSet, &settings) == 0;
}

} // namespace Sim
