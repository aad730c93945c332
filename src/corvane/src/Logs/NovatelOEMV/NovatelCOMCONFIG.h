// COMCONFIG: the settings of the receiver's serial ports.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

class CNovatelCOMCONFIG : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 317;

    /// The numbers are the receiver's own enumerations.
    struct SPort {
        std::uint32_t port = 0; ///< COM1 to COM3 are 1 to 3, USB1 to USB3 13 to 15
        std::uint32_t baudRate = 0;
        std::uint32_t parity = 0;
        std::uint32_t dataBits = 0;
        std::uint32_t stopBits = 0;
        std::uint32_t handshaking = 0;
        bool echo = false;
        bool breakDetection = false;
        std::uint32_t receiveMode = 0;  ///< interface mode
        std::uint32_t transmitMode = 0; ///< interface mode
        bool responses = false;
    };

    std::uint32_t GetNumberOfPorts() const { return m_numberOfPorts; }
    const std::vector<SPort>& GetPorts() const { return m_ports; }

protected:
    CNovatelCOMCONFIG() = default;

    std::uint32_t m_numberOfPorts = 0;
    std::vector<SPort> m_ports;
};

} // namespace Novatel
