#include "LogEncoder.h"

#include "LogBodies.h"
#include "ReceiverSettings.h"

#include "Bytes/CRC32.h"

#include <algorithm>

namespace Sim {

namespace {

// The check values are those of the receiver's own family where they are known, else those of a
// later one.
constexpr SBinaryLog kLogs[] = {
    {"VERSION", 37, 0x3681, LogBodies::VERSION},
    {"BESTPOS", 42, 0x6145, LogBodies::BESTPOS},
    {"RANGE", 43, 0x5103, LogBodies::RANGE},
    {"PSRPOS", 47, 0, LogBodies::PSRPOS},
    {"TRACKSTAT", 83, 0x457C, LogBodies::TRACKSTAT},
    {"RXSTATUS", 93, 0x643C, LogBodies::RXSTATUS},
    {"TIME", 101, 0x9924, LogBodies::TIME},
    {"RTKPOS", 141, 0, LogBodies::RTKPOS},
    {"PSRDOP", 174, 0x768F, LogBodies::PSRDOP},
    {"REFSTATION", 175, 0x4E46, LogBodies::REFSTATION},
    {"BESTXYZ", 241, 0xD821, LogBodies::BESTXYZ},
    {"PSRXYZ", 243, 0x4A28, LogBodies::PSRXYZ},
    {"RTKXYZ", 244, 0x40EE, LogBodies::RTKXYZ},
    {"COMCONFIG", 317, 0, LogBodies::COMCONFIG},
    {"PDPPOS", 469, 0, LogBodies::PDPPOS},
    {"PDPXYZ", 471, 0x5D37, LogBodies::PDPXYZ},
    {"OMNIHPPOS", 495, 0, LogBodies::OMNIHPPOS},
    {"LBANDINFO", 730, 0, LogBodies::LBANDINFO},
    {"LBANDSTAT", 731, 0, LogBodies::LBANDSTAT},
    {"PDPSTAT", 1085, 0, LogBodies::PDPSTAT},
    {"CHANCONFIGLIST", 1148, 0xD1C0, LogBodies::CHANCONFIGLIST},
    {"PSRSATS", 1162, 0xFEA4, LogBodies::PSRSATS},
    {"RTKSATS", 1174, 0x95E7, LogBodies::RTKSATS},
    {"PDPSATS", 1234, 0x74D6, LogBodies::PDPSATS},
    {"SOFTLOADSTATUS", 1235, 0x2D64, LogBodies::SOFTLOADSTATUS},
};

constexpr std::uint8_t kHeaderLength = 28;

/// The header fields of which logs and responses differ.
struct SKind {
    std::uint16_t messageID;
    std::uint8_t messageType;
    std::uint8_t idleTime;
    std::uint16_t check;
    std::uint16_t softwareBuild;
};

/// The receiver's logs have 2 here, although the manual has 0 for a binary log.
constexpr std::uint8_t kBinaryLog = 0x02;
constexpr std::uint8_t kBinaryResponse = 0x80;

Bytes Frame(const SKind& kind, const Bytes& body, const SState& state, const SReceiverInfo& info,
            const SHeaderFields& header) {
    CByteWriter log;
    log.U8(0xAA).U8(0x44).U8(0x12).U8(kHeaderLength);
    log.U16(kind.messageID).U8(kind.messageType).U8(header.portAddress);
    log.U16(static_cast<std::uint16_t>(body.size())).U16(header.sequence);
    log.U8(kind.idleTime).U8(info.timeStatus);
    log.U16(static_cast<std::uint16_t>(state.time.week)).U32(state.time.milliseconds);
    log.U32(info.statusWord).U16(kind.check).U16(kind.softwareBuild);
    log.Append(body);
    log.U32(::Bytes::CalculateCRC32(log.Written().data(), log.Written().size()));
    return log.Written();
}

/// One log for each stored setting, which it wraps: the command with its own header.
Bytes EncodeRXCONFIG(const SState& state, const SReceiverInfo& info, const SHeaderFields& header) {
    constexpr std::uint16_t kRXCONFIG = 128;
    const std::vector<SStoredSetting> settings = StoredSettings(info);
    CByteWriter logs;
    SHeaderFields part = header;
    part.sequence = static_cast<std::uint16_t>(settings.size());
    for (const SStoredSetting& setting : settings) {
        --part.sequence;
        const Bytes command =
            EncodeBinaryLog(setting.commandID, setting.binaryBody, state, info, part);
        logs.Append(EncodeBinaryLog(kRXCONFIG, command, state, info, part));
    }
    return logs.Written();
}

} // namespace

const SBinaryLog* FindBinaryLog(std::string_view name) {
    const auto* const log = std::ranges::find(kLogs, name, &SBinaryLog::name);
    return log == std::end(kLogs) ? nullptr : log;
}

Bytes EncodeBinaryLog(std::uint16_t messageID, const Bytes& body, const SState& state,
                      const SReceiverInfo& info, const SHeaderFields& header) {
    const auto* const log = std::ranges::find(kLogs, messageID, &SBinaryLog::messageID);
    const SKind kind = {.messageID = messageID,
                        .messageType = kBinaryLog,
                        .idleTime = info.idleTime,
                        .check = log == std::end(kLogs) ? std::uint16_t{0} : log->check,
                        .softwareBuild = info.softwareBuild};
    return Frame(kind, body, state, info, header);
}

std::optional<Bytes> EncodeBinary(std::string_view name, const SState& state,
                                  const SReceiverInfo& info, const SHeaderFields& header) {
    if (name == "RXCONFIG") {
        return EncodeRXCONFIG(state, info, header);
    }
    const SBinaryLog* const log = FindBinaryLog(name);
    if (log == nullptr) {
        return std::nullopt;
    }
    CByteWriter body;
    log->encode(body, {state, info, header});
    return EncodeBinaryLog(log->messageID, body.Written(), state, info, header);
}

Bytes EncodeResponse(std::uint16_t commandID, std::uint32_t response, std::string_view text,
                     const SState& state, const SReceiverInfo& info, const SHeaderFields& header) {
    constexpr SKind kNoLog = {.messageID = 0,
                              .messageType = kBinaryResponse,
                              .idleTime = 255,
                              .check = 0xFFFF,
                              .softwareBuild = 0};
    SKind kind = kNoLog;
    kind.messageID = commandID;
    CByteWriter body;
    body.U32(response).Text(text, text.size());
    return Frame(kind, body.Written(), state, info, header);
}

} // namespace Sim
