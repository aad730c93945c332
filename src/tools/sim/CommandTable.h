// The commands that the receiver knows, with what each of them takes.
#pragma once

#include "Ports.h"
#include "Response.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sim {

/// A name that stands for a number.
struct SChoice {
    std::string_view name;
    std::int64_t number;
};

/// What may stand at one place behind the command's name.
struct SParameter {
    std::span<const SChoice> choices = {}; ///< by name or number
    std::int64_t lowest = 0;               ///< of other numbers; the highest below it for none
    std::int64_t highest = -1;
    bool isText = false;
    bool isFraction = false; ///< decimals are taken, and cut off
    bool isOptional = false;
    EResponse refusal = EResponse::outOfRange; ///< of a number
};

struct SCommandFacts {
    std::string_view name;
    std::span<const SParameter> parameters;
    std::uint16_t identifier;
    bool takesPort = false; ///< a port may stand in front
    bool needsRTK = false;
};

/// Nothing for a command that does not exist; the name in capitals.
const SCommandFacts* FindCommand(std::string_view name);
const SCommandFacts* FindCommand(std::uint16_t identifier);

/// A command's arguments, understood.
struct SArguments {
    SResponse response;       ///< other than OK, the rest means nothing
    std::vector<EPort> ports; ///< those that are named, else the one it came in on
    bool isPortNamed = false;
    std::vector<std::int64_t> values; ///< as many as were given; 0 for a text
    std::vector<std::string> texts;   ///< of the same places

    /// The value at a place, or another one where none was given.
    std::int64_t Value(std::size_t index, std::int64_t otherwise) const {
        return index < values.size() ? values[index] : otherwise;
    }
};

SArguments Understand(const SCommandFacts& command, const std::vector<std::string>& words,
                      EPort thisPort);

/// Whether a serial port of the receiver has such a speed.
bool IsLineSpeed(std::int64_t baud);

inline constexpr std::int64_t kNovatelMode = 1;
inline constexpr std::int64_t kNovatelBinaryMode = 15;

} // namespace Sim
