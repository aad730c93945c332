// The debug and error traces: lines on standard error that never block the program.
#pragma once

/// Writes a trace line, printf-style, to standard error, or as the environment says: CORVANE_TRACE
/// "off" silences it, a path appends to that file. What the sink cannot take at once is dropped.
///
/// A line that repeats within ten seconds is counted instead, and the count told with its next
/// print or at the end; lines that begin with a digit are measurements and always printed.
/// (An overload beside POSIX's dprintf(int, ...), told apart by its first argument.)
void dprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The same for errors: always to standard error, whatever CORVANE_TRACE says.
void deprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// `deprintf` of "<what>: <the text of errno>\n", as perror writes it.
void deperror(const char* what);
