#include "Command.h"

#include "Words.h"

#include "Bytes/CRC32.h"
#include "platform/Text.h"

#include <charconv>

namespace Sim {

namespace {

constexpr std::size_t kDigitsOfCRC = 8;

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(" \t,", at)) != std::string_view::npos) {
        const bool isQuoted = text[at] == '"';
        const std::size_t begin = isQuoted ? at + 1 : at;
        const std::size_t end =
            std::min(text.size(), text.find_first_of(isQuoted ? "\"" : " \t,", begin));
        words.emplace_back(text.substr(begin, end - begin));
        at = isQuoted ? end + 1 : end;
        if (at > text.size()) {
            break;
        }
    }
    return words;
}

bool HasValidCRC(std::string_view covered, std::string_view digits) {
    std::uint32_t crc = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), crc, 16);
    return error == std::errc() && end == digits.data() + digits.size() &&
           digits.size() == kDigitsOfCRC &&
           crc == ::Bytes::CalculateCRC32(reinterpret_cast<const std::uint8_t*>(covered.data()),
                                          covered.size());
}

/// Without the "#": the name with an A, header fields, a semicolon, the arguments, "*" and a CRC.
SCommand ParseASCII(std::string_view sentence) {
    SCommand command{.form = ECommandForm::ascii, .name = {}, .words = {}};
    const std::size_t star = sentence.rfind('*');
    const std::string_view covered = sentence.substr(0, star);
    command.isDamaged = star == std::string_view::npos ||
                        !HasValidCRC(covered, Core::Utilities::Trim(sentence.substr(star + 1)));
    const std::size_t semicolon = covered.find(';');
    command.name = Capitals(covered.substr(0, covered.find(',')));
    if (command.name.ends_with('A')) {
        command.name.pop_back();
    }
    if (semicolon != std::string_view::npos) {
        command.words = WordsOf(covered.substr(semicolon + 1));
    }
    return command;
}

} // namespace

SCommand ParseLine(std::string_view line) {
    line = Core::Utilities::Trim(line);
    if (line.starts_with('#')) {
        return ParseASCII(line.substr(1));
    }
    SCommand command;
    command.words = WordsOf(line);
    if (!command.words.empty()) {
        command.name = Capitals(command.words.front());
        command.words.erase(command.words.begin());
    }
    return command;
}

} // namespace Sim
