#include "hub/gpsd/RawText.h"

#include <algorithm>
#include <utility>

namespace Hub::GPSD {

namespace {

constexpr std::string_view kBinarySync = "\xAA\x44\x12";
constexpr std::string_view kLineEnd = "\r\n";

bool IsHexadecimal(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool IsPrintable(char c) {
    return c >= ' ' && c <= '~';
}

/// Of what begins with "$" or "#" and is printable: two or eight digits behind a star.
bool HasChecksum(std::string_view line) {
    const std::size_t digits = line[0] == '$' ? 2 : 8;
    return line.size() > 1 + digits && line[line.size() - 1 - digits] == '*' &&
           std::all_of(line.end() - static_cast<std::ptrdiff_t>(digits), line.end(), IsHexadecimal);
}

std::size_t EndOfPrintable(std::string_view bytes, std::size_t begin) {
    return static_cast<std::size_t>(
        std::find_if_not(bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.end(),
                         IsPrintable) -
        bytes.begin());
}

void AppendHexadecimal(std::string& out, std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    while (!bytes.empty()) {
        const std::size_t nextSync = bytes.find(kBinarySync, 1);
        const std::size_t count = std::min({bytes.size(), nextSync, CRawText::kBytesOfLine});
        for (const char c : bytes.substr(0, count)) {
            out += kDigits[static_cast<unsigned char>(c) >> 4];
            out += kDigits[static_cast<unsigned char>(c) & 0x0F];
        }
        out += kLineEnd;
        bytes.remove_prefix(count);
    }
}

} // namespace

std::string CRawText::Add(std::string_view block) {
    std::string bytes = std::exchange(m_heldBack, {});
    bytes += block;
    const std::string_view all = bytes;
    std::string out;
    std::size_t done = 0; // what is before has been told
    std::size_t end = 0;  // of what is printable
    for (std::size_t at = 0; (at = all.find_first_of("$#", at)) != std::string_view::npos;) {
        end = end > at ? end : EndOfPrintable(all, at);
        const std::string_view line = all.substr(at, end - at);
        const bool isShort = line.size() <= kLongestLine;
        if (isShort && end + kLineEnd.size() > all.size()) {
            m_heldBack = all.substr(at);
            break;
        }
        if (isShort && all.substr(end, kLineEnd.size()) == kLineEnd && HasChecksum(line)) {
            AppendHexadecimal(out, all.substr(done, at - done));
            out.append(line).append(kLineEnd);
            at = done = end + kLineEnd.size();
        } else {
            ++at;
        }
    }
    AppendHexadecimal(out, all.substr(done, all.size() - m_heldBack.size() - done));
    return out;
}

} // namespace Hub::GPSD
