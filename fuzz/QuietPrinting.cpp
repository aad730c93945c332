// The debug and error prints of the fuzzed program: formatted, so that the sanitizers see what is
// printed, then dropped, as millions of damaged sentences would fill the disk with theirs.
#include "platform/DebugPrint.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

void Format(const char* format, va_list arguments) __attribute__((format(printf, 1, 0)));

void Format(const char* format, va_list arguments) {
    char text[1024];
    if (std::vsnprintf(text, sizeof text, format, arguments) < 0) {
        std::abort();
    }
}

} // namespace

void dprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Format(format, arguments);
    va_end(arguments);
}

void deprintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Format(format, arguments);
    va_end(arguments);
}

void deperror(const char*) {
}
