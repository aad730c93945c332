// The text of logs: the abbreviated form, and what of a log tells that it has changed.
#pragma once

#include "LogCatalog.h"
#include "LogEncoder.h"

#include <string>
#include <string_view>

namespace Sim {

/// Of ASCII logs, line by line: "<NAME", then blanks for commas; the body on a line that begins
/// with "<" and five blanks. Without the checksum.
std::string Abbreviate(std::string_view asciiLogs);

/// The part of a log that does not depend on when it was sent.
std::string ContentOf(const Bytes& log, ELogFormat format);

} // namespace Sim
