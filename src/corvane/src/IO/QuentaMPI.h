// The port multiplexer's remote procedure calls: what device and speed each of its ports has.
#pragma once

#include "platform/MPISocketClient.h"

#include <cstdint>
#include <string>

/// A client of the multiplexer on this machine. Every operation waits for its answer, at most for
/// the client's time-out; false means that it did not succeed, and LastError() says why.
class CQuentaMPI {
public:
    /// Where the multiplexer takes calls.
    static constexpr std::uint16_t kPort = 5309;

    explicit CQuentaMPI(std::uint16_t port = kPort) : m_port(port) {}

    bool Open() { return m_client.Connect("127.0.0.1", m_port, m_lastError); }
    void Close() { m_client.Close(); }

    /// One list for each port: number, name, device, baud rate, device open (0 or 1), clients,
    /// bytes in, bytes out.
    bool GetPortDump(BListC& ports);
    /// The device behind a port, "" when there is none.
    bool GetPortMapping(std::int32_t port, std::string& device);
    bool SetPortMapping(std::int32_t port, const std::string& device);
    /// 0 when the speed is not known.
    bool GetPortConfig(std::int32_t port, std::int32_t& baud);
    bool SetPortConfig(std::int32_t port, std::int32_t baud);

    const std::string& LastError() const { return m_lastError; }

private:
    template <typename T>
    bool Ask(const char* method, const BListC& params, T& answer);
    bool Order(const char* method, const BListC& params);

    std::uint16_t m_port;
    MPISocketClientC m_client;
    std::string m_lastError;
};
