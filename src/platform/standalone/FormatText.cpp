#include "FormatText.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>

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

/// A number as `std::to_chars` writes it, into a buffer that holds any.
class CNumberText {
public:
    explicit CNumberText(int number)
        : m_end(std::to_chars(m_buffer, m_buffer + sizeof m_buffer, number).ptr) {}
    /// Six decimals, as "%f" has them.
    explicit CNumberText(double number)
        : m_end(std::to_chars(m_buffer, m_buffer + sizeof m_buffer, number,
                              std::chars_format::fixed, 6)
                    .ptr) {}

    std::string_view Text() const {
        return {m_buffer, static_cast<std::size_t>(m_end - m_buffer)};
    }

private:
    /// The largest double has 309 digits before its point.
    char m_buffer[328];
    char* m_end;
};

/// Does the plain "%d" and "%lf", of which a capture's every record takes three; false on others.
bool FormatPlain(std::string& text, const char* format, va_list arguments) {
    for (const char* percent = std::strchr(format, '%'); percent != nullptr;
         percent = std::strchr(format, '%')) {
        text.append(format, percent);
        if (percent[1] == 'd') {
            text += CNumberText(va_arg(arguments, int)).Text();
            format = percent + 2;
        } else if (percent[1] == 'l' && percent[2] == 'f') {
            const double number = va_arg(arguments, double);
            if (!std::isfinite(number)) {
                return false;
            }
            text += CNumberText(number).Text();
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
