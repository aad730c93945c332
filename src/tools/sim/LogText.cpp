#include "LogText.h"

#include "platform/Text.h"

#include <algorithm>

namespace Sim {

namespace {

using Core::Utilities::Split;
using Core::Utilities::Trim;

std::string WithBlanks(std::string_view text) {
    std::string words(text);
    std::replace(words.begin(), words.end(), ',', ' ');
    return words;
}

} // namespace

std::string Abbreviate(std::string_view asciiLogs) {
    std::string lines;
    for (const std::string_view part : Split(asciiLogs, '\n')) {
        const std::string_view log = Trim(part);
        const std::size_t comma = log.find(',');
        const std::size_t semicolon = log.find(';');
        if (!log.starts_with('#') || comma == std::string_view::npos ||
            semicolon == std::string_view::npos) {
            continue;
        }
        // Without the "#" in front, and the format's letter at the name's end.
        const std::string_view name = log.substr(1, comma - 2);
        const std::string_view body = log.substr(semicolon + 1);
        lines += "<" + std::string(name) + WithBlanks(log.substr(comma, semicolon - comma)) +
                 "\r\n<     " + WithBlanks(body.substr(0, body.rfind('*'))) + "\r\n";
    }
    return lines;
}

std::string ContentOf(const Bytes& log, ELogFormat format) {
    constexpr std::size_t kHeaderLength = 3; ///< where it stands
    constexpr std::size_t kCRC = 4;
    const std::string text(log.begin(), log.end());
    if (format == ELogFormat::binary) {
        const std::size_t begin = log.at(kHeaderLength);
        return text.substr(begin, text.size() - kCRC - begin);
    }
    const std::size_t begin = text.find(format == ELogFormat::ascii ? ';' : '\n');
    return text.substr(begin + 1, text.rfind('*') - begin - 1);
}

} // namespace Sim
