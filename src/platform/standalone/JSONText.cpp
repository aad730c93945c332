#include "JSONText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace JSONText {

namespace {

using Byte = unsigned char;

/// The well-formed sequences by their first byte (Unicode, table 3-7): the range of the second
/// byte is narrower where overlong forms, surrogates or values past U+10FFFF would begin.
struct SUTF8Form {
    Byte firstLow;
    Byte firstHigh;
    Byte secondLow;
    Byte secondHigh;
    std::size_t length;
};

constexpr std::array<SUTF8Form, 8> kUTF8Forms = {{
    {0xC2, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
}};

Byte At(std::string_view text, std::size_t index) {
    return static_cast<Byte>(text[index]);
}

bool IsWithin(Byte byte, Byte low, Byte high) {
    return byte >= low && byte <= high;
}

/// The length of the valid sequence at the start of `text`, 0 when there is none.
std::size_t UTF8Length(std::string_view text) {
    for (const SUTF8Form& form : kUTF8Forms) {
        if (!IsWithin(At(text, 0), form.firstLow, form.firstHigh)) {
            continue;
        }
        if (text.size() < form.length || !IsWithin(At(text, 1), form.secondLow, form.secondHigh)) {
            return 0;
        }
        for (std::size_t i = 2; i < form.length; ++i) {
            if (!IsWithin(At(text, i), 0x80, 0xBF)) {
                return 0;
            }
        }
        return form.length;
    }
    return 0;
}

bool IsPlain(Byte byte) {
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

std::size_t PlainLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && IsPlain(At(text, length))) {
        ++length;
    }
    return length;
}

void AppendEscape(std::string& out, Byte byte) {
    constexpr std::string_view kShort = "\"\"\\\\\bb\ff\nn\rr\tt";
    out += '\\';
    for (std::size_t i = 0; i < kShort.size(); i += 2) {
        if (At(kShort, i) == byte) {
            out += kShort[i + 1];
            return;
        }
    }
    constexpr std::string_view kHexadecimal = "0123456789abcdef";
    out += "u00";
    out += kHexadecimal[byte >> 4];
    out += kHexadecimal[byte & 0x0F];
}

void AppendLatin1(std::string& out, Byte byte) {
    out += static_cast<char>(0xC0 | (byte >> 6));
    out += static_cast<char>(0x80 | (byte & 0x3F));
}

/// Appends what stands at the start of `text` and is not plain; returns how many bytes that was.
std::size_t AppendSpecial(std::string& out, std::string_view text) {
    if (At(text, 0) < 0x80) {
        AppendEscape(out, At(text, 0));
        return 1;
    }
    const std::size_t length = UTF8Length(text);
    if (length == 0) {
        AppendLatin1(out, At(text, 0));
        return 1;
    }
    out.append(text.substr(0, length));
    return length;
}

template <typename T>
void AppendNumber(std::string& out, T value) {
    std::array<char, 32> buffer; // the longest double, -2.2250738585072014e-308, has 24
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    out.append(buffer.data(), result.ptr);
}

} // namespace

void AppendString(std::string& out, std::string_view text) {
    text = text.substr(0, text.find('\0'));
    out += '"';
    while (!text.empty()) {
        const std::size_t plain = PlainLength(text);
        out.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (!text.empty()) {
            text.remove_prefix(AppendSpecial(out, text));
        }
    }
    out += '"';
}

void AppendDouble(std::string& out, double value) {
    // Up to here every whole number is a double of its own, and reads best as an integer.
    constexpr double kLargestExactWhole = 9007199254740992.0;
    if (!std::isfinite(value)) {
        out += "null";
    } else if (value == 0.0 && std::signbit(value)) {
        out += "-0.0"; // "-0" is valid, but many readers take it for the integer 0
    } else if (std::fabs(value) <= kLargestExactWhole && value == std::trunc(value)) {
        AppendNumber(out, static_cast<std::int64_t>(value));
    } else {
        AppendNumber(out, value);
    }
}

void AppendInteger(std::string& out, std::int64_t value) {
    AppendNumber(out, value);
}

} // namespace JSONText
