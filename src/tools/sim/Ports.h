// The receiver's ports: their names, and the numbers by which logs and commands know them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Sim {

enum class EPort : std::uint8_t { com1, com2, com3, usb1, usb2, usb3 };

inline constexpr std::array<EPort, 6> kPorts = {EPort::com1, EPort::com2, EPort::com3,
                                                EPort::usb1, EPort::usb2, EPort::usb3};

struct SPortFacts {
    std::string_view name; ///< "COM1"
    std::uint32_t number;  ///< in COMCONFIG; also means all its virtual ports in commands
    std::uint32_t address; ///< of its virtual port 0
    bool hasLineSpeed;     ///< USB takes no notice of speeds
    std::uint32_t fastest; ///< baud
};

const SPortFacts& FactsOf(EPort port);

inline std::size_t IndexOf(EPort port) {
    return static_cast<std::size_t>(port);
}

/// What the header of a binary log has of the address.
inline std::uint8_t HeaderAddress(EPort port) {
    return static_cast<std::uint8_t>(FactsOf(port).address);
}

/// In capitals or not; nothing for a word that names no port.
std::optional<EPort> PortNamed(std::string_view name);

/// The ports that a command's word means: one, THISPORT (where the command came in) or ALL_PORTS;
/// nothing for a word that is no port. The port's number or address does as well.
std::vector<EPort> PortsMeant(std::string_view word, EPort thisPort);

} // namespace Sim
