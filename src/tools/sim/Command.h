// A command as it was written: abbreviated ASCII, ASCII or binary.
#pragma once

#include "LogEncoder.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sim {

/// Decides on the form of the answer.
enum class ECommandForm { abbreviated, ascii, binary };

struct SCommand {
    ECommandForm form = ECommandForm::abbreviated;
    std::string name; ///< in capitals; empty for an empty line
    std::vector<std::string> words;
    std::uint16_t identifier = 0; ///< of a binary one
    bool isDamaged = false;       ///< its checksum is wrong
};

/// A line without its end: "log bestposb ontime 1". Blanks and commas separate, a text in double
/// quotes is one word. A line that begins with "#" is of the ASCII form and closes with a CRC.
SCommand ParseLine(std::string_view line);

/// A whole binary message, from its sync bytes to its CRC. Its numbers become words: the receiver
/// takes either wherever a name is expected.
SCommand ParseFrame(const Bytes& frame);

} // namespace Sim
