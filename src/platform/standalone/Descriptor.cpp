#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <poll.h>
#include <sys/select.h>
#include <unistd.h>

namespace Core::IO {

namespace {

/// As long as poll() can wait: 24 days.
constexpr Time kLongestWait = Time::FromMilliseconds(std::numeric_limits<int>::max());

/// Rounded up, so that a wait never ends before its time.
int PollMilliseconds(Time span) {
    constexpr std::int64_t kNanoseconds = 1'000'000;
    const std::int64_t nanoseconds = std::max<std::int64_t>(span.AsNanoseconds(), 0);
    return static_cast<int>((nanoseconds + kNanoseconds - 1) / kNanoseconds);
}

} // namespace

int KeepSelectable(int descriptor) {
    if (descriptor < FD_SETSIZE) {
        return descriptor;
    }
    ::close(descriptor);
    errno = EMFILE;
    return -1;
}

bool WaitReadable(int descriptor, Time timeout) {
    Time left = std::min(timeout, kLongestWait);
    const MonotonicTime deadline = MonotonicTime::Now() + left;
    pollfd watched{descriptor, POLLIN, 0};
    int ready = ::poll(&watched, 1, PollMilliseconds(left));
    while (ready < 0 && errno == EINTR) {
        left = std::min(deadline - MonotonicTime::Now(), left);
        ready = ::poll(&watched, 1, PollMilliseconds(left));
    }
    return ready > 0;
}

} // namespace Core::IO
