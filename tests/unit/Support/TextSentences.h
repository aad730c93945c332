// Builds ASCII logs and NMEA sentences for tests, as a framer delivers them: without a line end.
#pragma once

#include "Support/BinarySentence.h"

#include <cstdio>
#include <string>

namespace Sentences {

inline Bytes::Sentence BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

/// "#<name>,<rest of the header>;<body>*<CRC>".
inline Bytes::Sentence AsciiLog(std::string_view name, std::string_view body) {
    std::string text(name);
    text += ",USB2,0,97.5,UNKNOWN,0,0.186,004c0001,2d64,3153;";
    text += body;
    char checksum[sizeof "*ffffffff"];
    std::snprintf(checksum, sizeof checksum, "*%08x", CRC32(BytesOf(text)));
    return BytesOf("#" + text + checksum);
}

/// "$<text>*<XOR>".
inline Bytes::Sentence Nmea(std::string_view text) {
    unsigned sum = 0;
    for (const char character : text) {
        sum ^= static_cast<std::uint8_t>(character);
    }
    char checksum[sizeof "*FF"];
    std::snprintf(checksum, sizeof checksum, "*%02X", sum & 0xFFU);
    return BytesOf("$" + std::string(text) + checksum);
}

} // namespace Sentences
