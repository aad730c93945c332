// The signals by which a program is asked to end: it takes them where it waits, so that none comes
// between its look at them and its sleep.
#pragma once

#include <csignal>

namespace Core::Utilities {

/// From now on SIGTERM, SIGINT and SIGHUP do no more than to make IsAskedToEnd() true, and they
/// stay blocked. Returns the signals that were blocked before, for pselect() or ppoll() to wait
/// with.
sigset_t CatchEndSignals();

bool IsAskedToEnd();

} // namespace Core::Utilities
