// What the receiver answers to a command.
#pragma once

#include <cstdint>
#include <string>

namespace Sim {

/// The receiver's own numbers.
enum class EResponse : std::uint32_t {
    ok = 1,
    noSuchLog = 2,
    noResources = 3,
    failed = 5,
    noSuchCommand = 6,
    invalidField = 7,
    invalidChecksum = 8,
    missingField = 9,
    outOfRange = 11,
    triggerInvalid = 14,
    channelInvalid = 20,
    rateInvalid = 21,
    portNotSupported = 25,
    unknownPort = 33,
    badHexString = 34,
    baudInvalid = 35,
    notForModel = 36,
};

struct SResponse {
    EResponse number = EResponse::ok;
    std::int64_t field = 0; ///< the parameter or trigger that the text names, where it names one

    bool IsOK() const { return number == EResponse::ok; }
    std::string Text() const;

    bool operator==(const SResponse&) const = default;
};

} // namespace Sim
