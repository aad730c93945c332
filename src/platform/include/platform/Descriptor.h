// What owners of descriptors that the main loop's select() watches ask of the system.
#pragma once

#include "platform/Time.h"

namespace Core::IO {

/// The descriptor itself when select() can watch it. One at or above FD_SETSIZE is closed and -1
/// returned with errno EMFILE; -1 is passed on with its errno.
int KeepSelectable(int descriptor);

/// True once a read would not have to wait: bytes, an end or an error are there. Waits for that at
/// most `timeout`, not at all when it is not positive; a signal does not shorten the wait.
bool WaitReadable(int descriptor, Time timeout);

} // namespace Core::IO
