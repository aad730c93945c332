// The logs that can be asked for.
#pragma once

#include "Moment.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Sim {

enum class ELogKind {
    synchronous,  ///< of an epoch
    asynchronous, ///< of an event
    polled,       ///< only what is asked for at that moment
    nmea,         ///< of an epoch, without a suffix
};

enum class ELogFormat { binary, ascii, abbreviated, nmea };

struct SCatalogLog {
    std::string_view name;
    std::uint16_t identifier; ///< 0 where none is published
    ELogKind kind;
    Milliseconds renewal = kEpoch; ///< how often one of an epoch is computed anew
};

/// Nothing for a log that does not exist.
const SCatalogLog* FindLog(std::uint16_t identifier);

struct SNamedLog {
    const SCatalogLog* log;
    ELogFormat format;
};

/// As a command names it: the name with the format's letter.
std::string LogName(const SNamedLog& log);

/// As a command names it, in capitals or not: BESTPOSB binary, BESTPOSA ASCII, BESTPOS abbreviated,
/// GPGGA a sentence.
std::optional<SNamedLog> FindLog(std::string_view word);

} // namespace Sim
