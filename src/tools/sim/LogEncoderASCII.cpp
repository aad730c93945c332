#include "LogBodies.h"
#include "Ports.h"
#include "ReceiverSettings.h"

#include "Bytes/CRC32.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace Sim {

namespace {

std::string TimeStatusName(std::uint8_t status) {
    switch (status) {
    case 20:
        return "UNKNOWN";
    case 60:
        return "APPROXIMATE";
    case 80:
        return "COARSEADJUSTING";
    case 100:
        return "COARSE";
    case 120:
        return "COARSESTEERING";
    case 130:
        return "FREEWHEELING";
    case 140:
        return "FINEADJUSTING";
    case 160:
        return "FINE";
    case 180:
        return "FINESTEERING";
    case 200:
        return "SATTIME";
    default:
        return std::to_string(status);
    }
}

/// A port has 32 addresses: itself, then its virtual ports.
std::string NameOf(const SHeaderFields& header) {
    constexpr std::uint32_t kVirtualPorts = 32;
    if (!header.portName.empty()) {
        return header.portName;
    }
    const std::uint32_t virtualPort = header.portAddress % kVirtualPorts;
    const std::uint32_t base = header.portAddress - virtualPort;
    const auto* const port = std::ranges::find_if(
        kPorts, [&](EPort each) { return FactsOf(each).address % 256 == base; });
    const std::string name(port == kPorts.end() ? "NO_PORTS" : FactsOf(*port).name);
    return virtualPort == 0 ? name : name + "_" + std::to_string(virtualPort);
}

/// All between the `#` and the `*`.
std::string Text(std::string_view name, std::uint16_t check, std::string_view body,
                 const SLogInput& input, const SHeaderFields& header) {
    const STime time = input.state.time;
    char fields[160];
    std::snprintf(fields, sizeof fields, ",%u,%.1f,%s,%u,%u.%03u,%08x,%04x,%u;",
                  unsigned{header.sequence}, input.info.idleTime / 2.0,
                  TimeStatusName(input.info.timeStatus).c_str(), time.week,
                  time.milliseconds / 1000, time.milliseconds % 1000, input.info.statusWord,
                  unsigned{check}, unsigned{input.info.softwareBuild});
    return std::string(name) + "A," + NameOf(header) + fields + std::string(body);
}

std::string Line(const std::string& text) {
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    char ending[16];
    std::snprintf(ending, sizeof ending, "*%08x\r\n",
                  ::Bytes::CalculateCRC32(bytes.data(), bytes.size()));
    return "#" + text + ending;
}

std::string VersionBody(const SReceiverInfo& info) {
    const auto quoted = [](const std::string& text) { return ",\"" + text + "\""; };
    return "1,GPSCARD" + quoted(info.model) + quoted(info.serialNumber) +
           quoted(info.hardwareVersion) + quoted(info.softwareVersion) + quoted(info.bootVersion) +
           quoted(info.compileDate) + quoted(info.compileTime);
}

/// A line for each stored setting, which wraps the command's own header and body. Without the `#`
/// and the checksum of the command, which a reader of logs would take for damage.
std::string EncodeRXCONFIG(const SLogInput& input) {
    const std::vector<SStoredSetting> settings = StoredSettings(input.info);
    SHeaderFields part = input.header;
    part.sequence = static_cast<std::uint16_t>(settings.size());
    std::string lines;
    for (const SStoredSetting& setting : settings) {
        --part.sequence;
        const std::string command = Text(setting.command, 0, setting.asciiBody, input, part);
        lines += Line(Text("RXCONFIG", 0, command, input, part));
    }
    return lines;
}

} // namespace

std::optional<std::string> EncodeASCII(std::string_view name, const SState& state,
                                       const SReceiverInfo& info, const SHeaderFields& header) {
    const SLogInput input = {state, info, header};
    if (name == "RXCONFIG") {
        return EncodeRXCONFIG(input);
    }
    std::string body;
    if (name == "VERSION") {
        body = VersionBody(info);
    } else if (name == "SOFTLOADSTATUS") {
        body = info.softloadStatus;
    } else {
        return std::nullopt;
    }
    return Line(Text(name, FindBinaryLog(name)->check, body, input, header));
}

} // namespace Sim
