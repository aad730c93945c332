#include "platform/SerialSettings.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>

namespace Core::IO {

namespace {

// Where the first structure of terminal settings had no room for a speed in figures there is a
// second one; elsewhere, as on PowerPC, the first one has it.
#ifdef TCGETS2
using Settings = struct termios2;
constexpr unsigned long kGetSettings = TCGETS2;
constexpr unsigned long kSetSettings = TCSETS2;
#else
using Settings = struct termios;
constexpr unsigned long kGetSettings = TCGETS;
constexpr unsigned long kSetSettings = TCSETS;
#endif

struct SSpeed {
    std::int32_t baud;
    tcflag_t code;
};

constexpr SSpeed kSpeeds[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000},
};

/// The code of a speed in figures where the speed has no code of its own.
tcflag_t CodeOf(std::int32_t baud) {
    for (const SSpeed& speed : kSpeeds) {
        if (speed.baud == baud) {
            return speed.code;
        }
    }
    return BOTHER;
}

std::int64_t BaudOf(const Settings& settings) {
    const tcflag_t code = settings.c_cflag & CBAUD;
    if (code == BOTHER) {
        return settings.c_ospeed;
    }
    for (const SSpeed& speed : kSpeeds) {
        if (speed.code == code) {
            return speed.baud;
        }
    }
    return 0;
}

void SetRaw(Settings& settings) {
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag &= ~tcflag_t{CSIZE | CSTOPB | PARENB | PARODD | CMSPAR | CRTSCTS};
    settings.c_cflag |= CS8 | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
}

/// No input code of its own means: as the output.
void SetSpeed(Settings& settings, std::int32_t baud) {
    settings.c_cflag &= ~tcflag_t{CBAUD | CIBAUD};
    settings.c_cflag |= CodeOf(baud);
    settings.c_ispeed = static_cast<speed_t>(baud);
    settings.c_ospeed = static_cast<speed_t>(baud);
}

/// A driver that cannot give a speed answers with the one it gives instead; bytes survive a
/// difference of about three in a hundred.
bool IsNear(std::int64_t given, std::int64_t wanted) {
    return std::llabs(given - wanted) * 100 <= wanted * 3;
}

std::string PutInForce(int descriptor, const Settings& before, const Settings& wanted,
                       std::int32_t baud) {
    Settings given = wanted;
    if (::ioctl(descriptor, kSetSettings, &wanted) != 0 ||
        ::ioctl(descriptor, kGetSettings, &given) != 0) {
        return std::strerror(errno);
    }
    if (!IsNear(BaudOf(given), baud)) {
        ::ioctl(descriptor, kSetSettings, &before);
        return "the line does not take " + std::to_string(baud) + " baud";
    }
    return {};
}

std::string Change(int descriptor, std::int32_t baud, bool makeRaw) {
    if (baud <= 0) {
        return "no line has a speed of " + std::to_string(baud) + " baud";
    }
    Settings before{};
    if (::ioctl(descriptor, kGetSettings, &before) != 0) {
        return errno == ENOTTY ? "not a serial line" : std::strerror(errno);
    }
    Settings wanted = before;
    if (makeRaw) {
        SetRaw(wanted);
    }
    SetSpeed(wanted, baud);
    return PutInForce(descriptor, before, wanted, baud);
}

} // namespace

std::string MakeLineRaw(int descriptor, std::int32_t baud) {
    return Change(descriptor, baud, true);
}

std::string ChangeLineSpeed(int descriptor, std::int32_t baud) {
    return Change(descriptor, baud, false);
}

std::uint32_t LineSpeed(int descriptor) {
    Settings settings{};
    return ::ioctl(descriptor, kGetSettings, &settings) == 0
               ? static_cast<std::uint32_t>(BaudOf(settings))
               : 0;
}

} // namespace Core::IO
