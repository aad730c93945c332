#include "platform/DebugPrint.h"

#include "TraceOutputs.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

/// What is printed on the way to an error's handling must not change the error.
class CErrnoKeeper {
public:
    CErrnoKeeper() = default;
    ~CErrnoKeeper() { errno = m_errno; }
    CErrnoKeeper(const CErrnoKeeper&) = delete;
    CErrnoKeeper& operator=(const CErrnoKeeper&) = delete;

private:
    const int m_errno = errno;
};

void Print(CTraceSink& sink, const char* format, va_list arguments)
    __attribute__((format(printf, 2, 0)));

void Print(CTraceSink& sink, const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    std::array<char, 1024> buffer;
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    const auto size = static_cast<std::size_t>(length < 0 ? 0 : length);
    if (size < buffer.size()) {
        sink.Write({buffer.data(), size});
    } else {
        std::string text(size, '\0'); // its terminator takes the one that vsnprintf writes
        std::vsnprintf(text.data(), size + 1, format, again);
        sink.Write(text);
    }
    va_end(again);
}

} // namespace

void dprintf(const char* format, ...) {
    const CErrnoKeeper keeper;
    CTraceSink* const sink = CTraceOutputs::Get().Trace();
    if (sink == nullptr) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    Print(*sink, format, arguments);
    va_end(arguments);
}

void deprintf(const char* format, ...) {
    const CErrnoKeeper keeper;
    va_list arguments;
    va_start(arguments, format);
    Print(CTraceOutputs::Get().Errors(), format, arguments);
    va_end(arguments);
}

void deperror(const char* what) {
    deprintf("%s: %s\n", what, std::strerror(errno));
}
