// The ends of the process that a log with an impossible length orders; the log decoders call them.
#pragma once

/// A sentence whose CRC is good and whose length contradicts its own contents means that the
/// decoder and the receiver disagree about a log: the daemon ends and is started anew. Before that,
/// standard output is flushed and what waits for the services is given its chance to leave. Holds
/// in every build, also where the C library's assert() does not.
namespace DamagedLog {

/// Writes the line of a failed assert() to standard error, then raises SIGABRT. The texts are
/// fixed, so that whoever watches for them need not know which compiler built the program.
[[noreturn]] void FailAssertion(const char* source, int line, const char* function,
                                const char* expression);

/// Ends the process with exit status 1.
[[noreturn]] void Exit();

} // namespace DamagedLog
