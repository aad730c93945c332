#include "platform/Serial.h"

#include "platform/Descriptor.h"
#include "platform/SerialSettings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace Core::IO {

namespace {

constexpr Time kDrainPoll = Time::FromMilliseconds(2);
constexpr const char* kInUse = "in use by another program";

/// Whether it is a pseudo-terminal's device side (major numbers 136 to 143, the kernel's
/// devices.txt).
bool IsPseudoTerminal(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISCHR(status.st_mode)) {
        return false;
    }
    const unsigned int major = gnu_dev_major(status.st_rdev);
    return major >= 136 && major <= 143;
}

} // namespace

Serial::Serial(std::string device, std::int32_t baud, Time readTimeout)
    : m_device(std::move(device)), m_baud(baud), m_readTimeout(readTimeout) {
}

Serial::~Serial() {
    Release();
}

bool Serial::Open() {
    if (IsOpen()) {
        return Succeed();
    }
    m_descriptor =
        KeepSelectable(::open(m_device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (m_descriptor < 0) {
        return Fail(errno == EBUSY ? kInUse : std::strerror(errno));
    }
    std::string reason = Claim();
    if (reason.empty()) {
        reason = MakeLineRaw(m_descriptor, m_baud);
    }
    if (!reason.empty()) {
        return Lose(reason);
    }
    ::tcflush(m_descriptor, TCIFLUSH);
    return Succeed();
}

/// The lock keeps programs out that ask for it, the exclusive mode all others. That mode stays on
/// a pseudo-terminal when its owner dies, and would keep the owner's successor out: not there.
std::string Serial::Claim() const {
    if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? kInUse : std::strerror(errno);
    }
    if (!IsPseudoTerminal(m_descriptor)) {
        ::ioctl(m_descriptor, TIOCEXCL);
    }
    return {};
}

void Serial::Close() {
    Release();
    Succeed();
}

void Serial::Release() {
    m_tail.Clear();
    if (IsOpen()) {
        ::ioctl(m_descriptor, TIOCNXCL);
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

std::string Serial::Read(std::int32_t count) {
    // The kernel's terminals hold, and give at once, no more than this.
    char bytes[4096];
    const auto wanted = static_cast<std::size_t>(std::clamp<std::int32_t>(count, 0, sizeof bytes));
    if (!IsOpen()) {
        Fail("not open");
        return {};
    }
    Succeed();
    bool isReadable = false;
    while (wanted > 0) {
        const ssize_t result = ::read(m_descriptor, bytes, wanted);
        if (result > 0) {
            return std::string(bytes, static_cast<std::size_t>(result));
        }
        const bool hasFailed = result < 0 && errno != EAGAIN && errno != EINTR;
        if (hasFailed || (result == 0 && isReadable)) {
            Lose(hasFailed ? std::strerror(errno) : "hung up");
            return {};
        }
        if (isReadable || !WaitReadable(m_descriptor, m_readTimeout)) {
            return {};
        }
        isReadable = true;
    }
    return {};
}

bool Serial::Write(const std::string& bytes) {
    return WriteBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

bool Serial::Write(const std::vector<std::uint8_t>& bytes) {
    return WriteBytes(bytes.data(), bytes.size());
}

bool Serial::WriteBytes(const std::uint8_t* bytes, std::size_t count) {
    return IsOpen() ? HasLeftOrWaits(m_tail.Write(m_descriptor, bytes, count)) : Fail("not open");
}

bool Serial::ContinueWriting() {
    return IsOpen() ? HasLeftOrWaits(m_tail.Continue(m_descriptor)) : Fail("not open");
}

bool Serial::HasLeftOrWaits(WriteTail::EResult result) {
    switch (result) {
    case WriteTail::EResult::ok:
        return Succeed();
    case WriteTail::EResult::refused:
        return Fail("too many bytes wait to be written");
    case WriteTail::EResult::lost:
        break;
    }
    return Lose(errno == ETIMEDOUT ? "takes no bytes any more" : std::strerror(errno));
}

bool Serial::Drain() {
    const MonotonicTime deadline = MonotonicTime::Now() + kDrainLimit;
    while (ContinueWriting()) {
        const bool hasUnsentBytes = HasUnsentBytes();
        // With the driver's buffer empty this waits for the line's own few bytes alone.
        if (!hasUnsentBytes && ::tcdrain(m_descriptor) != 0 && errno == EIO) {
            return Lose("hung up");
        }
        if (!hasUnsentBytes) {
            return Succeed();
        }
        if (MonotonicTime::Now() >= deadline) {
            return Fail("what was written does not leave");
        }
        Sleep(kDrainPoll);
    }
    return false;
}

bool Serial::HasUnsentBytes() const {
    int inDriver = 0;
    return HasWaitingBytes() || (::ioctl(m_descriptor, TIOCOUTQ, &inDriver) == 0 && inDriver > 0);
}

bool Serial::SetBaudRate(std::int32_t baud) {
    if (baud <= 0) {
        return Fail("no line has a speed of " + std::to_string(baud) + " baud");
    }
    const bool hasLeft = !IsOpen() || Drain();
    const std::string failure = m_lastError;
    if (IsOpen()) {
        if (!hasLeft) {
            m_tail.Clear();
            ::tcflush(m_descriptor, TCOFLUSH);
        }
        if (const std::string reason = ChangeLineSpeed(m_descriptor, baud); !reason.empty()) {
            return Fail(reason);
        }
    }
    m_baud = baud;
    Succeed();
    if (!hasLeft) {
        m_lastError = failure;
    }
    return hasLeft;
}

bool Serial::SendBreak(float seconds) {
    if (!IsOpen()) {
        return Fail("not open");
    }
    // Before a break the kernel waits without limit for its output to leave.
    m_tail.Clear();
    ::tcflush(m_descriptor, TCOFLUSH);
    if (::ioctl(m_descriptor, TIOCSBRK) != 0) {
        return Fail(std::string("no break: ") + std::strerror(errno));
    }
    Sleep(Time::FromSeconds(seconds));
    if (::ioctl(m_descriptor, TIOCCBRK) != 0) {
        return Fail(std::string("the break does not end: ") + std::strerror(errno));
    }
    return Succeed();
}

bool Serial::Succeed() {
    m_lastError.clear();
    return true;
}

bool Serial::Fail(const std::string& reason) {
    m_lastError = m_device + ": " + reason;
    return false;
}

bool Serial::Lose(const std::string& reason) {
    Release();
    return Fail(reason);
}

} // namespace Core::IO
