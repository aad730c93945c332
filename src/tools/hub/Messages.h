// What programs tell the hub, one type a kind of message. Everything behind the services takes
// these.
#pragma once

#include "platform/PositionAPI.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Hub {

/// One connection of a program; a number is never used again.
using TProcess = std::uint64_t;

/// What every message carries.
struct SMessage {
    std::string name;    ///< of the publisher: a logger, a client's class or its owner
    double time = 0.0;   ///< when it was published, seconds since the Unix epoch
    TProcess sender = 0; ///< the connection that it came over
};

/// A name that a program publishes under.
struct SRegistration : SMessage {
    std::string process;
    std::int32_t pid = 0;
    std::string version;
};

enum class EStatusLevel { essential, info };

/// The present value of something; only the last one matters.
struct SStatus : SMessage {
    EStatusLevel level = EStatusLevel::info;
    std::string key;
    std::string value;
};

/// One line of a series; its time is the line's own.
struct SDataLine : SMessage {
    std::string key;
    std::string value;
};

enum class EEventLevel { warning, error };

struct SEvent : SMessage {
    EEventLevel level = EEventLevel::warning;
    std::string text;
};

/// Bytes as a port has received them.
struct SRawBlock : SMessage {
    std::string bytes;
};

/// The solution in Earth-centred coordinates. A number that the publisher could not tell is NaN,
/// as in the messages below.
struct SSolution : SMessage {
    Position::SECEFPositionSolutionData data;

    bool HasPosition() const { return data.positionQuality > 0; }
};

struct SSky : SMessage {
    /// A channel of the receiver, not a satellite: those on two frequencies come twice.
    struct SChannel {
        std::uint8_t prn = 0;
        std::uint32_t word1 = 0;
        std::uint32_t word2 = 0;
        std::optional<double> cn0; ///< dB-Hz
    };
    std::vector<SChannel> channels;
};

/// The base station, metres, Earth-centred.
struct SBase : SMessage {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// A pseudorange position for the reference manager.
struct SReference : SMessage {
    std::int32_t week = 0;
    double seconds = 0.0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    std::int32_t gps = 0; ///< satellites used, like the two below
    std::int32_t glonass = 0;
    std::int32_t other = 0;
};

struct SSentence : SMessage {
    std::string id;           ///< such as GPGSV
    std::int64_t gpsTime = 0; ///< milliseconds of the week
    std::string sentence;     ///< from the "$", without its line end
};

/// The geoid's height above the ellipsoid, metres.
struct SGeoid : SMessage {
    double separation = 0.0;
};

struct SDiagnostic : SMessage {
    std::int32_t code = 0;
    std::int32_t sub = 0;
    bool isRaised = false; ///< or else cleared
    double value = 0.0;    ///< of one that is raised
};

/// What a port has brought since the last one; once a second, also when nothing.
struct SActivity : SMessage {
    std::int64_t received = 0; ///< chunks of bytes
    std::int64_t sentences = 0;
};

/// Whether a name's raw blocks are to be recorded.
struct SCategory {
    std::string category;
    bool isEnabled = false;
};

} // namespace Hub
