// Writes what the receiver says: binary logs, ASCII logs and NMEA sentences of a moment.
#pragma once

#include "World.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sim {

/// A port's settings, as COMCONFIG reports them. Numbers are the receiver's own enumerations.
struct SPortSettings {
    std::uint32_t port = 0; ///< COM1 1, COM2 2, COM3 3, USB1 13, USB2 14, USB3 15
    std::uint32_t baud = 9600;
    std::uint32_t receiveMode = 1; ///< 1 NOVATEL ...
    std::uint32_t transmitMode = 1;
    bool hasResponses = true;
};

struct SChannelGroup {
    std::uint32_t channels = 0;
    std::uint32_t signalType = 0;
};

/// What the receiver knows of itself; kept by its simulation.
struct SReceiverInfo {
    std::string model = "L12LGRV";
    std::string serialNumber = "DAB07180034";
    std::string hardwareVersion = "OEMV3G-2.02-2T";
    std::string softwareVersion = "3.907";
    std::string bootVersion = "3.000";
    std::string compileDate = "2011/Jan/06";
    std::string compileTime = "10:22:20";
    std::uint32_t errorWord = 0;
    std::uint32_t statusWord = 0;
    std::uint8_t idleTime = 130; ///< in units of half a per cent
    std::vector<SPortSettings> ports;
    std::vector<std::vector<SChannelGroup>> channelConfigurations;
    std::uint32_t channelConfigurationInUse = 1; ///< counted from 1
    std::string softloadStatus = "NOT_STARTED";
    std::uint8_t timeStatus = 180;      ///< 180 fine steering, 20 unknown ...
    std::uint16_t softwareBuild = 6259; ///< the header's short form of the version
};

/// The header fields that depend on where and when a log leaves.
struct SHeaderFields {
    std::uint8_t portAddress = 32; ///< COM1_ALL 32 ...
    std::uint16_t sequence = 0;
    /// As ASCII logs write it, "USB2"; when empty, what the address says, which is the same for all
    /// USB ports.
    std::string portName = {};
};

using Bytes = std::vector<std::uint8_t>;

/// A whole binary log, from the sync bytes to the CRC; nothing for a log without an encoder. Of
/// RXCONFIG, which comes in parts, all of them.
/// `name` is the log's, in capitals without suffix: "BESTPOS".
std::optional<Bytes> EncodeBinary(std::string_view name, const SState& state,
                                  const SReceiverInfo& info, const SHeaderFields& header);

/// A whole binary log around a body that is made elsewhere.
Bytes EncodeBinaryLog(std::uint16_t messageID, const Bytes& body, const SState& state,
                      const SReceiverInfo& info, const SHeaderFields& header);

/// A whole ASCII log with its line end; nothing for a log without an encoder. `name` has no suffix.
/// Of RXCONFIG all lines.
std::optional<std::string> EncodeASCII(std::string_view name, const SState& state,
                                       const SReceiverInfo& info, const SHeaderFields& header);

/// The lines of an NMEA sentence ("GPGGA", "GPGSV" ...), each with its line end; nothing for one
/// that is not known.
std::optional<std::string> EncodeNMEA(std::string_view name, const SState& state);

/// The binary form of a command's response: message type with the response bit, the command's own
/// identifier, response number and text.
Bytes EncodeResponse(std::uint16_t commandID, std::uint32_t response, std::string_view text,
                     const SState& state, const SReceiverInfo& info, const SHeaderFields& header);

} // namespace Sim
