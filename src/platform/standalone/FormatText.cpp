#include "FormatText.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

/// Takes the C library's way, which knows every conversion.
__attribute__((format(printf, 1, 0))) std::string FormatAny(const char* format, va_list arguments) {
    char buffer[256];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    std::string text;
    if (length >= 0 && static_cast<std::size_t>(length) < sizeof buffer) {
        text.assign(buffer, static_cast<std::size_t>(length));
    } else if (length > 0) {
        text.resize(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

void AppendInteger(std::string& text, int number) {
    char buffer[16];
    text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, number).ptr);
}

/// Six decimals, as "%f" has them.
void AppendFixed(std::string& text, double number) {
    // The largest double has 309 digits before its point.
    char buffer[328];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, 6);
    text.append(buffer, result.ptr);
}

/// Does the plain "%d" and "%lf", of which a capture's every record takes three; false on others.
bool FormatPlain(std::string& text, const char* format, va_list arguments) {
    for (const char* percent = std::strchr(format, '%'); percent != nullptr;
         percent = std::strchr(format, '%')) {
        text.append(format, percent);
        if (percent[1] == 'd') {
            AppendInteger(text, va_arg(arguments, int));
            format = percent + 2;
        } else if (percent[1] == 'l' && percent[2] == 'f') {
            const double number = va_arg(arguments, double);
            if (!std::isfinite(number)) {
                return false;
            }
            AppendFixed(text, number);
            format = percent + 3;
        } else {
            return false;
        }
    }
    text += format;
    return true;
}

} // namespace

std::string FormatText(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    std::string text;
    if (!FormatPlain(text, format, arguments)) {
        text = FormatAny(format, again);
    }
    va_end(again);
    return text;
}
