#include "ReceiverSettings.h"

#include "ByteWriter.h"
#include "CommandTable.h"
#include "Ports.h"

#include <algorithm>
#include <array>

namespace Sim {

namespace {

constexpr std::uint16_t kCOM = 4;
constexpr std::uint16_t kINTERFACEMODE = 3;

std::string ModeName(std::uint32_t number) {
    if (const SCommandFacts* const command = FindCommand(kINTERFACEMODE)) {
        const auto& choices = command->parameters.front().choices;
        const auto choice = std::ranges::find(choices, std::int64_t{number}, &SChoice::number);
        if (choice != choices.end()) {
            return std::string(choice->name);
        }
    }
    return std::to_string(number);
}

/// 8 data bits, 1 stop bit, no parity and handshake, no echo, break detection: all that the
/// simulated ports know.
SStoredSetting LineSettings(const SPortSettings& port) {
    CByteWriter body;
    body.U32(port.port).U32(port.baud).U32(0).U32(8).U32(1).U32(0).U32(0).U32(1);
    return {.commandID = kCOM,
            .command = "COM",
            .binaryBody = body.Written(),
            .asciiBody = std::string(PortName(port.port)) + "," + std::to_string(port.baud) +
                         ",N,8,1,N,OFF,ON"};
}

SStoredSetting InterfaceMode(const SPortSettings& port) {
    CByteWriter body;
    body.U32(port.port).U32(port.receiveMode).U32(port.transmitMode);
    body.U32(port.hasResponses ? 1 : 0);
    return {.commandID = kINTERFACEMODE,
            .command = "INTERFACEMODE",
            .binaryBody = body.Written(),
            .asciiBody = std::string(PortName(port.port)) + "," + ModeName(port.receiveMode) + "," +
                         ModeName(port.transmitMode) + (port.hasResponses ? ",ON" : ",OFF")};
}

} // namespace

std::vector<SStoredSetting> StoredSettings(const SReceiverInfo& info) {
    std::vector<SStoredSetting> settings;
    for (const SPortSettings& port : info.ports) {
        settings.push_back(LineSettings(port));
        settings.push_back(InterfaceMode(port));
    }
    return settings;
}

std::string_view PortName(std::uint32_t number) {
    const auto* const port =
        std::ranges::find(kPorts, number, [](EPort each) { return FactsOf(each).number; });
    return port == kPorts.end() ? "NO_PORTS" : FactsOf(*port).name;
}

} // namespace Sim
