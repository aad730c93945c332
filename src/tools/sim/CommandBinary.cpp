#include "Command.h"

#include "CommandTable.h"
#include "LogCatalog.h"

#include "Bytes/ByteReaders.h"
#include "Bytes/CRC32.h"

namespace Sim {

namespace {

constexpr std::uint16_t kLog = 1;
constexpr std::uint16_t kUnlog = 36;
constexpr std::size_t kTrailer = 4; ///< the CRC
constexpr unsigned int kFormatBits = 5;

/// "BESTPOSB" for 42 in binary format; the bare number for a log that does not exist.
std::string LogWord(std::uint16_t identifier, std::uint8_t type) {
    const SCatalogLog* log = FindLog(identifier);
    if (log == nullptr) {
        return std::to_string(identifier);
    }
    constexpr ELogFormat kFormats[] = {ELogFormat::binary, ELogFormat::ascii,
                                       ELogFormat::abbreviated, ELogFormat::abbreviated};
    return LogName({log, kFormats[(type >> kFormatBits) & 3U]});
}

std::string NumberAt(const Bytes& frame, std::size_t offset) {
    return std::to_string(::Bytes::ReadUInt32(frame, offset));
}

/// Of LOG and UNLOG: the port, the log, and for LOG trigger, period, offset and hold.
std::vector<std::string> LogWords(const Bytes& frame, std::size_t body, bool isWhole) {
    std::vector<std::string> words = {
        NumberAt(frame, body),
        LogWord(::Bytes::ReadUInt16(frame, body + 4), ::Bytes::ReadUInt8(frame, body + 6))};
    if (isWhole) {
        words.push_back(NumberAt(frame, body + 8));
        words.push_back(std::to_string(::Bytes::ReadDouble(frame, body + 12)));
        words.push_back(std::to_string(::Bytes::ReadDouble(frame, body + 20)));
        words.push_back(NumberAt(frame, body + 28));
    }
    return words;
}

} // namespace

SCommand ParseFrame(const Bytes& frame) {
    SCommand command{.form = ECommandForm::binary, .name = {}, .words = {}};
    command.identifier = ::Bytes::ReadUInt16(frame, 4);
    command.isDamaged = !::Bytes::HasValidCRC32(frame);
    const std::size_t body = ::Bytes::ReadUInt8(frame, 3);
    if (command.identifier == kLog || command.identifier == kUnlog) {
        command.name = command.identifier == kLog ? "LOG" : "UNLOG";
        command.words = LogWords(frame, body, command.identifier == kLog);
        return command;
    }
    const SCommandFacts* facts = FindCommand(command.identifier);
    if (facts == nullptr) {
        return command;
    }
    command.name = facts->name;
    const std::size_t most = facts->parameters.size() + (facts->takesPort ? 1U : 0U);
    for (std::size_t offset = body; offset + kTrailer < frame.size() && command.words.size() < most;
         offset += 4) {
        command.words.push_back(NumberAt(frame, offset));
    }
    return command;
}

} // namespace Sim
