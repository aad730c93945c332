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

template <typename T>
void AppendInteger(std::string& text, T number) {
    char buffer[16];
    text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, number).ptr);
}

constexpr int kLargestPrecision = 9;

/// So many decimals, correctly rounded as printf's; false for what is not finite.
bool AppendFixed(std::string& text, double number, int decimals) {
    if (!std::isfinite(number)) {
        return false;
    }
    // The largest double has 309 digits before its point.
    char buffer[328];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, decimals);
    text.append(buffer, result.ptr);
    return true;
}

/// "%f" and "%lf", with or without one digit of precision; moves `format` behind it. 6 decimals are
/// printf's own default. False, and nothing moved, for another conversion.
bool TakeFixedConversion(const char*& format, int& decimals) {
    const char* at = format + 1;
    decimals = 6;
    if (at[0] == '.' && at[1] >= '0' && at[1] <= '0' + kLargestPrecision) {
        decimals = at[1] - '0';
        at += 2;
    }
    at += *at == 'l' ? 1 : 0;
    if (*at != 'f') {
        return false;
    }
    format = at + 1;
    return true;
}

/// Does the plain "%d", "%u", "%s", "%f" and "%.3f", of which a capture's every record takes some;
/// false on others.
bool FormatPlain(std::string& text, const char* format, va_list arguments) {
    for (const char* percent = std::strchr(format, '%'); percent != nullptr;
         percent = std::strchr(format, '%')) {
        text.append(format, percent);
        format = percent + 2;
        int decimals = 0;
        if (percent[1] == 'd') {
            AppendInteger(text, va_arg(arguments, int));
        } else if (percent[1] == 'u') {
            AppendInteger(text, va_arg(arguments, unsigned));
        } else if (percent[1] == 's') {
            text += va_arg(arguments, const char*);
        } else if (TakeFixedConversion(percent, decimals)) {
            format = percent;
            if (!AppendFixed(text, va_arg(arguments, double), decimals)) {
                return false;
            }
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
