// The calls that led to a fatal signal, as the crash handler collects them inside the signal.
#pragma once

#include <cstddef>
#include <span>

namespace CrashBacktrace {

/// Does what must not be done inside a signal handler. To be called once, before the first signal.
void Prepare();

/// Fills `frames` with code addresses, the innermost call first, and returns how many there are.
/// `context` is the handler's third argument. A damaged stack may end in a further signal.
std::size_t Collect(std::span<void*> frames, void* context);

} // namespace CrashBacktrace
