#include "Receiver.h"

#include "ByteWriter.h"
#include "LogText.h"

#include "Bytes/CRC32.h"

#include <cstdio>
#include <utility>

namespace Sim {

namespace {

constexpr std::uint32_t kNoMode = 0;
constexpr std::uint32_t kPrivateMode = 6;
constexpr std::uint16_t kLogList = 5;
constexpr double kMillisecondsPerSecond = 1000.0;

Bytes AsBytes(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string Prompt(EPort port) {
    return "[" + std::string(FactsOf(port).name) + "]";
}

std::uint8_t MessageType(ELogFormat format) {
    constexpr std::uint8_t kASCII = 0x20;
    constexpr std::uint8_t kAbbreviated = 0x40; // and NMEA
    switch (format) {
    case ELogFormat::binary:
        return 0;
    case ELogFormat::ascii:
        return kASCII;
    case ELogFormat::abbreviated:
    case ELogFormat::nmea:
        break;
    }
    return kAbbreviated;
}

Bytes LogListBody(const std::vector<SScheduledLog>& logs) {
    CByteWriter body;
    body.Count(logs.size());
    for (const SScheduledLog& each : logs) {
        const SLogRequest& request = each.request;
        body.U32(FactsOf(request.port).address).U16(request.what.log->identifier);
        body.U8(MessageType(request.what.format)).U8(0);
        body.U32(static_cast<std::uint32_t>(request.trigger));
        body.Double(static_cast<double>(request.period) / kMillisecondsPerSecond);
        body.Double(static_cast<double>(request.offset) / kMillisecondsPerSecond);
        body.U32(request.isHeld ? 1 : 0);
    }
    return body.Written();
}

/// The same in words, for those who ask by hand.
std::string LogListText(const std::vector<SScheduledLog>& logs) {
    std::string text = std::to_string(logs.size());
    for (const SScheduledLog& each : logs) {
        const SLogRequest& request = each.request;
        char times[64];
        std::snprintf(times, sizeof times, ",%.6f,%.6f",
                      static_cast<double>(request.period) / kMillisecondsPerSecond,
                      static_cast<double>(request.offset) / kMillisecondsPerSecond);
        text += "," + std::string(FactsOf(request.port).name) + "," + LogName(request.what) + "," +
                std::string(TriggerName(request.trigger)) + times +
                (request.isHeld ? ",HOLD" : ",NOHOLD");
    }
    return text;
}

/// "#TITLE,<header>;body*crc": the header is that of any other ASCII log of the moment.
std::string ASCIILike(std::string_view anyLog, std::string_view title, std::string_view body) {
    const std::size_t comma = anyLog.find(',');
    const std::string header(anyLog.substr(comma, anyLog.find(';') + 1 - comma));
    const std::string covered = std::string(title) + header + std::string(body);
    const Bytes bytes = AsBytes(covered);
    char crc[16];
    std::snprintf(crc, sizeof crc, "*%08x", ::Bytes::CalculateCRC32(bytes.data(), bytes.size()));
    return "#" + covered + crc;
}

} // namespace

/// In these modes a port says nothing that a program of ours would understand.
bool CReceiver::IsTalking(EPort port) const {
    const std::uint32_t mode = m_info.ports[IndexOf(port)].transmitMode;
    return !IsDown() && mode != kNoMode && mode != kPrivateMode;
}

void CReceiver::Say(EPort port, Bytes bytes, bool isLog) {
    if (IsTalking(port)) {
        m_output.Say({.port = port,
                      .moment = m_now,
                      .baud = Settings(port).baud,
                      .bytes = std::move(bytes),
                      .isLog = isLog});
    }
}

void CReceiver::SayText(EPort port, std::string_view text) {
    Say(port, AsBytes(text), false);
}

void CReceiver::SayPrompt(EPort port) {
    if (Settings(port).hasResponses) {
        SayText(port, "\r\n" + Prompt(port));
    }
}

void CReceiver::Answer(EPort port, const SCommand& command, const SResponse& response) {
    if (!Settings(port).hasResponses) {
        return;
    }
    const SState state = StateAt(m_now);
    const SHeaderFields header = HeaderOf(port);
    if (command.form == ECommandForm::binary) {
        Say(port,
            EncodeResponse(command.identifier, static_cast<std::uint32_t>(response.number),
                           response.Text(), state, m_info, header),
            false);
        return;
    }
    std::string text = (response.IsOK() ? "" : "ERROR:") + response.Text();
    if (command.form == ECommandForm::ascii) {
        text = ASCIILike(AnyASCIILog(state, header), command.name + "R", text);
    } else {
        text = "<" + text;
    }
    SayText(port, "\r\n" + text + "\r\n" + Prompt(port));
}

SState CReceiver::StateAt(Milliseconds moment) const {
    SState state = m_world.At(AsTime(LastMultiple(moment, kEpoch)));
    const std::size_t set = m_info.channelConfigurationInUse - 1;
    Restrict(state, m_model, m_info.channelConfigurations[set], m_reception);
    if (m_info.timeStatus == kTimeUnknown) {
        state.time = AsTime(moment - m_startedAt);
    }
    return state;
}

SHeaderFields CReceiver::HeaderOf(EPort port) const {
    return {.portAddress = HeaderAddress(port),
            .sequence = 0,
            .portName = std::string(FactsOf(port).name)};
}

std::string CReceiver::AnyASCIILog(const SState& state, const SHeaderFields& header) const {
    return EncodeASCII("SOFTLOADSTATUS", state, m_info, header).value_or(",;");
}

std::optional<Bytes> CReceiver::Write(const SLogRequest& request, Milliseconds moment) const {
    const SState state = StateAt(LastMultiple(moment, request.what.log->renewal));
    const SHeaderFields header = HeaderOf(request.port);
    if (request.what.format == ELogFormat::binary) {
        return WriteBinary(request, state, header);
    }
    std::optional<std::string> text = WriteText(request, state, header);
    if (!text) {
        return std::nullopt;
    }
    if (request.what.format == ELogFormat::abbreviated) {
        text = Abbreviate(*text) + Prompt(request.port);
    }
    return AsBytes(*text);
}

std::optional<Bytes> CReceiver::WriteBinary(const SLogRequest& request, const SState& state,
                                            const SHeaderFields& header) const {
    if (request.what.log->identifier == kLogList) {
        return EncodeBinaryLog(kLogList, LogListBody(m_schedule.Logs()), state, m_info, header);
    }
    return EncodeBinary(request.what.log->name, state, m_info, header);
}

std::optional<std::string> CReceiver::WriteText(const SLogRequest& request, const SState& state,
                                                const SHeaderFields& header) const {
    if (request.what.format == ELogFormat::nmea) {
        return EncodeNMEA(request.what.log->name, state);
    }
    if (request.what.log->identifier == kLogList) {
        return ASCIILike(AnyASCIILog(state, header), "LOGLISTA", LogListText(m_schedule.Logs())) +
               "\r\n";
    }
    return EncodeASCII(request.what.log->name, state, m_info, header);
}

void CReceiver::Send(const SLogRequest& request, Milliseconds moment) {
    if (std::optional<Bytes> log = Write(request, moment)) {
        Say(request.port, std::move(*log), true);
    }
}

/// One that follows new logs only has nothing to say before the first of them.
void CReceiver::SendChanged() {
    std::vector<SLogRequest> done;
    for (SScheduledLog& each : m_schedule.Logs()) {
        const SLogRequest& request = each.request;
        const std::optional<Bytes> log = each.IsWatched() ? Write(request, m_now) : std::nullopt;
        if (!log) {
            continue;
        }
        const std::string content = ContentOf(*log, request.what.format);
        const bool isFirst = each.content.empty();
        const bool isSent =
            isFirst ? request.trigger == ETrigger::onChanged : content != each.content;
        each.content = content;
        if (isSent) {
            Send(request, m_now);
        }
        if (isSent && request.trigger == ETrigger::onNext) {
            done.push_back(request);
        }
    }
    for (const SLogRequest& request : done) {
        m_schedule.Remove(request);
    }
}

} // namespace Sim
